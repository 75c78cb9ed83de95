#include "platform/desk/mime/GMimeObjects.h"

namespace mervo::desk {

void startGMime()
{
    static const bool isStarted = [] {
        g_mime_init();
        return true;
    }();
    static_cast<void>(isStarted);
}

} // namespace mervo::desk
