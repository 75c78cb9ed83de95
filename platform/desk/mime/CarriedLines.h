#pragma once

#include "platform/desk/mime/GMimeObjects.h"

#include <string_view>

/// What every transport and every mailbox format hands on unchanged: lines of at most 998 octets (RFC 5322, 2.1.1), no
/// NUL and no lone return, no line of a single point, none that starts with "From ".
namespace mervo::desk {

bool isCarried(std::string_view text);

/// The object as it stands in a message, with its head.
bool isCarried(GMimeObject* object);

} // namespace mervo::desk
