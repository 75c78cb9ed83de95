// Comparing texts: folding keeps well-formed text well-formed, is done after the first time, and takes time in
// proportion to the text, which the fuzzer's own time limit watches over.

#include "platform/applescript/values/TextRules.h"
#include "platform/unicode.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace mervo;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void compare(const std::string& front, const std::string& back, const applescript::TextRules& rules)
{
    using namespace applescript;
    const auto left = Text::make(front), right = Text::make(back);
    const auto whole = Text::make(front + back);
    require(areEqual(*left, *left, rules) && order(*left, *left, rules) == 0);
    require(order(*left, *right, rules) * order(*right, *left, rules) <= 0);
    contains(*whole, *right, rules);
    const std::array<Ref<Text>, 1> parts{right};
    std::size_t end = 0;
    for (const TextRange& found : findAll(*whole, parts, rules, 1000)) {
        require(found.start >= end && found.start <= found.end && found.end <= whole->view().size());
        end = found.end;
    }
    require(whole->byteOffset(whole->characterCount()) == whole->view().size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::string text = platform::withValidUtf8(bytes);
    for (const std::string& made : {platform::foldCase(text), platform::composed(text), platform::withoutMarks(text)})
        require(platform::isValidUtf8(made));
    const std::string once = platform::composed(text);
    require(platform::composed(once) == once);
    require(platform::countCharacters(text) <= text.size());
    platform::foldCase(bytes);

    applescript::TextRules rules;
    rules.letterCase = *data & 1;
    rules.diacriticals = *data & 2;
    rules.whiteSpace = *data & 4;
    rules.hyphens = *data & 8;
    rules.punctuation = *data & 16;
    rules.numericStrings = *data & 32;
    compare(bytes.substr(0, bytes.size() / 2), bytes.substr(bytes.size() / 2), rules);
    return 0;
}
