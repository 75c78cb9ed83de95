#pragma once

#include "platform/desk/session/Session.h"
#include "platform/modules.h"

namespace mervo::desk {

extern "C" const Session* mervoSession();
inline constexpr auto kSessionModule = MERVO_MODULE("mervo-session.so", mervoSession);

} // namespace mervo::desk
