#include "platform/desk/mime/MimeAttached.h"

#include "platform/ascii.h"
#include "platform/unicode.h"

#include <algorithm>

namespace mervo::desk {
namespace {

std::string validText(const char* text)
{
    return text == nullptr ? std::string() : platform::withValidUtf8(text);
}

bool saysAttached(GMimeObject* object)
{
    const char* disposition = g_mime_object_get_disposition(object);
    return disposition != nullptr && g_ascii_strcasecmp(disposition, "attachment") == 0;
}

/// Parts that serve the message's transport and are nothing that its sender attached.
bool isMachinery(const std::string& type)
{
    static constexpr std::string_view kTypes[] = {"application/pgp-signature", "application/pkcs7-signature",
        "application/x-pkcs7-signature", "application/pgp-encrypted", "message/delivery-status",
        "message/disposition-notification", "text/rfc822-headers"};
    return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

void collect(GMimeObject* object, Place place, std::vector<GMimeObject*>& found)
{
    if (object == nullptr)
        return;
    if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart* multipart = GMIME_MULTIPART(object);
        const bool isPage = typeName(object) == "multipart/related";
        for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
            collect(
                g_mime_multipart_get_part(multipart, i), isPage && i > 0 ? Place::belongsToPage : Place::inside, found);
        }
    } else if (GMIME_IS_PART(object) && (isMessage(object) || isAttached(GMIME_PART(object), place))) {
        found.push_back(object);
    }
}

} // namespace

std::string typeName(GMimeObject* object)
{
    GMimeContentType* type = g_mime_object_get_content_type(object);
    const std::string name = type == nullptr ? "text/plain"
                                             : validText(g_mime_content_type_get_media_type(type)) + "/"
            + validText(g_mime_content_type_get_media_subtype(type));
    return platform::ascii::lowered(name);
}

bool isMessage(GMimeObject* object)
{
    static constexpr std::string_view kTypes[] = {
        "message/rfc822", "message/rfc2822", "message/global", "message/news"};
    const std::string type = typeName(object);
    return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

bool isAttached(GMimePart* leaf, Place place)
{
    GMimeObject* object = GMIME_OBJECT(leaf);
    if (saysAttached(object))
        return true;
    const std::string type = typeName(object);
    const bool isText = type == "text/plain" || type == "text/html";
    if (isText && (validText(g_mime_part_get_filename(leaf)).empty() || place == Place::root))
        return false;
    const bool isOfPage = place == Place::belongsToPage && g_mime_object_get_content_id(object) != nullptr;
    return !isOfPage && !isMachinery(type);
}

std::vector<GMimeObject*> attachedObjects(GMimeMessage* message)
{
    std::vector<GMimeObject*> found;
    collect(g_mime_message_get_mime_part(message), Place::root, found);
    return found;
}

} // namespace mervo::desk
