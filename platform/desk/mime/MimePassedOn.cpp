#include "platform/desk/mime/MimePassedOn.h"

#include "platform/desk/mime/CarriedLines.h"
#include "platform/desk/mime/MimeAttached.h"
#include "platform/unicode.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace mervo::desk {
namespace {

/// What a recipient would save: the decoded bytes of a part.
Owned<GMimeStream> savedForm(GMimeObject* object)
{
    Owned<GMimeStream> memory(g_mime_stream_mem_new());
    if (GMimeDataWrapper* content = g_mime_part_get_content(GMIME_PART(object)))
        g_mime_data_wrapper_write_to_stream(content, memory.get());
    return memory;
}

bool isToken(std::string_view text)
{
    constexpr std::size_t kLongest = 100;
    return !text.empty() && text.size() <= kLongest && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return g_ascii_isalnum(static_cast<char>(c))
            || std::string_view("!#$&-^_.+").find(static_cast<char>(c)) != std::string_view::npos;
    });
}

/// A part of the same type and name, without what else stood in its head.
Owned<GMimePart> emptyTwin(GMimeObject* object)
{
    const std::string type = isMessage(object) ? "application/octet-stream" : typeName(object);
    const std::size_t slash = type.find('/');
    const bool isPlain = isToken(type.substr(0, slash)) && isToken(type.substr(slash + 1));
    Owned<GMimePart> twin(isPlain
            ? g_mime_part_new_with_type(type.substr(0, slash).c_str(), type.substr(slash + 1).c_str())
            : g_mime_part_new_with_type("application", "octet-stream"));
    g_mime_object_set_disposition(GMIME_OBJECT(twin.get()), "attachment");
    const char* charset = g_mime_object_get_content_type_parameter(object, "charset");
    if (charset != nullptr && isToken(charset))
        g_mime_object_set_content_type_parameter(GMIME_OBJECT(twin.get()), "charset", charset);
    const char* name = isMessage(object) ? "message.eml" : g_mime_part_get_filename(GMIME_PART(object));
    constexpr std::size_t kLongestName = 255; // bytes, the longest that a file can have
    if (name != nullptr) {
        g_mime_part_set_filename(
            twin.get(), platform::withValidUtf8(std::string_view(name).substr(0, kLongestName)).c_str());
    }
    return twin;
}

} // namespace

Owned<GMimeObject> passedOn(GMimeObject* attachment)
{
    if (isCarried(attachment))
        return Owned<GMimeObject>(GMIME_OBJECT(g_object_ref(attachment)));
    const Owned<GMimeStream> saved = savedForm(attachment);
    g_mime_stream_reset(saved.get());
    const Owned<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(saved.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    Owned<GMimePart> twin = emptyTwin(attachment);
    g_mime_part_set_content(twin.get(), content.get());
    g_mime_part_set_content_encoding(twin.get(), GMIME_CONTENT_ENCODING_BASE64);
    return Owned<GMimeObject>(GMIME_OBJECT(twin.release()));
}

} // namespace mervo::desk
