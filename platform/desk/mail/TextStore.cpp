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

void TextStore::take(TextStore&& other)
{
    // In front, so that the last block stays the one that is filled.
    blocks_.insert(
        blocks_.begin(), std::make_move_iterator(other.blocks_.begin()), std::make_move_iterator(other.blocks_.end()));
    other.blocks_.clear();
}

} // namespace mervo::desk
