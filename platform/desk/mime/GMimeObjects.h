#pragma once

#include <gmime/gmime.h>
#include <memory>

namespace mervo::desk {

struct ReleaseObject {
    void operator()(void* object) const { g_object_unref(object); }
};

/// A counted object of the library, given back at the end of its scope.
template <typename T>
using Owned = std::unique_ptr<T, ReleaseObject>;

/// Starts the library once for the process.
void startGMime();

} // namespace mervo::desk
