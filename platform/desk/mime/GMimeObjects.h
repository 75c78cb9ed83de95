#pragma once

#include <gmime/gmime.h>
#include <memory>
#include <string_view>

namespace mervo::desk {

struct ReleaseObject {
    void operator()(void* object) const { g_object_unref(object); }
};

/// A reference-counted object of the library, released at the end of its scope.
template <typename T>
using Owned = std::unique_ptr<T, ReleaseObject>;

/// Starts the library once for the process.
void startGMime();

/// The parts of a message, for reading its text and attachments: in time that grows with the message's length, whatever
/// it holds. Its addresses and dates must not be used. A message within it is a part like any other. Null when the
/// library cannot parse it.
Owned<GMimeMessage> parsedMessage(std::string_view message);

} // namespace mervo::desk
