#include "platform/applescript/values/Text.h"

#include "platform/applescript/values/Limits.h"
#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace mervo::applescript {

namespace {

constexpr std::size_t kIndexStep = 16;
constexpr std::size_t kSmallestBuffer = 256; // below it, texts hold their own bytes

} // namespace

/// Bytes that several texts begin with; only the text that reaches to `used` may append.
struct Text::Buffer {
    explicit Buffer(std::size_t size)
        : capacity(size)
    {
        Limits::charge(capacity);
        bytes = std::make_unique_for_overwrite<char[]>(capacity);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() { Limits::discharge(capacity); }

    std::unique_ptr<char[]> bytes;
    std::size_t capacity;
    std::size_t used = 0;
};

struct Text::Derived {
    Derived() = default;
    Derived(const Derived&) = delete;
    Derived& operator=(const Derived&) = delete;
    ~Derived() { Limits::discharge(charged); }

    bool hasIndex = false;
    bool hasFolded = false;
    std::size_t count = 0;
    std::size_t charged = 0;
    std::vector<std::uint32_t> offsets; // of characters 0, 16, 32, ...
    std::string folded;
};

Ref<Text> Text::make(std::string_view bytes)
{
    Ref<Text> text(new (ExtraBytes{bytes.size()}) Text());
    char* inlineData = reinterpret_cast<char*>(text.get()) + sizeof(Text);
    if (!bytes.empty())
        std::memcpy(inlineData, bytes.data(), bytes.size());
    text->data_ = inlineData;
    text->length_ = bytes.size();
    text->inlineBytes_ = bytes.size();
    return text;
}

Ref<Text> Text::joined(const Ref<Text>& left, std::string_view right)
{
    if (right.empty())
        return left;
    const std::size_t total = left->length_ + right.size();
    if (total < kSmallestBuffer) {
        char bytes[kSmallestBuffer];
        std::memcpy(bytes, left->data_, left->length_);
        std::memcpy(bytes + left->length_, right.data(), right.size());
        return make({bytes, total});
    }
    std::shared_ptr<Buffer> buffer = left->buffer_;
    const bool fits = buffer && left->data_ + left->length_ == buffer->bytes.get() + buffer->used
        && buffer->capacity - buffer->used >= right.size();
    if (!fits) {
        buffer = std::make_shared<Buffer>(total > Limits::kDefaultBytes / 2 ? total : total * 2);
        std::memcpy(buffer->bytes.get(), left->data_, left->length_);
        buffer->used = left->length_;
        Limits::passed(total);
    }
    std::memcpy(buffer->bytes.get() + buffer->used, right.data(), right.size());
    buffer->used += right.size();
    Ref<Text> text(new (ExtraBytes{0}) Text());
    text->data_ = buffer->bytes.get();
    text->length_ = total;
    text->buffer_ = std::move(buffer);
    return text;
}

Text::~Text()
{
    Limits::discharge(inlineBytes_);
}

void Text::classify() const noexcept
{
    isAscii_ = platform::ascii::isAscii(view());
    isSimple_ = isAscii_ && view().find("\r\n") == std::string_view::npos;
    isClassified_ = true;
}

bool Text::isAscii() const noexcept
{
    if (!isClassified_)
        classify();
    return isAscii_;
}

void Text::buildIndex() const
{
    if (!derived_)
        derived_ = std::make_unique<Derived>();
    if (derived_->hasIndex)
        return;
    std::string_view rest = view();
    std::size_t count = 0;
    while (!rest.empty()) {
        if (count % kIndexStep == 0)
            derived_->offsets.push_back(static_cast<std::uint32_t>(length_ - rest.size()));
        rest.remove_prefix(platform::firstCharacterLength(rest));
        ++count;
    }
    derived_->count = count;
    derived_->hasIndex = true;
    Limits::passed(length_);
}

std::size_t Text::characterCount() const
{
    if (!isClassified_)
        classify();
    if (isSimple_)
        return length_;
    buildIndex();
    return derived_->count;
}

std::size_t Text::byteOffset(std::size_t character) const
{
    if (character >= characterCount())
        return length_;
    if (isSimple_)
        return character;
    std::size_t offset = derived_->offsets[character / kIndexStep];
    for (std::size_t i = character % kIndexStep; i > 0; --i)
        offset += platform::firstCharacterLength(view().substr(offset));
    return offset;
}

std::size_t Text::characterAt(std::size_t byteOffset) const
{
    const std::size_t count = characterCount();
    if (byteOffset >= length_)
        return count;
    if (isSimple_)
        return byteOffset;
    const auto& offsets = derived_->offsets;
    const auto after = std::upper_bound(offsets.begin(), offsets.end(), byteOffset);
    const auto block = static_cast<std::size_t>(after - offsets.begin()) - 1;
    std::size_t character = block * kIndexStep;
    for (std::size_t at = offsets[block]; at < byteOffset; ++character)
        at += platform::firstCharacterLength(view().substr(at));
    return character;
}

std::string_view Text::folded() const
{
    if (!derived_)
        derived_ = std::make_unique<Derived>();
    if (!derived_->hasFolded) {
        Limits::charge(length_);
        derived_->charged += length_;
        derived_->folded = platform::foldCase(view());
        derived_->hasFolded = true;
        Limits::passed(length_);
    }
    return derived_->folded;
}

} // namespace mervo::applescript
