#pragma once

#include "platform/desk/notebook/HtmlSink.h"
#include "platform/modules.h"

#include <cstddef>
#include <string_view>

namespace mervo::desk {

/// What an HTML parser may be given. Some of its steps take time in proportion to the elements that are open, of which
/// an unfriendly document has as many as tags.
inline constexpr std::size_t kLongestParsedHtml = 1024 * 1024; // bytes
inline constexpr std::size_t kMostParsedTags = 10'000;

/// Gives a document to the sink: by the rules of HTML (through the library in the module, where the document is not
/// plain enough to need none), or by taking its tags away where it is longer than those bounds or needs more memory
/// than the parser may have. A document of more than one of these is begun again: `begin` tells the sink.
class HtmlDocumentSink : public HtmlSink {
public:
    virtual void begin() = 0;
};
void readHtml(std::string_view html, HtmlDocumentSink& sink);

/// The HTML parser, in a module of its own, since notes as this desk writes them do not need it.
class HtmlEngine {
public:
    HtmlEngine() = default;
    HtmlEngine(const HtmlEngine&) = delete;
    HtmlEngine& operator=(const HtmlEngine&) = delete;
    virtual ~HtmlEngine() = default;

    /// False when the document needs more memory than it may have; then the sink got nothing. One thread at a time.
    virtual bool read(std::string_view html, HtmlSink& sink) const = 0;
};

/// The module of the bundle that holds the engine, and its function that returns it.
extern "C" const HtmlEngine* mervoHtmlEngine();
inline constexpr auto kHtmlModule = MERVO_MODULE("mervo-html.so", mervoHtmlEngine);

} // namespace mervo::desk
