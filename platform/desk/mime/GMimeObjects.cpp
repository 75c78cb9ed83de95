#include "platform/desk/mime/GMimeObjects.h"

#include "platform/desk/mail/MessageHead.h"

#include <algorithm>
#include <string_view>

#if defined(__SANITIZE_ADDRESS__)
#define MERVO_FINDS_LEAKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MERVO_FINDS_LEAKS
#endif
#endif
#ifdef MERVO_FINDS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace mervo::desk {
namespace {

constexpr std::size_t kLongestValue = 4096; // bytes; several times what the longest file name takes

/// Copies a message without the values of fields that are longer than any sender needs: the library reads addresses,
/// dates and parameters in time that grows with the square of their length.
class Copy {
public:
    explicit Copy(std::string_view message)
        : message_(message)
        , stream_(g_mime_stream_mem_new())
    {
        std::size_t headStart = 0;
        bool isHead = true; // the message's own, then what follows each line that may begin a part
        for (std::size_t at = 0, next = 0; at < message.size(); at = next) {
            next = std::min(message.find('\n', at), message.size() - 1) + 1;
            const std::string_view line = message.substr(at, next - at);
            const bool isMark = line.starts_with("--") && at > 0;
            if (isHead && (isMark || line == "\n" || line == "\r\n" || next == message.size()))
                cutFields(message.substr(headStart, next - headStart));
            if (isMark)
                headStart = next;
            isHead = isMark || (isHead && line != "\n" && line != "\r\n");
        }
        write(message.substr(done_));
        g_mime_stream_reset(stream_.get());
    }
    GMimeStream* stream() const noexcept { return stream_.get(); }

private:
    void cutFields(std::string_view head)
    {
        forEachField(head, [&](std::string_view, std::string_view value) {
            if (value.size() <= kLongestValue)
                return;
            const auto start = static_cast<std::size_t>(value.data() - message_.data());
            write(message_.substr(done_, start - done_));
            done_ = start + value.size();
        });
    }

    void write(std::string_view bytes) { g_mime_stream_write(stream_.get(), bytes.data(), bytes.size()); }

    std::string_view message_;
    Owned<GMimeStream> stream_;
    std::size_t done_ = 0; // so much of the message is copied, or left out
};

} // namespace

void startGMime()
{
    static const bool isStarted = [] {
#ifdef MERVO_FINDS_LEAKS
        const __lsan::ScopedDisabler replaced; // the library forgets an entry that is registered anew
#endif
        g_mime_init();
        // A message in a message is bytes here, never read: its head is as much a stranger's as the outer one.
        for (const char* kind : {"rfc822", "rfc2822", "global", "news"})
            g_mime_object_register_type("message", kind, GMIME_TYPE_PART);
        return true;
    }();
    static_cast<void>(isStarted);
}

Owned<GMimeMessage> parsedMessage(std::string_view message)
{
    startGMime();
    const Copy copy(message);
    const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(copy.stream()));
    return Owned<GMimeMessage>(g_mime_parser_construct_message(parser.get(), nullptr));
}

} // namespace mervo::desk
