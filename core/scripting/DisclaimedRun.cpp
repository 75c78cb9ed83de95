#include "core/scripting/DisclaimedRun.h"

#include "platform/process.h"
#include "platform/unicode.h"

namespace mervo {

DisclaimedRun::Output DisclaimedRun::run(const std::string& path, const std::vector<std::string>& arguments)
{
    try {
        platform::Outcome outcome =
            platform::run({.program = path, .arguments = arguments, .inheritStandardError = true});
        if (!platform::isValidUtf8(outcome.output))
            outcome.output.clear();
        return {outcome.status, std::move(outcome.output)};
    } catch (const platform::NotStarted& error) {
        if (error.step() == platform::NotStarted::Step::pipe)
            return {-1, "pipe() failed"};
        return {-1, "posix_spawn failed (errno " + std::to_string(error.errorNumber()) + ")"};
    } catch (const std::exception& error) {
        return {-1, error.what()};
    }
}

} // namespace mervo
