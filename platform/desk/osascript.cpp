#include "platform/applescript/ScriptHost.h"
#include "platform/desk/applications/MailApplication.h"

int main(int argc, char** argv)
{
    mervo::applescript::ApplicationRegistry registry;
    mervo::desk::registerDesk(registry);
    return mervo::applescript::runScriptHost(argc, argv, registry);
}
