#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// One piece of an agent's prompt shown as a small document.
struct PromptBlock {
    enum class Kind { heading, bullet, paragraph, code };

    Kind kind = Kind::paragraph;
    int level = 0; ///< of a heading, 1 to 3
    std::string text; ///< as it came; lines joined by line feeds

    bool operator==(const PromptBlock&) const = default;
};

const char* rawValue(PromptBlock::Kind kind);

/// Headings, bullets, paragraphs and fenced code; nothing else of Markdown has a meaning here.
std::vector<PromptBlock> promptBlocks(std::string_view prompt);

} // namespace mervo
