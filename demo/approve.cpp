#include "core/approval/Approval.h"

#include <cstdio>
#include <variant>

/// The owner's "yes" in the demonstration: `demo-approve ID` approves what waits under this id. It belongs to the build
/// tree and is never installed: in real use a person presses a button of the cockpit.
int main(int argc, char** argv)
{
    using namespace mervo;
    const PendingStore pending;
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
