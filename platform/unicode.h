#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What the system needs of Unicode. Every text is UTF-8; bytes that are not are passed through as they stand, and
/// no function here throws or reads past its argument.
namespace mervo::platform {

/// The first code point of a text. An ill-formed byte stands for itself: `valid` is false, `value` is the byte and
/// `length` 1. An empty text gives length 0.
struct CodePoint {
    char32_t value = 0;
    std::size_t length = 0;
    bool valid = false;
};
CodePoint firstCodePoint(std::string_view text) noexcept;

/// The key under which two texts that differ only in letter case (or in how an accent is composed) are equal:
/// canonical composition and full case folding. ASCII takes a fast path. Takes time in proportion to the text, as do
/// the two below: a run of more than 30 combining marks is split by U+034F.
std::string foldCase(std::string_view text);

/// Canonical composition. A text that is not all well-formed is given back as it stands.
std::string composed(std::string_view text);

/// The letters without their accents and other marks, decomposed; likewise.
std::string withoutMarks(std::string_view text);

/// True when every byte belongs to a well-formed UTF-8 sequence (no surrogates, no overlong forms).
bool isValidUtf8(std::string_view text) noexcept;

/// The text with every ill-formed byte replaced by U+FFFD.
std::string withValidUtf8(std::string_view text);

/// Characters as a reader counts them: extended grapheme clusters (Unicode Annex 29). CR LF is one.
std::size_t countCharacters(std::string_view text) noexcept;

/// The byte length of the first character of `text`, 0 for an empty text.
std::size_t firstCharacterLength(std::string_view text) noexcept;

} // namespace mervo::platform
