#include "frontends/cli/CommandLine.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    mervo::cli::Io io = mervo::cli::standardIo();
    const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    return static_cast<int>(mervo::cli::runCommandLine(words, io));
}
