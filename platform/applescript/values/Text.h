#pragma once

#include "platform/applescript/values/RefCounted.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::applescript {

/// An immutable text, shared between values. What is expensive to compute (character boundaries, the folded form) is
/// cached. ASCII text without CR LF pairs is indexed in constant time; any other text has an index of every 16th
/// character.
class Text final : public Cell {
public:
    static Ref<Text> make(std::string_view bytes);
    /// `left` followed by `right`. Appending to the result of an earlier `joined` takes time in proportion to `right`
    /// only, so a text built up in a loop costs what it holds.
    static Ref<Text> joined(const Ref<Text>& left, std::string_view right);
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() override;

    std::string_view view() const noexcept { return {data_, length_}; }
    bool isAscii() const noexcept;
    /// Characters as a reader counts them.
    std::size_t characterCount() const;
    /// The byte offset of a character counted from 0; `characterCount()` gives the end.
    std::size_t byteOffset(std::size_t character) const;
    /// Characters in front of a byte offset that starts a character.
    std::size_t characterAt(std::size_t byteOffset) const;
    /// The case-folded text in canonical composition. Meaningless for ASCII texts, which are compared without it.
    std::string_view folded() const;

private:
    struct Buffer;
    Text() noexcept = default;
    void classify() const noexcept;
    void buildIndex() const;

    const char* data_ = nullptr;
    std::size_t length_ = 0;
    std::size_t inlineBytes_ = 0;
    std::shared_ptr<Buffer> buffer_;
    mutable bool isClassified_ = false;
    mutable bool isAscii_ = false;
    mutable bool isSimple_ = false; // one byte is one character
    struct Derived;
    mutable std::unique_ptr<Derived> derived_;
};

} // namespace mervo::applescript
