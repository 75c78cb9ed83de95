#include "core/imap/IMAPClient.h"
#include "tests/support/ReleasedMemory.h"

#include <cstdio>
#include <cstdlib>

/// imap-probe HOST PORT EMAIL PASSWORD MILLISECONDS [ID ...]: archives with a patience of the caller's; the count on
/// standard output, or the error on standard error, and there also when the password was left in released memory.
int main(int argc, char** argv)
{
    if (argc < 6)
        return 2;
    mervo::test::ReleasedMemory::wanted = argv[4];
    int status = 0;
    try {
        const std::vector<std::string> ids(argv + 6, argv + argc);
        const std::chrono::milliseconds patience(std::atoi(argv[5]));
        std::printf("%zu\n",
            mervo::IMAPClient::archiveByMessageID(argv[1], static_cast<std::uint16_t>(std::atoi(argv[2])), argv[3],
                mervo::platform::Secret(argv[4]), ids, patience));
    } catch (const mervo::IMAPError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        status = 1;
    }
    if (mervo::test::ReleasedMemory::found > 0)
        std::fputs("the password was left in memory\n", stderr);
    return status;
}
