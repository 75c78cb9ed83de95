#pragma once

#include <string>
#include <string_view>
#include <vector>

/// JSON as the server reads it: only what a message of the protocol can mean is kept.
///
/// A tree of plain values in which a list is known only as a list, and an object below the sixth level only as an
/// object. A line of any nesting is therefore read in constant stack and in memory that its own texts bound, and a
/// number keeps the text that it was written with. An escape of half a surrogate pair is read as U+FFFD.
namespace mervo::mcp::json {

struct Value {
    enum class Kind { absent, null, boolean, integer, real, text, list, object };

    struct Member;

    Kind kind = Kind::absent;
    std::string text; ///< a string's content; a number or boolean as it was written
    std::vector<Member> members; ///< an object's, in the order of the text

    /// The member of an object, the last one of several with this name; an absent value when there is none.
    const Value& operator[](std::string_view name) const;
    /// The same member moved out.
    Value take(std::string_view name);

    bool is(Kind wanted) const { return kind == wanted; }
    /// Absent, or written as null: no difference is made.
    bool missing() const { return kind == Kind::absent || kind == Kind::null; }
};

struct Value::Member {
    std::string name;
    Value value;
};

inline constexpr std::size_t kDepth = 6;
inline constexpr std::size_t kMostMembers = 1024;

enum class Outcome {
    read,
    crowded, ///< JSON, but an object has more than kMostMembers members; those beyond are not kept
    malformed ///< no JSON, or no UTF-8
};

/// Reads one text. Throws only std::bad_alloc.
Outcome parse(std::string_view text, Value& value);

/// A text as a JSON string, quotation marks included. Bytes that are not UTF-8 become U+FFFD.
std::string quoted(std::string_view text);

/// The same at the end of `out`, for a text that is known to be UTF-8.
void appendQuoted(std::string& out, std::string_view validText);

} // namespace mervo::mcp::json
