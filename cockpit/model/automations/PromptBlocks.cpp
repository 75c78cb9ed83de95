#include "cockpit/model/automations/PromptBlocks.h"

#include "core/foundation/Text.h"

#include <array>

namespace mervo {

namespace {

constexpr std::string_view kFence = "```";
constexpr std::array<std::string_view, 3> kHeadings{"### ", "## ", "# "}; // levels 3, 2, 1
constexpr std::array<std::string_view, 3> kBullets{"- ", "* ", "+ "};

class Document {
public:
    void read(const std::string& line)
    {
        if (line.starts_with(kFence)) {
            fence();
        } else if (insideCode_) {
            code_.push_back(line);
        } else {
            readText(line);
        }
    }

    std::vector<PromptBlock> finish()
    {
        endParagraph();
        if (insideCode_)
            endCode();
        return std::move(blocks_);
    }

private:
    void fence()
    {
        if (insideCode_) {
            endCode();
        } else {
            endParagraph();
        }
        insideCode_ = !insideCode_;
    }

    void readText(const std::string& line)
    {
        const std::string_view text = Text::trimmed(line);
        if (text.empty())
            return endParagraph();
        for (std::size_t i = 0; i < kHeadings.size(); ++i) {
            if (text.starts_with(kHeadings[i])) {
                return add(PromptBlock::Kind::heading, static_cast<int>(kHeadings.size() - i),
                    text.substr(kHeadings[i].size()));
            }
        }
        for (const std::string_view bullet : kBullets) {
            if (text.starts_with(bullet))
                return add(PromptBlock::Kind::bullet, 0, text.substr(bullet.size()));
        }
        paragraph_.emplace_back(text);
    }

    void add(PromptBlock::Kind kind, int level, std::string_view text)
    {
        endParagraph();
        blocks_.push_back({kind, level, std::string(text)});
    }

    void endParagraph()
    {
        if (!paragraph_.empty())
            blocks_.push_back({PromptBlock::Kind::paragraph, 0, Text::join(paragraph_, "\n")});
        paragraph_.clear();
    }

    void endCode()
    {
        blocks_.push_back({PromptBlock::Kind::code, 0, Text::join(code_, "\n")});
        code_.clear();
    }

    std::vector<PromptBlock> blocks_;
    std::vector<std::string> paragraph_;
    std::vector<std::string> code_;
    bool insideCode_ = false;
};

} // namespace

const char* rawValue(PromptBlock::Kind kind)
{
    switch (kind) {
    case PromptBlock::Kind::heading:
        return "heading";
    case PromptBlock::Kind::bullet:
        return "bullet";
    case PromptBlock::Kind::code:
        return "code";
    case PromptBlock::Kind::paragraph:
        break;
    }
    return "paragraph";
}

std::vector<PromptBlock> promptBlocks(std::string_view prompt)
{
    Document document;
    for (const std::string& line : Text::split(prompt, '\n'))
        document.read(line);
    return document.finish();
}

} // namespace mervo
