/// The cleaning of a message's text: `bench-body ROUNDS`. Prints samples as bench-pairs does: for each kind of text
/// "NAME" is 1 MB cleaned, "NAME-quarter" a fourth of it, and "NAME-pass" one search by RE2 for what is not there.
#include "bench/Measure.h"
#include "core/tools/mail/MailBody.h"

#include <cstdio>
#include <exception>
#include <nlohmann/json.hpp>
#include <re2/re2.h>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace mervo::bench {
namespace {

constexpr std::size_t kSize = 1'000'000; // bytes

constexpr std::pair<const char*, std::string_view> kTexts[] = {
    {"page", "<p>Hello <b>you</b>, see <a href=\"https://x.example/\">this</a>&nbsp;&amp; that.</p>\n"},
    {"letter", "A line of a letter that somebody wrote, about as long as lines are.\n"},
    {"open", "<"},
    {"script", "<script "},
    {"scripts", "<script>x<style>"},
    {"comment", "<!-- <!-- "},
    {"blanks", " \t"},
    {"wrote", "On x wrote: y "},
    {"begun", "On a day in spring somebody\n"},
    {"ecrit", "Le x a écrit : y\n"},
};

std::string repeated(std::string_view part, std::size_t size)
{
    std::string text = part.starts_with('<') ? "<p>" : "";
    while (text.size() < size)
        text += part;
    return text;
}

std::int64_t cleaned(const std::string& text)
{
    std::size_t length = 0;
    const std::int64_t time = timed([&] { length = MailBody::clean(text).size(); });
    if (length > MailBody::byteCap + 100)
        throw std::runtime_error("a text was not cut");
    return time;
}

std::int64_t searched(const std::string& text)
{
    static const re2::RE2 absent("(?i)nowhere[0-9]+to be found");
    bool found = true;
    const std::int64_t time = timed([&] { found = re2::RE2::PartialMatch(text, absent); });
    if (found)
        throw std::runtime_error("the text holds what it should not");
    return time;
}

nlohmann::json measure(int rounds)
{
    nlohmann::json samples;
    for (int round = -1; round < rounds; ++round) {
        for (const auto& [name, part] : kTexts) {
            const std::string whole = repeated(part, kSize), quarter = repeated(part, kSize / 4);
            const std::pair<std::string, std::int64_t> taken[] = {{name, cleaned(whole)},
                {std::string(name) + "-quarter", cleaned(quarter)}, {std::string(name) + "-pass", searched(whole)}};
            for (const auto& [series, time] : taken) {
                if (round >= 0)
                    samples[series]["wall"].push_back(time);
            }
        }
    }
    return samples;
}

} // namespace
} // namespace mervo::bench

int main(int count, char** words)
{
    try {
        if (count != 2)
            throw std::runtime_error("usage: bench-body ROUNDS");
        std::puts(mervo::bench::measure(std::stoi(words[1])).dump().c_str());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-body: %s\n", error.what());
        return 1;
    }
}
