#include "platform/desk/terminal/KnownTerminals.h"

#include <algorithm>
#include <array>
#include <fmt/args.h>
#include <fmt/format.h>
#include <sstream>

namespace mervo::desk {
namespace {

using Display = KnownTerminal::Display;

// The first seven are looked for in this order; the others are met as $TERMINAL or x-terminal-emulator. Where there is
// no option in pixels, or only one for the place, the window is moved and sized once it is there.
constexpr std::array kTerminals{
    KnownTerminal{"foot", "", "--window-size-pixels={width}x{height}", Display::wayland},
    KnownTerminal{
        "kitty", "", "-o remember_window_size=no -o initial_window_width={width} -o initial_window_height={height}"},
    KnownTerminal{"alacritty", "-e"},
    KnownTerminal{"gnome-terminal", "--", "--geometry=+{left}+{top}"},
    KnownTerminal{"konsole", "-e"},
    KnownTerminal{"xfce4-terminal", "-x"},
    KnownTerminal{"xterm", "-e", "-geometry +{left}+{top}", Display::x11},
    KnownTerminal{"uxterm", "-e", "-geometry +{left}+{top}", Display::x11},
    KnownTerminal{"lxterm", "-e", "-geometry +{left}+{top}", Display::x11},
    KnownTerminal{"urxvt", "-e", "-geometry +{left}+{top}", Display::x11},
    KnownTerminal{"st", "-e", {}, Display::x11},
    KnownTerminal{"stterm", "-e", {}, Display::x11},
    KnownTerminal{"footclient", "", "--window-size-pixels={width}x{height}", Display::wayland},
};

std::vector<std::string> geometryWords(std::string_view form, const Bounds& bounds)
{
    std::vector<std::string> words;
    std::istringstream filled(fmt::format(fmt::runtime(form), fmt::arg("left", bounds.left),
        fmt::arg("top", bounds.top), fmt::arg("width", bounds.width()), fmt::arg("height", bounds.height())));
    for (std::string word; filled >> word;)
        words.push_back(word);
    return words;
}

} // namespace

std::span<const KnownTerminal> knownTerminals()
{
    return kTerminals;
}

const KnownTerminal* knownTerminal(std::string_view program)
{
    const auto* found = std::ranges::find(kTerminals, program, &KnownTerminal::program);
    return found == kTerminals.end() ? nullptr : found;
}

std::vector<std::string> terminalArguments(const KnownTerminal& terminal, std::vector<std::string> ownWords,
    const std::optional<Bounds>& bounds, std::span<const std::string> command)
{
    std::vector<std::string> words = std::move(ownWords);
    if (!terminal.introduction.empty() && !words.empty() && words.back() == terminal.introduction)
        words.pop_back();
    if (bounds) {
        const auto geometry = geometryWords(terminal.geometry, *bounds);
        words.insert(words.end(), geometry.begin(), geometry.end());
    }
    if (!terminal.introduction.empty())
        words.emplace_back(terminal.introduction);
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

} // namespace mervo::desk
