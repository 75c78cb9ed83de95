#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// One block of an agent's prompt, which is shown as a small document.
struct PromptBlock {
    enum class Kind { heading, bullet, paragraph, code };

    Kind kind = Kind::paragraph;
    int level = 0; ///< of a heading, 1 to 3
    std::string text; ///< unfiltered; lines joined by line feeds

    bool operator==(const PromptBlock&) const = default;
};

const char* rawValue(PromptBlock::Kind kind);

/// Parses headings, bullets, paragraphs and fenced code; all other Markdown is plain text.
std::vector<PromptBlock> promptBlocks(std::string_view prompt);

} // namespace mervo
