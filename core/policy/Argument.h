#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace mervo {

/// What the values of an argument look like, and what becomes of others. Nothing is refused for its format: a value
/// outside of it is passed on as it stands, and the caller is told what the tool makes of it.
struct Format {
    enum class Kind {
        text, ///< anything
        needle, ///< what another text must contain
        words, ///< one of a list, in any letter case
        day, ///< YYYY-MM-DD
        moment, ///< YYYY-MM-DD or YYYY-MM-DD HH:MM
        time, ///< HH:MM
        whole, ///< digits with an optional sign
        number, ///< a decimal number
        hours, ///< comma-separated hours of a day
        paths ///< absolute, comma-separated
    };
    /// The words behind "so" in a remark. Empty: nothing is said, since the tool itself refuses such a value.
    struct Consequence {
        std::string_view text = {};
        bool noEffect = false; ///< the call does what it would do without the argument
    };

    Kind kind = Kind::text;
    std::string_view words = {}; ///< of Kind::words, with "|" between them
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    Consequence malformed = {}; ///< what a value in another form does
    Consequence outside = {}; ///< what a number below `least` or above `most` does
    bool emptyStands = false; ///< an empty value is passed on, rather than counted as not given
    std::optional<std::int64_t> limit = {}; ///< bounds the lines of the answer; the value is that of an absent argument

    enum class Fault { none, empty, blank, malformed, outside };
    Fault fault(std::string_view value) const;

    /// For people: "unread or read", "a whole number from 1"; empty for texts.
    std::string inWords() const;
};

/// The formats by name. `malformed` and `outside` as above.
namespace Formats {

using Consequence = Format::Consequence;

/// The call does what it would do without the argument.
constexpr Consequence withoutEffect(std::string_view text)
{
    return {.text = text, .noEffect = true};
}

inline constexpr Format needle{.kind = Format::Kind::needle};
inline constexpr Format day{.kind = Format::Kind::day};
inline constexpr Format moment{.kind = Format::Kind::moment, .malformed = {"the tool fails"}};
inline constexpr Format time{.kind = Format::Kind::time};
inline constexpr Format hours{.kind = Format::Kind::hours};
inline constexpr Format paths{.kind = Format::Kind::paths};

constexpr Format words(std::string_view list, Consequence otherwise = {})
{
    return {.kind = Format::Kind::words, .words = list, .malformed = otherwise};
}

/// A switch that is on unless its value is "false", and one that is off unless its value is "true".
inline constexpr Format onUnlessFalse = words("true|false", {"it counts as true: only \"false\" is off"});
inline constexpr Format offUnlessTrue = words("true|false", withoutEffect("it counts as false: only \"true\" is on"));

constexpr Format whole(double least, Consequence malformed = {}, Consequence outside = {})
{
    return {.kind = Format::Kind::whole, .least = least, .malformed = malformed, .outside = outside};
}

constexpr Format number(double least, Consequence malformed, Consequence outside)
{
    return {.kind = Format::Kind::number, .least = least, .malformed = malformed, .outside = outside};
}

/// How many lines an answer may have, read by a script: without a limit for 0 and below.
constexpr Format scriptLimit(std::int64_t absent)
{
    return {.kind = Format::Kind::whole,
        .least = 0,
        .malformed = {"the tool rounds it or fails"},
        .outside = {"there is no limit"},
        .emptyStands = true,
        .limit = absent};
}

/// The same read in this process, where a text that is no number counts as absent.
constexpr Format nativeLimit(std::int64_t absent, Consequence outside)
{
    return {.kind = Format::Kind::whole,
        .least = 1,
        .malformed = withoutEffect("it counts as not given"),
        .outside = outside,
        .limit = absent};
}

} // namespace Formats

/// One argument of a tool, as the command line's help, the server's schema and the documentation show it.
struct Argument {
    std::string_view name;
    bool required = false;
    std::string_view help; ///< one line
    Format format = {};
};

constexpr Argument required(std::string_view name, std::string_view help, const Format& format = {})
{
    return {.name = name, .required = true, .help = help, .format = format};
}

constexpr Argument optional(std::string_view name, std::string_view help, const Format& format = {})
{
    return {.name = name, .required = false, .help = help, .format = format};
}

} // namespace mervo
