#pragma once

#include "platform/desk/mime/GMimeObjects.h"

namespace mervo::desk {

/// An attachment of another message, to go along with one of ours: as it is where every transport carries it so, else
/// rebuilt with the same bytes in base64. Raw bytes that were stored as they are can hold what no transport does: lines
/// of more than 998 octets, NULs, lone returns. A whole message that holds them goes as a file, with local line ends.
Owned<GMimeObject> passedOn(GMimeObject* attachment);

} // namespace mervo::desk
