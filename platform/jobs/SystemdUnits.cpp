#include "platform/jobs/SystemdUnits.h"

#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <fmt/chrono.h>
#include <fmt/format.h>

namespace mervo::jobs {

namespace {

constexpr std::chrono::days kKnownAhead{10 * 366};
constexpr std::string_view kMade = "# Made by launchctl from ";

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// A word of a command or an assignment, in quotes: with C's escapes, and a percent sign doubled since it begins a
/// specifier.
std::string inQuotes(std::string_view word)
{
    std::string text = "\"";
    for (const char c : word) {
        if (isControl(c)) {
            text += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
        } else {
            if (c == '"' || c == '\\' || c == '%')
                text += c == '%' ? '%' : '\\';
            text += c;
        }
    }
    return text + '"';
}

/// A path that stands for itself to the end of its line: there is no quoting, and specifiers are expanded.
std::string bare(const std::string& path)
{
    if (std::ranges::any_of(path, isControl) || path.ends_with(' ') || path.ends_with('\\'))
        throw NotWritable(fmt::format("systemd cannot be given the path {}: it has a control character, or a blank or "
                                      "backslash at its end. Choose another one.",
            inQuotes(path)));
    std::string text;
    for (const char c : path)
        text += c == '%' ? "%%" : std::string(1, c);
    return text;
}

std::string firstLine(const Job& job)
{
    std::string path = job.file;
    std::ranges::replace_if(path, isControl, '?');
    return fmt::format("{}{}\n", kMade, path);
}

std::string field(const std::optional<int>& value)
{
    return value ? fmt::format("{:02}", *value) : "*";
}

/// The forms of systemd.time(7). As cron does, launchd runs a job when the day or the day of the week agrees.
std::string onCalendar(const CalendarTime& time)
{
    constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    const std::string clock = fmt::format("{}:{}:00", field(time.hour), field(time.minute));
    const std::string month = field(time.month);
    std::string lines;
    if (time.weekday)
        lines =
            fmt::format("OnCalendar={} *-{}-* {}\n", kDays.at(static_cast<std::size_t>(*time.weekday)), month, clock);
    if (time.day || !time.weekday)
        lines += fmt::format("OnCalendar=*-{}-{} {}\n", month, field(time.day), clock);
    return lines;
}

/// The words of the command. systemd takes no program whose name has a quote, a backslash or a control character: the
/// shell does.
std::string command(const Job& job)
{
    const auto isOdd = [](char c) { return isControl(c) || c == '"' || c == '\'' || c == '\\'; };
    std::vector<std::string> words = job.arguments;
    if (std::ranges::any_of(words.front(), isOdd))
        words.insert(words.begin(), {"/bin/sh", "-c", "exec \"$0\" \"$@\""});
    std::string text = inQuotes(":" + words.front()); // ":" keeps "$" from being expanded
    for (auto word = words.begin() + 1; word != words.end(); ++word)
        text += ' ' + inQuotes(*word);
    return text;
}

std::string service(const Job& job)
{
    std::string text = firstLine(job) + fmt::format("[Unit]\nDescription=Job {}\n\n[Service]\nType=exec\n", job.label);
    // What a run leaves behind lives on, such as the server of terminals that it was the first to need.
    text += "KillMode=process\nUnsetEnvironment=RONDEL_DONE RONDEL_RUN\nExecStart=" + command(job) + '\n';
    for (const auto& [name, value] : job.environment)
        text += "Environment=" + inQuotes(name + '=' + value) + '\n';
    if (!job.workingDirectory.empty())
        text += "WorkingDirectory=" + bare(job.workingDirectory) + '\n';
    if (!job.standardOutput.empty())
        text += "StandardOutput=append:" + bare(job.standardOutput) + '\n';
    if (!job.standardError.empty())
        text += "StandardError=append:" + bare(job.standardError) + '\n';
    return text + (job.runAtLoad ? "\n[Install]\nWantedBy=default.target\n" : "");
}

/// The runs of skipped times, a line each.
std::string behindGaps(const Job& job, WallTime now)
{
    const Calendar calendar = calendarOf(job.calendar);
    std::string lines;
    for (const WallTime gap : gapsOfTheClock(now, kKnownAhead)) {
        if (calendar(gap - std::chrono::seconds(1)) == gap)
            lines += fmt::format(
                "OnCalendar={:%Y-%m-%d %H:%M:%S} UTC\n", fmt::gmtime(std::chrono::system_clock::to_time_t(gap)));
    }
    return lines;
}

std::string timer(const Job& job, WallTime now)
{
    std::string text = firstLine(job) + fmt::format("[Unit]\nDescription=Times of job {}\n\n[Timer]\n", job.label);
    if (job.interval)
        text += fmt::format("OnActiveSec={0}s\nOnUnitActiveSec={0}s\n", job.interval->count());
    for (const CalendarTime& time : job.calendar)
        text += onCalendar(time);
    text += behindGaps(job, now);
    return text + "AccuracySec=1s\nPersistent=false\n\n[Install]\nWantedBy=timers.target\n";
}

} // namespace

Units unitsOf(const Job& job, WallTime now)
{
    Units units{service(job), std::nullopt};
    if (!platform::isValidUtf8(std::string_view(units.service).substr(units.service.find('\n'))))
        throw NotWritable(
            "systemd takes texts in UTF-8 alone, and a program, argument, variable or path of this job is "
            "none. Change it.");
    if (job.interval || !job.calendar.empty())
        units.timer = timer(job, now);
    return units;
}

std::optional<std::string> propertyListOf(std::string_view unit)
{
    if (!unit.starts_with(kMade))
        return std::nullopt;
    unit.remove_prefix(kMade.size());
    return std::string(unit.substr(0, unit.find('\n')));
}

} // namespace mervo::jobs
