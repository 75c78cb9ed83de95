#pragma once

#include "platform/desk/mail/MailAddress.h"
#include "platform/modules.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

struct MimeAttachment {
    std::string name; ///< decoded; empty when the part has none
    std::string type; ///< "application/pdf"
    std::uint64_t size = 0; ///< bytes when decoded
};

/// What a reader sees of a message.
struct MimeContent {
    std::string text; ///< UTF-8, lines parted by LF: the plain parts where there are some, else the HTML source
    std::vector<MimeAttachment> attachments;
};

/// A message to write. Texts are UTF-8 and hold no control characters but in `text`.
struct MimeDraft {
    MailAddress from;
    std::vector<MailAddress> to, cc, bcc;
    std::string subject;
    std::string text;
    std::string date; ///< as the Date field
    std::string messageId; ///< without angle brackets
    std::vector<std::filesystem::path> attachments;
    std::string inReplyTo; ///< without angle brackets; empty: none
    std::vector<std::string> references; ///< likewise, oldest first
    std::string_view forwarded; ///< the bytes of a message whose attachments are attached as they are; empty: none
};

/// The MIME parser and writer. It lives in a module of its own that is loaded when the first whole message is read or
/// written, because loading the library behind it costs more than everything else that a short script does.
class MimeEngine {
public:
    MimeEngine() = default;
    MimeEngine(const MimeEngine&) = delete;
    MimeEngine& operator=(const MimeEngine&) = delete;
    virtual ~MimeEngine() = default;

    /// Never throws: what cannot be parsed is text.
    virtual MimeContent read(std::string_view message) const = 0;

    /// Writes the message to a file. Throws MailError; NoSuchAttachment for a file that cannot be read.
    virtual void write(const MimeDraft& draft, int descriptor) const = 0;
};

/// Loads the engine on first use. Throws MailError when the module is missing from the bundle.
const MimeEngine& mimeEngine();

/// The module of the bundle that holds the engine, and its function that returns it.
extern "C" const MimeEngine* mervoMimeEngine();
inline constexpr auto kMimeModule = MERVO_MODULE("mervo-mime.so", mervoMimeEngine);

} // namespace mervo::desk
