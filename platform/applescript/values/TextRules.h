#pragma once

#include "platform/applescript/values/Text.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace mervo::applescript {

/// Which differences count when texts are compared; set by `considering` and `ignoring`.
struct TextRules {
    bool letterCase = false;
    bool diacriticals = true;
    bool whiteSpace = true;
    bool hyphens = true;
    bool punctuation = true;
    bool numericStrings = false;

    bool areDefault() const noexcept
    {
        return !letterCase && diacriticals && whiteSpace && hyphens && punctuation && !numericStrings;
    }
    friend bool operator==(const TextRules&, const TextRules&) noexcept = default;
};

/// A piece of a text in bytes, the end not included.
struct TextRange {
    std::size_t start = 0;
    std::size_t end = 0;
};

bool areEqual(const Text& left, const Text& right, const TextRules& rules);
/// Below, at or above zero in dictionary order: letters without regard to case, a prefix before the longer text.
int order(const Text& left, const Text& right, const TextRules& rules);
bool contains(const Text& text, const Text& part, const TextRules& rules);
bool startsWith(const Text& text, const Text& part, const TextRules& rules);
bool endsWith(const Text& text, const Text& part, const TextRules& rules);

/// The occurrences of any of the parts, from left to right, without overlap; of two at the same place the longer one.
/// Empty parts are never found. At most `most` occurrences.
std::vector<TextRange> findAll(
    const Text& text, std::span<const Ref<Text>> parts, const TextRules& rules, std::size_t most);

} // namespace mervo::applescript
