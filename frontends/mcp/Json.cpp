#include "frontends/mcp/Json.h"

#include "platform/unicode.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace mervo::mcp::json {

namespace {

using Kind = Value::Kind;

bool needsEscape(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
}

/// The tree as far as it is kept: nothing inside a list, nor below the level kDepth.
class Tree {
public:
    explicit Tree(Value& root)
        : root_(root)
    {
    }

    bool crowded() const { return crowded_; }

    void leaf(Kind kind, std::string text)
    {
        if (skipped_ == 0)
            current() = {kind, std::move(text), {}};
    }

    void open(Kind kind)
    {
        if (skipped_ > 0) {
            ++skipped_;
            return;
        }
        Value& value = current();
        value = {kind, {}, {}};
        if (kind == Kind::list || open_.size() == kDepth) {
            skipped_ = 1;
        } else {
            open_.push_back(&value); // stays where it is: its parent gets no further member while it is open
        }
    }

    void close()
    {
        if (skipped_ > 0) {
            --skipped_;
        } else {
            open_.pop_back();
        }
    }

    void key(std::string name)
    {
        if (skipped_ > 0)
            return;
        auto& members = open_.back()->members;
        if (members.size() < kMostMembers) {
            members.push_back({std::move(name), {}});
        } else {
            crowded_ = true;
            members.back() = {std::move(name), {}};
        }
    }

private:
    Value& current() { return open_.empty() ? root_ : open_.back()->members.back().value; }

    Value& root_;
    std::vector<Value*> open_;
    std::size_t skipped_ = 0; ///< how many brackets are open inside a value whose inside is not kept
    bool crowded_ = false;
};

/// The grammar of RFC 8259, without recursion.
class Reader {
public:
    Reader(std::string_view text, Tree& tree)
        : text_(text)
        , tree_(tree)
    {
    }

    /// False where the text is not one JSON value.
    bool read()
    {
        Step step = Step::value;
        while (step == Step::value)
            step = value();
        skipBlanks();
        return step == Step::complete && at_ == text_.size();
    }

private:
    enum class Step { value, complete, broken }; ///< what comes next

    char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; } // a NUL is allowed nowhere

    bool take(char wanted)
    {
        const bool found = peek() == wanted && at_ < text_.size();
        at_ += found ? 1 : 0;
        return found;
    }

    void skipBlanks() { at_ = std::min(text_.find_first_not_of(" \t\n\r", at_), text_.size()); }

    Step value()
    {
        skipBlanks();
        switch (peek()) {
        case '{':
        case '[':
            return begin(text_[at_]);
        case '"': {
            std::string content;
            if (!string(content))
                return Step::broken;
            tree_.leaf(Kind::text, std::move(content));
            return next();
        }
        case 't':
            return word("true", Kind::boolean);
        case 'f':
            return word("false", Kind::boolean);
        case 'n':
            return word("null", Kind::null);
        default:
            return number() ? next() : Step::broken;
        }
    }

    Step begin(char bracket)
    {
        ++at_;
        tree_.open(bracket == '{' ? Kind::object : Kind::list);
        brackets_ += bracket == '{' ? '}' : ']';
        skipBlanks();
        if (peek() == brackets_.back())
            return next();
        return bracket == '{' ? key() : Step::value;
    }

    Step key()
    {
        std::string name;
        skipBlanks();
        if (peek() != '"' || !string(name))
            return Step::broken;
        skipBlanks();
        tree_.key(std::move(name));
        return take(':') ? Step::value : Step::broken;
    }

    /// Behind a value: closes what ends here.
    Step next()
    {
        while (!brackets_.empty()) {
            skipBlanks();
            if (take(','))
                return brackets_.back() == '}' ? key() : Step::value;
            if (!take(brackets_.back()))
                return Step::broken;
            tree_.close();
            brackets_.pop_back();
        }
        return Step::complete;
    }

    Step word(std::string_view wanted, Kind kind)
    {
        if (!text_.substr(at_).starts_with(wanted))
            return Step::broken;
        at_ += wanted.size();
        tree_.leaf(kind, kind == Kind::null ? std::string() : std::string(wanted));
        return next();
    }

    bool digits()
    {
        const std::size_t first = at_;
        at_ = std::min(text_.find_first_not_of("0123456789", at_), text_.size());
        return at_ > first;
    }

    /// Kept as it is written, however long: what cannot be counted can still come back as an id.
    bool number()
    {
        const std::size_t first = at_;
        take('-');
        if (!take('0') && !digits())
            return false;
        Kind kind = Kind::integer;
        if (take('.')) {
            kind = Kind::real;
            if (!digits())
                return false;
        }
        if (take('e') || take('E')) {
            kind = Kind::real;
            if (!take('+'))
                take('-');
            if (!digits())
                return false;
        }
        tree_.leaf(kind, std::string(text_.substr(first, at_ - first)));
        return true;
    }

