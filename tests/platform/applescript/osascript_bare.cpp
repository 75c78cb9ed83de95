#include "platform/applescript/ScriptHost.h"

/// The script host without any application: the language alone.
int main(int argc, char** argv)
{
    mervo::applescript::ApplicationRegistry none;
    return mervo::applescript::runScriptHost(argc, argv, none);
}
