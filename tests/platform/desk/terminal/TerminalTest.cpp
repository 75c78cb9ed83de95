#include "platform/desk/terminal/OwnerTerminal.h"
#include "platform/desk/terminal/TerminalError.h"
#include "platform/desk/terminal/TerminalSettings.h"
#include "platform/desk/terminal/WindowShell.h"
#include "tests/support/Files.h"

#include <gtest/gtest.h>

namespace {

using namespace mervo::desk;
using Words = std::vector<std::string>;

constexpr Section kSections[] = {kTerminalSection};

TEST(Terminals, takeTheirCommandEachInItsOwnWay)
{
    const Words command{"/p/terminal-session", "/a b"};
    const Bounds bounds{-5, 10, 635, 490};
    struct Case {
        const char* program;
        Words own, expected;
    };
    const Case cases[] = {
        {"foot", {"--app-id=x"}, {"--app-id=x", "--window-size-pixels=640x480"}},
        {"kitty", {},
            {"-o", "remember_window_size=no", "-o", "initial_window_width=640", "-o", "initial_window_height=480"}},
        {"alacritty", {}, {"-e"}},
        {"gnome-terminal", {"--"}, {"--geometry=+-5+10", "--"}},
        {"konsole", {"--separate", "-e"}, {"--separate", "-e"}},
        {"xfce4-terminal", {}, {"-x"}},
        {"xterm", {"-fs", "12"}, {"-fs", "12", "-geometry", "+-5+10", "-e"}},
    };
    for (auto [program, own, expected] : cases) {
        expected.insert(expected.end(), command.begin(), command.end());
        EXPECT_EQ(terminalArguments(*knownTerminal(program), own, bounds, command), expected) << program;
    }
    EXPECT_EQ(
        terminalArguments(*knownTerminal("xterm"), {}, std::nullopt, command), (Words{"-e", command[0], command[1]}));
}

TEST(Terminals, areFoundByConfigurationEnvironmentAndName)
{
    const mervo::test::TempDir folder;
    for (const char* name : {"xterm", "strange", "x-terminal-emulator"})
        mervo::test::writeProgram(folder / name, "#!/bin/sh\n");
    const std::string path = ::getenv("PATH");
    ::setenv("PATH", folder.path().c_str(), 1);
    ::setenv("DISPLAY", ":77", 1);
    const auto found = [&](const char* toml, const char* variable) {
        ::setenv("TERMINAL", variable, 1);
        const auto terminal = ownerTerminal(Configuration::parse(toml, "desk.toml", kSections));
        return std::filesystem::path(terminal.program).filename().string() + " "
            + std::string(terminal.kind.introduction) + " " + std::to_string(terminal.words.size()) + " "
            + terminal.source;
    };
    EXPECT_EQ(found("[terminal]\ncommand = [\"strange\", \"--run\"]", "xterm"), "strange  1 desk.toml");
    EXPECT_EQ(found("", "strange"), "strange -e 0 $TERMINAL");
    EXPECT_EQ(found("", "xterm -fs 12"), "xterm -e 2 $TERMINAL");
    EXPECT_EQ(found("", "gone"), "x-terminal-emulator -e 0 x-terminal-emulator");
    std::filesystem::remove(folder / "x-terminal-emulator");
    EXPECT_EQ(found("", ""), "xterm -e 0 ");
    ::unsetenv("DISPLAY");
    EXPECT_THROW(found("", ""), TerminalError); // xterm needs an X display
    EXPECT_THROW(found("[terminal]\ncommand = [\"gone\"]", "xterm"), TerminalError);
    for (const char* mistake :
        {"[terminal]\ncommand = []", "[terminal]\ncommand = [\"\"]", "[terminal]\ncomand = [\"x\"]"})
        EXPECT_THROW(found(mistake, "xterm"), ConfigurationError) << mistake;
    ::setenv("PATH", path.c_str(), 1);
}

TEST(Terminals, areReadFromDesktopEntries)
{
    const mervo::test::TempDir folder;
    const std::filesystem::path entry = folder / "a.desktop";
    mervo::test::writeFile(
        entry, "[Other]\nExec=no\n[Desktop Entry]\nName=x\nExec = \"/bin/sh\" -x \"a \\\"b\\\" c\" %u %%\n");
    const OwnerTerminal found = terminalAt(entry);
    EXPECT_EQ(found.program, "/bin/sh");
    EXPECT_EQ(found.words, (Words{"-x", "a \"b\" c", "%"}));
    EXPECT_THROW(terminalAt(folder / "none.desktop"), TerminalError);
    mervo::test::writeFile(entry, "[Desktop Entry]\nExec=\n");
    EXPECT_THROW(terminalAt(entry), TerminalError);
    EXPECT_THROW(terminalAt(folder.path()), TerminalError);
}

TEST(Terminals, runATextAsItsShellWould)
{
    const mervo::test::TempDir folder;
    const std::string file = folder / "a 'b\".sh";
    mervo::test::writeFile(file, "");
    const std::string bash = shellCommand("/bin/sh", "exec bash " + file)[0];
    EXPECT_EQ(std::filesystem::path(bash).filename(), "bash");
    EXPECT_EQ(shellCommand("/bin/sh", "exec bash " + file), (Words{bash, file}));
    EXPECT_EQ(
        shellCommand("/bin/sh", "exec bash /none x"), (Words{"/bin/sh", "-c", "exec bash /none x\nexec '/bin/sh'"}));
    EXPECT_EQ(shellCommand("/o'p/fish", "ls"), (Words{"/o'p/fish", "-c", "ls\nexec '/o'\\''p/fish'"}));
    EXPECT_EQ(shellCommand("/bin/sh", ""), Words{"/bin/sh"});
}

} // namespace
