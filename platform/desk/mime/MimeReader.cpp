#include "platform/desk/mime/MimeReader.h"

#include "platform/desk/charset/Charset.h"
#include "platform/desk/mail/MessageHead.h"
#include "platform/desk/mime/GMimeObjects.h"
#include "platform/desk/mime/MimeAttached.h"
#include "platform/unicode.h"

#include <algorithm>
#include <string>
#include <utility>

namespace mervo::desk {
namespace {

enum class TextKind { none, plain, html };

struct Part {
    TextKind kind = TextKind::none;
    std::string text;
    std::vector<MimeAttachment> attachments;

    void takeAttachments(Part& from)
    {
        std::move(from.attachments.begin(), from.attachments.end(), std::back_inserter(attachments));
    }
};

std::string withLineFeeds(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        out.push_back(text[i]);
    }
    return out;
}

std::string decodedBytes(GMimePart* part)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr)
        return {};
    const Owned<GMimeStream> stream(g_mime_stream_mem_new());
    g_mime_data_wrapper_write_to_stream(content, stream.get());
    const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    return bytes->len == 0 ? std::string() : std::string(reinterpret_cast<const char*>(bytes->data), bytes->len);
}

std::uint64_t decodedSize(GMimePart* part)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr)
        return 0;
    const Owned<GMimeStream> stream(g_mime_stream_null_new());
    g_mime_data_wrapper_write_to_stream(content, stream.get());
    return GMIME_STREAM_NULL(stream.get())->written;
}

std::string fileName(const char* text)
{
    std::string name = text == nullptr ? std::string() : platform::withValidUtf8(text);
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return name;
}

Part readLeaf(GMimePart* leaf, Place place)
{
    GMimeObject* object = GMIME_OBJECT(leaf);
    const std::string type = typeName(object);
    Part result;
    if (isMessage(object)) {
        const std::string name = fileName(g_mime_part_get_filename(leaf));
        result.attachments.push_back({name.empty() ? "message.eml" : name, type, 0});
    } else if (isAttached(leaf, place)) {
        result.attachments.push_back({fileName(g_mime_part_get_filename(leaf)), type, decodedSize(leaf)});
    } else if (type == "text/plain" || type == "text/html") {
        const char* charset = g_mime_object_get_content_type_parameter(object, "charset");
        result.kind = type == "text/html" ? TextKind::html : TextKind::plain;
        result.text = withLineFeeds(toUtf8(decodedBytes(leaf), charset == nullptr ? "" : charset));
    }
    return result;
}

Part readObject(GMimeObject* object, Place place);

/// The plain one of several forms of the same text; attachments of all.
Part readAlternative(GMimeMultipart* multipart)
{
    Part best;
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
        Part child = readObject(g_mime_multipart_get_part(multipart, i), Place::inside);
        best.takeAttachments(child);
        const bool isBetter =
            best.kind == TextKind::none || (best.kind == TextKind::html && child.kind == TextKind::plain);
        if (child.kind != TextKind::none && isBetter) {
            best.kind = child.kind;
            best.text = std::move(child.text);
        }
    }
    return best;
}

/// The parts one after the other; of a page (multipart/related) the first is the text.
Part readSequence(GMimeMultipart* multipart)
{
    const bool isPage = typeName(GMIME_OBJECT(multipart)) == "multipart/related";
    Part all;
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
        Part child =
            readObject(g_mime_multipart_get_part(multipart, i), isPage && i > 0 ? Place::belongsToPage : Place::inside);
        all.takeAttachments(child);
        if (child.kind == TextKind::none || (isPage && all.kind != TextKind::none))
            continue;
        if (!all.text.empty() && !all.text.ends_with('\n'))
            all.text += '\n';
        all.text += child.text;
        all.kind = child.kind;
    }
    return all;
}

Part readObject(GMimeObject* object, Place place)
{
    if (object == nullptr)
        return {};
    if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart* multipart = GMIME_MULTIPART(object);
        return typeName(object) == "multipart/alternative" ? readAlternative(multipart) : readSequence(multipart);
    }
    return GMIME_IS_PART(object) ? readLeaf(GMIME_PART(object), place) : Part{};
}

} // namespace

MimeContent readMime(std::string_view message)
{
    const Owned<GMimeMessage> parsed = parsedMessage(message);
    if (!parsed) {
        const std::size_t body = endOfHead(message).value_or(message.size());
        return {withLineFeeds(toUtf8(message.substr(body), {})), {}};
    }
    Part all = readObject(g_mime_message_get_mime_part(parsed.get()), Place::root);
    return {std::move(all.text), std::move(all.attachments)};
}

} // namespace mervo::desk
