#pragma once

#include "platform/desk/mime/GMimeObjects.h"

#include <string>
#include <vector>

namespace mervo::desk {

enum class Place { root, inside, belongsToPage };

/// "text/plain", in lower case.
std::string typeName(GMimeObject* object);

/// A whole message within a message.
bool isMessage(GMimeObject* object);

/// Whether a leaf is something that its sender attached, rather than the text, a picture in it, or machinery.
bool isAttached(GMimePart* leaf, Place place);

/// Everything that is attached to a message; it belongs to the message.
std::vector<GMimeObject*> attachedObjects(GMimeMessage* message);

} // namespace mervo::desk
