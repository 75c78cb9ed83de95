#include "platform/applescript/ScriptHost.h"

#include "platform/applescript/HardStop.h"
#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/syntax/Parser.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace mervo::applescript {

namespace {

constexpr std::string_view kCall = "--call";
constexpr char kUsage[] = "usage: osascript [-l AppleScript] [-s FLAGS] [-e LINE]... [FILE | -] [ARG]...\n";

struct Options {
    bool isCall = false;
    bool isInline = false;
    bool inSourceForm = false;
    bool errorsToOutput = false;
    std::string source;
    std::string file; // empty: inline or standard input
    std::vector<std::string> arguments;
};

/// Writes all of it; a reader that went away is no concern of ours.
void writeAll(int descriptor, std::string_view text) noexcept
{
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// 0, or the error of the system.
int readAll(int descriptor, std::string& text)
{
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        if (count == 0)
            return 0;
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

bool applyFlags(std::string_view flags, Options& options)
{
    for (const char flag : flags) {
        if (flag == 'h' || flag == 's') {
            options.inSourceForm = flag == 's';
        } else if (flag == 'e' || flag == 'o') {
            options.errorsToOutput = flag == 'o';
        } else {
            return false;
        }
    }
    return true;
}

/// False for a bad option. Parsing stops at the first word that is none; `-` is one.
bool parseOptions(std::span<char*> words, Options& options)
{
    options.isCall = words.size() == 2 && words[1] == kCall;
    std::size_t i = options.isCall ? 2 : 1;
    for (; i < words.size() && words[i][0] == '-' && words[i][1] != '\0'; ++i) {
        const std::string_view option = words[i];
        if ((option != "-l" && option != "-s" && option != "-e") || i + 1 == words.size())
            return false;
        const std::string_view value = words[++i];
        if (option == "-e") {
            options.source += options.isInline ? "\n" : "";
            options.source += value;
            options.isInline = true;
        } else if (option == "-s" ? !applyFlags(value, options) : value != "AppleScript") {
            return false;
        }
    }
    if (!options.isInline && i < words.size()) {
        if (std::strcmp(words[i], "-") != 0)
            options.file = words[i];
        ++i;
    }
    options.arguments.assign(words.begin() + static_cast<std::ptrdiff_t>(i), words.end());
    return true;
}

void refuse(const std::string& what, const char* why)
{
    writeAll(STDERR_FILENO, "osascript: " + what + ": " + why + "\n");
}

/// A call that was cut off on its way must not run with half an argument.
bool splitCall(Options& options)
{
    const std::string call = std::move(options.source);
    if (!call.ends_with('\0')) {
        refuse("standard input", "the call is not whole");
        return false;
    }
    std::size_t end = call.find('\0');
    options.source = call.substr(0, end);
    for (std::size_t start = end + 1; start < call.size(); start = end + 1) {
        end = call.find('\0', start);
        options.arguments.push_back(call.substr(start, end - start));
    }
    return true;
}

/// False when it cannot be read; the reason is on standard error then.
bool readSource(Options& options)
{
    if (options.isInline)
        return true;
    int failure = 0;
    if (options.file.empty()) {
        failure = readAll(STDIN_FILENO, options.source);
    } else {
        const int descriptor = ::open(options.file.c_str(), O_RDONLY | O_CLOEXEC);
        failure = descriptor < 0 ? errno : readAll(descriptor, options.source);
        if (descriptor >= 0)
            ::close(descriptor);
    }
    if (failure != 0) {
        refuse(options.file.empty() ? "standard input" : options.file, std::strerror(failure));
        return false;
    }
    return !options.isCall || splitCall(options);
}

/// Characters in front of a byte offset.
std::size_t charactersBefore(std::string_view source, std::size_t offset)
{
    const std::string_view front = source.substr(0, std::min(offset, source.size()));
    return static_cast<std::size_t>(std::count_if(
        front.begin(), front.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

int fail(const Options& options, const char* kind, const ScriptError& error)
{
    std::string line = options.file.empty() ? std::string() : options.file + ":";
    line += std::to_string(charactersBefore(options.source, error.place.start)) + ":";
    line += std::to_string(charactersBefore(options.source, error.place.end)) + ": ";
    line += std::string(kind) + ": " + error.message + " (" + std::to_string(error.number) + ")\n";
    writeAll(options.errorsToOutput ? STDOUT_FILENO : STDERR_FILENO, line);
    return 1;
}

constexpr std::chrono::seconds kGrace{15}; // what looks at the bounds fails first

int runScript(const Options& options, ApplicationRegistry& registry)
{
    const Limits::Scope limits(0, Limits::kDefaultBytes, Limits::kProcessorTime);
    const HardStop hardStop(Limits::kProcessorTime + kGrace);
    std::unique_ptr<Script> script;
    try {
        script = parse(options.source, registry);
    } catch (const ScriptError& error) {
        return fail(options, "syntax error", error);
    }
    try {
        Evaluator evaluator(*script, registry, [](const std::string& line) { writeAll(STDERR_FILENO, line + "\n"); });
        const Value result = evaluator.run(options.arguments);
        registry.finish();
        if (!result.is(Kind::none))
            writeAll(STDOUT_FILENO, (options.inSourceForm ? sourceForm(result) : displayForm(result)) + "\n");
        return 0;
    } catch (const ScriptError& error) {
        return fail(options, "execution error", error);
    }
}

} // namespace

int runScriptHost(int argc, char** argv, ApplicationRegistry& registry)
{
    Options options;
    try {
        if (!parseOptions({argv, static_cast<std::size_t>(argc)}, options)) {
            writeAll(STDERR_FILENO, kUsage);
            return 1;
        }
        return readSource(options) ? runScript(options, registry) : 1;
    } catch (const std::bad_alloc&) {
        return fail(options, "execution error", ScriptError::outOfMemory());
    } catch (const std::exception& error) {
        return fail(options, "execution error", ScriptError(ErrorNumber::handlerFailed, error.what()));
    }
}

} // namespace mervo::applescript
