#pragma once

#include <gmime/gmime.h>
#include <memory>
#include <string_view>

namespace mervo::desk {

struct ReleaseObject {
    void operator()(void* object) const { g_object_unref(object); }
};

/// A counted object of the library, given back at the end of its scope.
template <typename T>
using Owned = std::unique_ptr<T, ReleaseObject>;

/// Starts the library once for the process.
void startGMime();

/// The parts of a message, for reading its text and attachments: in time that grows with the message's length, whatever
/// a stranger wrote. Its addresses and dates are not to be asked for. A message within it is a part like any other.
/// Null when the library makes nothing of it.
Owned<GMimeMessage> parsedMessage(std::string_view message);

} // namespace mervo::desk
