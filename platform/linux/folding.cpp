#include "platform/ascii.h"
#include "platform/unicode.h"

#include <array>
#include <span>
#include <utf8proc.h>
#include <vector>

namespace mervo::platform {

namespace {

constexpr auto kComposed = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);
constexpr auto kFolded = static_cast<utf8proc_option_t>(kComposed | UTF8PROC_CASEFOLD);
constexpr auto kStripped = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_STRIPMARK);

/// Decomposed code points in canonical order. A run of more than 30 combining marks is parted by U+034F (the
/// Stream-Safe Text Format of Unicode Annex 15): no language writes that many, and sorting a run takes time in
/// proportion to its square.
class CanonicalOrder {
public:
    void add(utf8proc_int32_t point)
    {
        const auto order = static_cast<unsigned short>(utf8proc_get_property(point)->combining_class);
        if (order == 0) {
            run_ = 0;
        } else {
            beginRunIfFull();
        }
        points_.push_back(point);
        if (order == 0)
            return;
        std::size_t place = run_++;
        for (; place > 0 && orders_[place - 1] > order; --place) {
            orders_[place] = orders_[place - 1];
            std::swap(points_[points_.size() - run_ + place], points_[points_.size() - run_ + place - 1]);
        }
        orders_[place] = order;
    }
    std::vector<utf8proc_int32_t>& points() noexcept { return points_; }

private:
    static constexpr std::size_t kLongestRun = 30;
    static constexpr utf8proc_int32_t kJoiner = 0x34F;

    void beginRunIfFull()
    {
        if (run_ < kLongestRun)
            return;
        points_.push_back(kJoiner);
        run_ = 0;
    }

    std::vector<utf8proc_int32_t> points_;
    std::array<unsigned short, kLongestRun> orders_{}; // of the marks since the last starter
    std::size_t run_ = 0;
};

void appendUtf8(std::string& result, std::span<const utf8proc_int32_t> points)
{
    for (const utf8proc_int32_t point : points) {
        utf8proc_uint8_t bytes[4];
        const auto length = utf8proc_encode_char(point, bytes);
        result.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    }
}

/// Appends the normal form of the text up to its first ill-formed byte, and tells how long that part is.
std::size_t appendMapped(std::string& result, std::string_view text, utf8proc_option_t options)
{
    CanonicalOrder ordered;
    std::size_t length = 0;
    int boundClass = 0;
    for (CodePoint point = firstCodePoint(text); point.valid; point = firstCodePoint(text.substr(length))) {
        length += point.length;
        std::array<utf8proc_int32_t, 32> parts; // the longest decomposition has 4
        const auto count = utf8proc_decompose_char(static_cast<utf8proc_int32_t>(point.value), parts.data(),
            static_cast<utf8proc_ssize_t>(parts.size()), options, &boundClass);
        for (utf8proc_ssize_t i = 0; i < count; ++i)
            ordered.add(parts[static_cast<std::size_t>(i)]);
    }
    auto& points = ordered.points();
    const auto count = utf8proc_normalize_utf32(points.data(), static_cast<utf8proc_ssize_t>(points.size()), options);
    appendUtf8(result, std::span(points).first(static_cast<std::size_t>(count)));
    return length;
}

/// The normal form, or the text itself when it is not all well-formed.
std::string mapped(std::string_view text, utf8proc_option_t options)
{
    std::string result;
    result.reserve(text.size());
    return appendMapped(result, text, options) == text.size() ? result : std::string(text);
}

/// Single characters of Latin, Greek and Cyrillic, kana and Han: neither they nor their folded forms join with a
/// neighbour, so a text of nothing else is folded character by character.
bool foldsAlone(char32_t point) noexcept
{
    return point < 0x300 || (point >= 0x370 && point < 0x483) || (point >= 0x48A && point < 0x530)
        || (point >= 0x2010 && point <= 0x2027) || (point >= 0x3041 && point <= 0x3096)
        || (point >= 0x30A1 && point <= 0x30FA) || (point >= 0x3400 && point <= 0x9FFF);
}

/// Of a character that is not of ASCII.
void appendFoldedCharacter(std::string& result, std::string_view character, char32_t point)
{
    struct Folded {
        char bytes[7];
        unsigned char length; // 0: not known yet
    };
    constexpr char32_t kAlphabetsEnd = 0x530; // what foldsAlone() accepts above it is its own folded form
    constinit static thread_local std::array<Folded, kAlphabetsEnd> known{};
    if (point >= kAlphabetsEnd) {
        result += character;
        return;
    }
    Folded& folded = known[point];
    if (folded.length == 0) {
        std::string bytes;
        appendMapped(bytes, character, kFolded);
        folded.length = static_cast<unsigned char>(bytes.copy(folded.bytes, sizeof folded.bytes));
    }
    result.append(folded.bytes, folded.length);
}

/// False, and nothing appended, when a part of the text does not fold alone or is ill-formed.
bool appendFoldedAlone(std::string& result, std::string_view text)
{
    const std::size_t start = result.size();
    for (;;) {
        const std::size_t plain = ascii::prefixLength(text);
        ascii::appendLowered(result, text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty())
            return true;
        const CodePoint point = firstCodePoint(text);
        if (!point.valid || !foldsAlone(point.value)) {
            result.resize(start);
            return false;
        }
        appendFoldedCharacter(result, text.substr(0, point.length), point.value);
        text.remove_prefix(point.length);
    }
}

} // namespace

std::string foldCase(std::string_view text)
{
    if (ascii::isAscii(text))
        return ascii::lowered(text);
    std::string result;
    result.reserve(text.size());
    if (appendFoldedAlone(result, text))
        return result;
    while (!text.empty()) {
        text.remove_prefix(appendMapped(result, text, kFolded));
        if (!text.empty()) {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

std::string composed(std::string_view text)
{
    return mapped(text, kComposed);
}

std::string withoutMarks(std::string_view text)
{
    return mapped(text, kStripped);
}

} // namespace mervo::platform
