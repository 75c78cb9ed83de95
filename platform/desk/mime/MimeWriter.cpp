#include "platform/desk/mime/MimeWriter.h"

#include "platform/ascii.h"
#include "platform/desk/mail/MailError.h"
#include "platform/desk/mime/CarriedLines.h"
#include "platform/desk/mime/GMimeObjects.h"
#include "platform/desk/mime/MimeAttached.h"
#include "platform/desk/mime/MimePassedOn.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

constexpr std::size_t kLongestLine = 900; // the limit is 998 octets

struct NamedType {
    std::string_view ending, type, subtype;
};
constexpr NamedType kTypes[] = {{"pdf", "application", "pdf"}, {"png", "image", "png"}, {"jpg", "image", "jpeg"},
    {"jpeg", "image", "jpeg"}, {"gif", "image", "gif"}, {"webp", "image", "webp"}, {"svg", "image", "svg+xml"},
    {"heic", "image", "heic"}, {"txt", "text", "plain"}, {"log", "text", "plain"}, {"md", "text", "markdown"},
    {"csv", "text", "csv"}, {"html", "text", "html"}, {"htm", "text", "html"}, {"ics", "text", "calendar"},
    {"vcf", "text", "vcard"}, {"json", "application", "json"}, {"xml", "application", "xml"},
    {"zip", "application", "zip"}, {"gz", "application", "gzip"}, {"tar", "application", "x-tar"},
    {"doc", "application", "msword"}, {"xls", "application", "vnd.ms-excel"},
    {"docx", "application", "vnd.openxmlformats-officedocument.wordprocessingml.document"},
    {"xlsx", "application", "vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    {"pptx", "application", "vnd.openxmlformats-officedocument.presentationml.presentation"},
    {"odt", "application", "vnd.oasis.opendocument.text"}, {"ods", "application", "vnd.oasis.opendocument.spreadsheet"},
    {"mp3", "audio", "mpeg"}, {"wav", "audio", "x-wav"}, {"mp4", "video", "mp4"}, {"mov", "video", "quicktime"},
    {"eml", "application", "octet-stream"}};

NamedType typeOf(const std::filesystem::path& file)
{
    const std::string ending = platform::ascii::lowered(file.extension().string());
    for (const NamedType& known : kTypes) {
        if (!ending.empty() && ending.substr(1) == known.ending)
            return known;
    }
    return {"", "application", "octet-stream"};
}

std::string withLineFeeds(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        out.push_back(text[i] == '\r' ? '\n' : text[i]);
    }
    if (!out.empty() && out.back() != '\n')
        out.push_back('\n');
    return out;
}

/// The lightest encoding for a text, were it not for what transports change.
GMimeContentEncoding encodingFor(std::string_view text)
{
    std::size_t line = 0, longest = 0, strange = 0;
    for (const char c : text) {
        line = c == '\n' ? 0 : line + 1;
        longest = std::max(longest, line);
        const auto byte = static_cast<unsigned char>(c);
        strange += byte >= 0x80 || (byte < 0x20 && c != '\n' && c != '\t') ? 1 : 0;
    }
    if (strange == 0 && longest <= kLongestLine)
        return GMIME_CONTENT_ENCODING_7BIT;
    return strange * 3 > text.size() ? GMIME_CONTENT_ENCODING_BASE64 : GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE;
}

Owned<GMimePart> textPart(const std::string& text)
{
    Owned<GMimePart> part(g_mime_part_new_with_type("text", "plain"));
    g_mime_object_set_content_type_parameter(GMIME_OBJECT(part.get()), "charset", "utf-8");
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(text.data(), text.size()));
    const Owned<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    g_mime_part_set_content(part.get(), content.get());
    g_mime_part_set_content_encoding(part.get(), encodingFor(text));
    if (!isCarried(GMIME_OBJECT(part.get()))) // quoted-printable breaks lines as well, and may do it before a "From "
        g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_BASE64);
    return part;
}

Owned<GMimePart> filePart(const std::filesystem::path& file)
{
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct stat status { };
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        if (descriptor >= 0)
            close(descriptor);
        throw NoSuchAttachment(file.string());
    }
    const NamedType type = typeOf(file);
    Owned<GMimePart> part(g_mime_part_new_with_type(std::string(type.type).c_str(), std::string(type.subtype).c_str()));
    g_mime_object_set_disposition(GMIME_OBJECT(part.get()), "attachment");
    g_mime_part_set_filename(part.get(), platform::withValidUtf8(file.filename().string()).c_str());
    const Owned<GMimeStream> stream(g_mime_stream_fs_new(descriptor)); // closes the descriptor
    const Owned<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    g_mime_part_set_content(part.get(), content.get());
    g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_BASE64);
    return part;
}