    bool string(std::string& content)
    {
        ++at_;
        while (at_ < text_.size()) {
            const auto rest = text_.substr(at_);
            const auto special = std::find_if(rest.begin(), rest.end(), needsEscape);
            const auto plain = rest.substr(0, static_cast<std::size_t>(special - rest.begin()));
            if (!platform::isValidUtf8(plain))
                return false;
            content += plain;
            at_ += plain.size();
            if (take('"'))
                return true;
            if (!take('\\') || !escape(content))
                return false;
        }
        return false;
    }

    bool escape(std::string& content)
    {
        constexpr std::string_view kShort = "\"\\/bfnrt";
        constexpr std::string_view kPlain = "\"\\/\b\f\n\r\t";
        if (take('u'))
            return codePoint(content);
        const std::size_t found = at_ < text_.size() ? kShort.find(text_[at_]) : std::string_view::npos;
        if (found == std::string_view::npos)
            return false;
        ++at_;
        content += kPlain[found];
        return true;
    }

    /// The four digits of a \u escape.
    std::optional<char32_t> unit()
    {
        const auto four = text_.substr(at_, 4);
        unsigned number = 0;
        const auto read = std::from_chars(four.data(), four.data() + four.size(), number, 16);
        if (four.size() < 4 || read.ptr != four.data() + 4)
            return std::nullopt;
        at_ += 4;
        return number;
    }

    /// Half a surrogate pair, which is what a program makes of a text that it cut inside a pair, is U+FFFD.
    bool codePoint(std::string& content)
    {
        const auto first = unit();
        if (!first)
            return false;
        char32_t code = *first;
        if (isHigh(code) && text_.substr(at_).starts_with("\\u")) {
            const std::size_t behindFirst = std::exchange(at_, at_ + 2);
            const auto second = unit();
            if (second && isLow(*second)) {
                code = 0x10000 + ((code - 0xD800) << 10U) + (*second - 0xDC00);
            } else {
                at_ = behindFirst; // an escape of its own
            }
        }
        appendUtf8(content, isHigh(code) || isLow(code) ? U'\uFFFD' : code);
        return true;
    }

    static bool isHigh(char32_t code) { return code >= 0xD800 && code < 0xDC00; }
    static bool isLow(char32_t code) { return code >= 0xDC00 && code < 0xE000; }

    static void appendUtf8(std::string& out, char32_t code)
    {
        const auto byte = [&](char32_t bits) { out += static_cast<char>(static_cast<unsigned char>(bits)); };
        if (code < 0x80) {
            byte(code);
            return;
        }
        if (code < 0x800) {
            byte(0xC0U | code >> 6U);
        } else if (code < 0x10000) {
            byte(0xE0U | code >> 12U);
        } else {
            byte(0xF0U | code >> 18U);
            byte(0x80U | (code >> 12U & 0x3FU));
        }
        if (code >= 0x800)
            byte(0x80U | (code >> 6U & 0x3FU));
        byte(0x80U | (code & 0x3FU));
    }

    std::string_view text_;
    Tree& tree_;
    std::size_t at_ = 0;
    std::string brackets_; ///< those that will close what is open
};

void appendEscaped(std::string& out, char byte)
{
    constexpr std::string_view kPlain = "\"\\\b\f\n\r\t";
    constexpr std::string_view kShort = "\"\\bfnrt";
    if (const std::size_t at = kPlain.find(byte); at != std::string_view::npos) {
        out += '\\';
        out += kShort[at];
    } else {
        constexpr std::string_view kDigits = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(byte);
        out.append("\\u00") += kDigits[code >> 4U];
        out += kDigits[code & 15U];
    }
}

} // namespace

const Value& Value::operator[](std::string_view name) const
{
    static const Value absent;
    const auto found =
        std::find_if(members.rbegin(), members.rend(), [&](const auto& member) { return member.name == name; });
    return found == members.rend() ? absent : found->value;
}

Value Value::take(std::string_view name)
{
    const auto found =
        std::find_if(members.rbegin(), members.rend(), [&](const auto& member) { return member.name == name; });
    return found == members.rend() ? Value{} : std::move(found->value);
}

Outcome parse(std::string_view text, Value& value)
{
    Tree tree(value);
    if (!Reader(text, tree).read())
        return Outcome::malformed;
    return tree.crowded() ? Outcome::crowded : Outcome::read;
}

std::string quoted(std::string_view text)
{
    std::string out;
    if (platform::isValidUtf8(text)) {
        appendQuoted(out, text);
    } else {
        appendQuoted(out, platform::withValidUtf8(text));
    }
    return out;
}

void appendQuoted(std::string& out, std::string_view validText)
{
    out.reserve(out.size() + validText.size() + validText.size() / 16 + 2);
    out += '"';
    while (!validText.empty()) {
        const auto special = std::find_if(validText.begin(), validText.end(), needsEscape);
        const auto plain = static_cast<std::size_t>(special - validText.begin());
        out.append(validText.substr(0, plain));
        validText.remove_prefix(plain);
        if (!validText.empty()) {
            appendEscaped(out, validText.front());
            validText.remove_prefix(1);
        }
    }
    out += '"';
}

} // namespace mervo::mcp::json
