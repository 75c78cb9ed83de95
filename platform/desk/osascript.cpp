#include "platform/applescript/ScriptHost.h"
#include "platform/desk/applications/Desk.h"

#include <malloc.h>

int main(int argc, char** argv)
{
    // A script lives for milliseconds and may take up a large mailbox: memory that it frees is used again rather than
    // given back to the system piece by piece.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TOP_PAD, 1 << 20);
    mervo::applescript::ApplicationRegistry registry;
    mervo::desk::registerDesk(registry);
    return mervo::applescript::runScriptHost(argc, argv, registry);
}
