#include "core/approval/Approval.h"
#include "core/policy/AuditLog.h"

/// Approves the waiting action of this id in the home directory of the environment, as the cockpit would: approver <id>
int main(int argc, char** argv)
{
    using namespace mervo;
    const PendingStore pending;
    const auto action = argc == 2 ? pending.load(argv[1]) : std::nullopt;
    if (!action)
        return 2;
    const auto end = Approval::approve(*action, {pending, AuditLog::shared(), AskService::shared()});
    return std::holds_alternative<Approval::Executed>(end) ? 0 : 1;
}
