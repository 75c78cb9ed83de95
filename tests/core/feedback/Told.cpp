#include "core/feedback/AskService.h"

#include <cstdio>

/// Prints what the prompt of this automation's next run begins with, and so tells it: told <automation>
int main(int argc, char** argv)
{
    auto& service = mervo::AskService::shared();
    const auto injection = service.injectionBlock(argc == 2 ? argv[1] : "");
    service.markInjected(injection);
    return argc != 2 || std::fputs(injection.block.c_str(), stdout) < 0;
}
