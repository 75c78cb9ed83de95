#include "frontends/cli/Call.h"
#include "frontends/cli/Commands.h"
#include "frontends/cli/Explanation.h"
#include "frontends/cli/Json.h"

#include <array>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

constexpr std::array kOptions{kJson};

constexpr std::string_view kHelp =
    R"(Says what the gate would do with a call, and why: the autonomy level, the day's count, and for every rule of the owner
whether it settles the verdict, loses, or does not apply. A call that the tool itself refuses has no verdict, and the
tool's reason is given instead. Also says which arguments have no effect, and what the call would act on, where the tool
can count that. The words are those of "mervo run". It only reads.

Examples:
  mervo explain mail.send to=ada@example.org subject=Hello body=Hello
  mervo explain mail.delete account=Work mailbox=INBOX olderThan=90 --json
)";

ExitCode run(const Arguments& arguments, Io& io)
{
    const Call call = readCall(arguments, io);
    const HarnessRunner::Explanation explanation = HarnessRunner::explain(*call.tool, call.args);
    io.out(arguments.has(kJson) ? jsonLine(asJson(call, explanation)) : inWords(call, explanation));
    return ExitCode::done;
}

} // namespace

constinit const Command kExplain{"explain", "<tool> [key=value ...] [--json]",
    "say what the gate would decide, and why; runs nothing", kHelp, kOptions, kAnyNumber, run};

} // namespace mervo::cli