void addAddresses(GMimeMessage* message, GMimeAddressType type, const std::vector<MailAddress>& addresses)
{
    InternetAddressList* list = g_mime_message_get_addresses(message, type);
    for (const MailAddress& address : addresses) {
        const Owned<InternetAddress> mailbox(internet_address_mailbox_new(
            address.name.empty() ? nullptr : address.name.c_str(), address.address.c_str()));
        internet_address_set_charset(mailbox.get(), "utf-8");
        internet_address_list_add(list, mailbox.get());
    }
}

/// A header of Message-IDs, folded where it has to be.
void setMessageIds(GMimeMessage* message, const char* name, const std::vector<std::string>& ids)
{
    std::string value;
    for (const std::string& id : ids)
        value += (value.empty() ? "<" : " <") + id + ">";
    if (!value.empty())
        g_mime_object_set_header(GMIME_OBJECT(message), name, value.c_str(), nullptr);
}

/// The attachments of another message; they live as long as `original` does.
void addAttached(GMimeMultipart* mixed, GMimeMessage* original)
{
    if (original == nullptr)
        return;
    for (GMimeObject* object : attachedObjects(original))
        g_mime_multipart_add(mixed, passedOn(object).get());
}

Owned<GMimeMessage> compose(const MimeDraft& draft, const std::string& text)
{
    Owned<GMimeMessage> message(g_mime_message_new(TRUE));
    addAddresses(message.get(), GMIME_ADDRESS_TYPE_FROM, {draft.from});
    addAddresses(message.get(), GMIME_ADDRESS_TYPE_TO, draft.to);
    addAddresses(message.get(), GMIME_ADDRESS_TYPE_CC, draft.cc);
    addAddresses(message.get(), GMIME_ADDRESS_TYPE_BCC, draft.bcc);
    g_mime_message_set_subject(message.get(), draft.subject.c_str(), "utf-8");
    g_mime_object_set_header(GMIME_OBJECT(message.get()), "Date", draft.date.c_str(), nullptr);
    g_mime_message_set_message_id(message.get(), draft.messageId.c_str());
    setMessageIds(message.get(), "In-Reply-To",
        draft.inReplyTo.empty() ? std::vector<std::string>() : std::vector{draft.inReplyTo});
    setMessageIds(message.get(), "References", draft.references);
    const Owned<GMimePart> body = textPart(text);
    const Owned<GMimeMessage> original = draft.forwarded.empty() ? nullptr : parsedMessage(draft.forwarded);
    if (draft.attachments.empty() && (!original || attachedObjects(original.get()).empty())) {
        g_mime_message_set_mime_part(message.get(), GMIME_OBJECT(body.get()));
        return message;
    }
    const Owned<GMimeMultipart> mixed(g_mime_multipart_new_with_subtype("mixed"));
    g_mime_multipart_add(mixed.get(), GMIME_OBJECT(body.get()));
    addAttached(mixed.get(), original.get());
    for (const std::filesystem::path& file : draft.attachments)
        g_mime_multipart_add(mixed.get(), GMIME_OBJECT(filePart(file).get()));
    g_mime_message_set_mime_part(message.get(), GMIME_OBJECT(mixed.get()));
    return message;
}

} // namespace

void writeMime(const MimeDraft& draft, int descriptor)
{
    startGMime();
    const std::string text = withLineFeeds(platform::withValidUtf8(draft.text));
    const Owned<GMimeMessage> message = compose(draft, text);
    const int own = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (own < 0)
        throw MailError(fmt::format("The message cannot be written: {}.", std::strerror(errno)));
    const Owned<GMimeStream> stream(g_mime_stream_fs_new(own)); // closes its own descriptor
    if (g_mime_object_write_to_stream(GMIME_OBJECT(message.get()), nullptr, stream.get()) < 0
        || g_mime_stream_flush(stream.get()) < 0)
        throw MailError(fmt::format("The message cannot be written: {}.", std::strerror(errno)));
}

} // namespace mervo::desk
