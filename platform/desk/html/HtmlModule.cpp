#include "platform/desk/notebook/HtmlReader.h"

#include <csetjmp>
#include <cstddef>
#include <ctime>
#include <gumbo.h>
#include <memory>
#include <new>
#include <vector>

namespace mervo::desk {
namespace {

constexpr std::size_t kMostMemory = 32 * 1024 * 1024;
constexpr std::int64_t kMostTime = 500'000'000; // nanoseconds of the processor

std::int64_t processorTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// The memory of one parser at a time, which is freed as a whole: the library would free a tree by recursion. The
/// library asks for memory at every step and does not expect to be refused, so a document that takes more than it may
/// have is left by a long jump: only frames of C lie in between.
class Arena {
public:
    void begin()
    {
        used_ = taken_ = requests_ = 0;
        next_ = 0;
        end_ = processorTime() + kMostTime;
    }

    void* get(std::size_t size)
    {
        constexpr std::size_t kAlignment = alignof(std::max_align_t);
        size = (size + kAlignment - 1) / kAlignment * kAlignment;
        taken_ += size;
        if (taken_ > kMostMemory || (++requests_ % kRequestsPerLook == 0 && processorTime() > end_))
            std::longjmp(tooMuch, 1); // NOLINT(cert-err52-cpp)
        if (next_ == 0 || size > kBlock - used_) {
            if (size > kBlock)
                return own(size);
            if (next_ == blocks_.size())
                blocks_.push_back(std::make_unique<std::byte[]>(kBlock));
            ++next_;
            used_ = 0;
        }
        std::byte* const place = blocks_[next_ - 1].get() + used_;
        used_ += size;
        return place;
    }

    void end() { large_.clear(); }

    std::jmp_buf tooMuch{};

private:
    static constexpr std::size_t kBlock = 256 * 1024;
    static constexpr std::size_t kRequestsPerLook = 64;

    void* own(std::size_t size)
    {
        large_.push_back(std::make_unique<std::byte[]>(size));
        return large_.back().get();
    }

    std::vector<std::unique_ptr<std::byte[]>> blocks_, large_; // of fixed size, and longer ones
    std::size_t next_ = 0, used_ = 0; // the blocks in use, and how much of the last
    std::size_t taken_ = 0, requests_ = 0;
    std::int64_t end_ = 0;
};

void* allocate(void* arena, std::size_t size)
{
    return static_cast<Arena*>(arena)->get(size);
}

void keep(void*, void*) { }

/// Null when the document takes more than it may have.
const GumboNode* parse(Arena& arena, std::string_view html)
{
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = allocate;
    options.deallocator = keep;
    options.userdata = &arena;
    options.max_errors = 0;
    arena.begin();
    if (setjmp(arena.tooMuch) != 0) // NOLINT(cert-err52-cpp)
        return nullptr;
    return gumbo_parse_with_options(&options, html.data(), html.size())->document;
}

std::string_view nameOf(const GumboElement& element)
{
    return element.tag == GUMBO_TAG_UNKNOWN ? "" : gumbo_normalized_tagname(element.tag);
}

bool isElement(const GumboNode& node)
{
    return node.type == GUMBO_NODE_ELEMENT || node.type == GUMBO_NODE_TEMPLATE;
}

HtmlElement elementOf(const GumboElement& element)
{
    const std::string_view name = nameOf(element);
    HtmlElement found{.tag = htmlTag(name)};
    if (found.tag == HtmlTag::heading)
        found.level = name[1] - '0';
    if (found.tag == HtmlTag::link) {
        if (const GumboAttribute* href = gumbo_get_attribute(&element.attributes, "href"))
            found.href = href->value;
    }
    return found;
}

void enter(const GumboNode& node, HtmlSink& sink)
{
    if (isElement(node)) {
        sink.open(elementOf(node.v.element));
    } else if (node.type == GUMBO_NODE_TEXT || node.type == GUMBO_NODE_WHITESPACE || node.type == GUMBO_NODE_CDATA) {
        sink.text(node.v.text.text);
    }
}

const GumboVector* childrenOf(const GumboNode& node)
{
    if (node.type == GUMBO_NODE_DOCUMENT)
        return &node.v.document.children;
    return isElement(node) ? &node.v.element.children : nullptr;
}

/// Without recursion: a document may be as deep as it has tags.
void walk(const GumboNode& document, HtmlSink& sink)
{
    struct Place {
        const GumboNode* node;
        unsigned next = 0;
    };
    std::vector<Place> path{{&document}};
    while (!path.empty()) {
        Place& last = path.back();
        const GumboVector* children = childrenOf(*last.node);
        if (children != nullptr && last.next < children->length) {
            const auto* const child = static_cast<const GumboNode*>(children->data[last.next++]);
            enter(*child, sink);
            path.push_back({child});
            continue;
        }
        if (isElement(*last.node))
            sink.close(htmlTag(nameOf(last.node->v.element)));
        path.pop_back();
    }
}

class Engine final : public HtmlEngine {
public:
    bool read(std::string_view html, HtmlSink& sink) const override
    {
        const GumboNode* const document = parse(arena_, html);
        if (document != nullptr)
            walk(*document, sink);
        arena_.end();
        return document != nullptr;
    }

private:
    mutable Arena arena_;
};

} // namespace

const HtmlEngine* mervoHtmlEngine()
{
    static const Engine engine;
    return &engine;
}

} // namespace mervo::desk
