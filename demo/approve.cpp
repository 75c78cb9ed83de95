#include "core/approval/Approval.h"
#include "core/foundation/ConfigDir.h"
#include "platform/files.h"

#include <cstdio>
#include <filesystem>
#include <variant>

namespace {

/// The demonstration marks the home that it makes with that home's own path, so that not even a copy of it laid over
/// another home opens that one.
bool isOfTheDemonstration(const std::filesystem::path& home)
{
    std::error_code error;
    const auto path = std::filesystem::canonical(home, error);
    const auto mark = mervo::platform::readFile(home / ".demonstration");
    return !error && mark == path.string();
}

} // namespace

/// The owner's "yes" in the demonstration: `demo-approve ID` approves what waits under this id, in a home that the
/// demonstration made and in no other. It belongs to the build tree and is never installed: in real use a person
/// presses a button of the cockpit.
int main(int argc, char** argv)
{
    using namespace mervo;
    const std::filesystem::path home = ConfigDir::url();
    if (!isOfTheDemonstration(home)) {
        std::fprintf(stderr,
            "demo-approve: \"%s\" was not made by the demonstration; what waits there is approved in the cockpit\n",
            home.c_str());
        return 2;
    }
    const PendingStore pending(home);
    const auto action = argc == 2 ? pending.load(argv[1]) : std::nullopt;
    if (!action) {
        std::fputs("demo-approve: nothing waits under this id\n", stderr);
        return 2;
    }
    const auto result = Approval::approve(*action, {pending, AuditLog::shared(), AskService::shared()});
    if (const auto* done = std::get_if<Approval::Executed>(&result)) {
        std::puts(done->output.c_str());
        return 0;
    }
    const auto* failed = std::get_if<Approval::Failed>(&result);
    const auto* refused = std::get_if<Approval::Refused>(&result);
    std::fprintf(stderr, "demo-approve: %s\n",
        failed != nullptr        ? failed->error.c_str()
            : refused != nullptr ? refused->text.c_str()
                                 : "it is gone, or its tool is");
    return 1;
}
