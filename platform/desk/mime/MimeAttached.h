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

/// Whether a leaf was attached by the sender, rather than being text, a picture within it or a signature.
bool isAttached(GMimePart* leaf, Place place);

/// All attachments of a message, which owns them.
std::vector<GMimeObject*> attachedObjects(GMimeMessage* message);

} // namespace mervo::desk
