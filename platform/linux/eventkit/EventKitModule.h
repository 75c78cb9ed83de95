#pragma once

#include "platform/eventkit.h"
#include "platform/modules.h"

namespace mervo::platform::eventkit {

/// A new store over the owner's folders, which the caller owns. Throws EventStoreError.
extern "C" EventStore* mervoEventStore();
inline constexpr auto kEventKitModule = MERVO_MODULE("mervo-eventkit.so", mervoEventStore);

} // namespace mervo::platform::eventkit
