#include "core/doctor/Doctor.h"
#include "core/foundation/Text.h"
#include "frontends/cli/Commands.h"
#include "frontends/cli/Json.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace mervo::cli {

namespace {

constexpr std::array kOptions{kJson};

constexpr std::string_view kHelp =
    R"(Looks at everything that the program needs on this machine and says what works, what is limited and what is broken, with
the remedy. Writes nothing. Exit status: 0 when everything needed works, 1 when something needs the owner. --json prints
an array of objects with id, label, state (works, limited or broken), detail and remedy.
)";

std::string mark(Doctor::State state)
{
    switch (state) {
    case Doctor::State::works:
        return "ok";
    case Doctor::State::limited:
        return "limited";
    case Doctor::State::broken:
        return "BROKEN";
    }
    return {};
}

/// Lines after the first are set in below the first.
std::string indented(const std::string& text)
{
    return Text::join(Text::split(Text::visible(text), '\n'), "\n           ");
}

std::string inWords(const std::vector<Doctor::Finding>& findings)
{
    std::string text;
    for (const Doctor::Finding& finding : findings) {
        text += fmt::format("{:<7}  {}: {}\n", mark(finding.state), finding.label, indented(finding.detail));
        if (!finding.remedy.empty())
            text += fmt::format("         > {}\n", indented(finding.remedy));
    }
    return text;
}

nlohmann::ordered_json asJson(const std::vector<Doctor::Finding>& findings)
{
    nlohmann::ordered_json records = nlohmann::ordered_json::array();
    for (const Doctor::Finding& finding : findings) {
        records.push_back({{"id", finding.id}, {"label", finding.label}, {"state", Doctor::rawValue(finding.state)},
            {"detail", finding.detail}, {"remedy", finding.remedy}});
    }
    return records;
}

ExitCode run(const Arguments& arguments, Io& io)
{
    const std::vector<Doctor::Finding> findings = Doctor::examine();
    io.out(arguments.has(kJson) ? jsonLine(asJson(findings)) : inWords(findings));
    const bool broken = std::ranges::any_of(findings, [](const auto& c) { return c.state == Doctor::State::broken; });
    return broken ? ExitCode::failed : ExitCode::done;
}

} // namespace

constinit const Command kDoctor{
    "doctor", "[--json]", "what works on this machine and what does not, with the remedy", kHelp, kOptions, 0, run};

} // namespace mervo::cli
