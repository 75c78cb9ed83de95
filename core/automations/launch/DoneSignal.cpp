#include "core/automations/launch/DoneSignal.h"

#include "core/automations/launch/AgentRun.h"
#include "platform/ascii.h"
#include "platform/files.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <iterator>

namespace mervo::DoneSignal {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr seconds kPause(2), kGrace(120);
constexpr int kLookEvery = 2; // pauses
constexpr std::chrono::milliseconds kWriting(200);
constexpr seconds kMost = std::chrono::hours(24 * 365 * 10);

bool isThere(const std::filesystem::path& file)
{
    std::error_code unreadable;
    return std::filesystem::exists(file, unreadable);
}

/// A shell makes the file first and writes it a moment later.
int codeOf(const std::filesystem::path& file, platform::EndRequest& request)
{
    std::string text = platform::readFile(file).value_or("");
    if (text.empty() && request.wait(kWriting) == 0)
        text = platform::readFile(file).value_or("");
    return code(text);
}

} // namespace

int code(std::string_view text)
{
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits), platform::ascii::isDigit);
    std::int32_t value = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return failure == std::errc() ? value : RunExit::kNoSignal;
}

int wait(const Wait& wait, platform::EndRequest& request, const RunLog& log)
{
    const auto deadline = Clock::now() + std::min(wait.timeout, kMost) + kGrace;
    bool gone = false;
    for (int round = 1;; ++round) {
        if (isThere(wait.file))
            return codeOf(wait.file, request);
        if (gone) {
            log.stamped("the session has ended without a done signal");
            return RunExit::kNoSignal;
        }
        if (Clock::now() >= deadline) {
            log.stamped("no done signal before the deadline");
            return RunExit::kTimedOut;
        }
        gone = round % kLookEvery == 0 && wait.isGone();
        if (const int signal = request.wait(kPause); signal != 0) {
            log.stamped(fmt::format("asked to end (signal {})", signal));
            return RunExit::kBySignal + signal;
        }
    }
}

} // namespace mervo::DoneSignal
