#include "core/permissions/PermissionBootstrap.h"
#include "frontends/cli/Commands.h"

#include <algorithm>
#include <array>

namespace mervo::cli {

namespace {

constexpr std::array kOptions{kJson};

constexpr std::string_view kStatusHelp =
    R"(Shows which applications, calendars and reminders you let Mervo use. Asks for nothing, starts nothing and changes
nothing. An application that is closed shows what was known at the last "mervo bootstrap-permissions".
--json prints an array of objects with id, label, granted (left out where nothing is decided) and detail.

Examples:
  mervo permissions
  mervo permissions --json
)";

constexpr std::string_view kProbeHelp =
    R"(Goes through every consent that the tools need and asks you for what is not decided, in one go, so that nothing has to be
asked while you are away. Applications that are closed are started for it and asked to quit afterwards; what you refused
once is not asked again. Where desk.toml does not say that you want to be asked, what is not decided is recorded as
allowed. The question comes in a window, or at a terminal where you have logged in.
--json prints an array of objects with id, label, granted (left out where nothing is decided) and detail.

Examples:
  mervo bootstrap-permissions
)";

/// Nobody could be asked, or the record of what was decided is damaged.
constexpr std::string_view kOpen =
    "note: not everything is settled; run this in your desktop or at a terminal where you have logged in, and see "
    "\"mervo doctor\"\n";

void print(const PermissionBootstrap::Results& results, const Arguments& arguments, Io& io)
{
    io.out((arguments.has(kJson) ? PermissionBootstrap::renderJSON(results) : PermissionBootstrap::renderText(results))
        + "\n");
}

ExitCode showStatus(const Arguments& arguments, Io& io)
{
    print(PermissionBootstrap().status(), arguments, io);
    return ExitCode::done;
}

ExitCode probe(const Arguments& arguments, Io& io)
{
    const PermissionBootstrap::Results results = PermissionBootstrap().probe();
    print(results, arguments, io);
    if (std::ranges::any_of(results, [](const auto& result) { return !result.granted; }))
        io.err(kOpen);
    return ExitCode::done;
}

} // namespace

constinit const Command kPermissions{
    "permissions", "[--json]", "show what you let Mervo use", kStatusHelp, kOptions, 0, showStatus};

constinit const Command kBootstrapPermissions{
    "bootstrap-permissions", "[--json]", "ask you for every consent in one go", kProbeHelp, kOptions, 0, probe};

} // namespace mervo::cli
