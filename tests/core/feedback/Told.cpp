#include "core/feedback/AskService.h"

#include <cstdio>

/// Prints what the prompt of this automation's next run begins with, and so tells it: told <automation>
int main(int argc, char** argv)
{
    return argc != 2 || std::fputs(mervo::AskService::shared().injectionBlock(argv[1]).c_str(), stdout) < 0;
}
