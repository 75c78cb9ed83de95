#include "platform/desk/mime/GMimeObjects.h"

#include "platform/desk/mail/MessageHead.h"
#include "platform/unicode.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>

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

/// The lines that may begin a part, known from the multipart types that stand above them.
class Boundaries {
public:
    void noteType(std::string_view contentType)
    {
        const std::string type = platform::foldCase(contentType);
        for (std::size_t at = 0; (at = type.find(kParameter, at)) != std::string::npos;) {
            at += kParameter.size();
            note(std::string_view(type).substr(at));
        }
    }

    bool has(std::string_view line) const
    {
        if (!line.starts_with("--"))
            return false;
        return any_ || known_.contains(platform::foldCase(withoutBlanks(line.substr(2))));
    }

private:
    static constexpr std::string_view kParameter = "boundary";

    static std::string_view withoutBlanks(std::string_view text)
    {
        return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
    }

    /// What stands behind the parameter's name. In a form that has other characters than it means, any line will do.
    void note(std::string_view text)
    {
        const bool isQuoted = text.starts_with("=\"");
        const std::size_t start = isQuoted ? 2 : 1;
        const std::size_t end = std::min(text.find_first_of(isQuoted ? "\"" : "; \t\r\n(", start), text.size());
        const std::string_view value = text.substr(std::min(start, end), end - std::min(start, end));
        if (!text.starts_with('=') || value.empty() || value.find_first_of("\\\r\n") != std::string_view::npos
            || value.find("=?") != std::string_view::npos) {
            any_ = true;
        } else {
            known_.insert(std::string(withoutBlanks(value)));
        }
    }

    std::unordered_set<std::string> known_;
    bool any_ = false;
};

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
            const bool isEmpty = line == "\n" || line == "\r\n";
            const bool isMark = boundaries_.has(line);
            if (isHead && (isMark || isEmpty || next == message.size()))
                cutFields(message.substr(headStart, next - headStart));
            if (isMark)
                headStart = next;
            isHead = isMark || (isHead && !isEmpty);
        }
        write(message.substr(done_));
        g_mime_stream_reset(stream_.get());
    }
    GMimeStream* stream() const noexcept { return stream_.get(); }

private:
    void cutFields(std::string_view head)
    {
        forEachField(head, [&](std::string_view name, std::string_view value) {
            if (value.size() > kLongestValue) {
                leaveOut(value);
            } else if (platform::foldCase(name) == "content-type") {
                boundaries_.noteType(value);
            }
        });
    }

    void leaveOut(std::string_view value)
    {
        const auto start = static_cast<std::size_t>(value.data() - message_.data());
        write(message_.substr(done_, start - done_));
        done_ = start + value.size();
    }

    void write(std::string_view bytes) { g_mime_stream_write(stream_.get(), bytes.data(), bytes.size()); }

    std::string_view message_;
    Owned<GMimeStream> stream_;
    std::size_t done_ = 0; // so much of the message is copied, or left out
    Boundaries boundaries_;
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
