#include "platform/desk/mail/TextStore.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::size_t kBlock = 64 * 1024; // more than a string keeps inside itself

} // namespace

std::string_view TextStore::keep(std::string_view text)
{
    if (text.empty())
        return {};
    if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < text.size()) {
        std::string block;
        block.reserve(std::max(kBlock, text.size()));
        blocks_.push_back(std::move(block));
    }
    std::string& block = blocks_.back();
    const std::size_t start = block.size();
    block.append(text);
    return std::string_view(block).substr(start);
}

std::string_view TextStore::keep(std::string&& text)
{
    if (text.size() < kBlock)
        return keep(std::string_view(text));
    blocks_.insert(blocks_.begin(), std::move(text)); // the last block stays the one that is filled
    return blocks_.front();
}

void TextStore::take(TextStore&& other)
{
    std::move(other.blocks_.begin(), other.blocks_.end(), std::inserter(blocks_, blocks_.begin()));
    other.blocks_.clear();
}

} // namespace mervo::desk
