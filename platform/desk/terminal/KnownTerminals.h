#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The terminals whose command lines are known, each from its own manual page.
namespace mervo::desk {

/// A rectangle of pixels from the upper left corner of what it is counted on, y growing downwards.
struct Bounds {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool operator==(const Bounds&) const = default;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

struct KnownTerminal {
    enum class Display { any, x11, wayland };

    std::string_view program; ///< the name of its executable
    /// The option in front of the command, which takes all words that follow ("-e"); empty: none is needed.
    std::string_view introduction;
    /// Options for a place or a size, blanks between the words, with {left}, {top}, {width} and {height} in pixels.
    /// Empty: it has none in pixels.
    std::string_view geometry = {};
    Display display = Display::any; ///< what it needs
};

/// In the order in which they are looked for.
std::span<const KnownTerminal> knownTerminals();

/// By the file name of its executable. Null: none that is known.
const KnownTerminal* knownTerminal(std::string_view program);

/// The arguments with which a terminal runs a command in a new window: the owner's own words, where the window goes
/// (from the display's upper left corner), and the command. A last word of the owner's that introduces the command
/// already stays the only one.
std::vector<std::string> terminalArguments(const KnownTerminal& terminal, std::vector<std::string> ownWords,
    const std::optional<Bounds>& bounds, std::span<const std::string> command);

} // namespace mervo::desk
