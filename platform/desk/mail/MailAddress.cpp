#include "platform/desk/mail/MailAddress.h"

#include "platform/desk/mail/EncodedWord.h"

#include <fmt/format.h>

namespace mervo::desk {
namespace {

std::string_view trimmed(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
}

/// Reads the field once from front to back and collects the pieces of one mailbox at a time.
class AddressReader {
public:
    explicit AddressReader(std::string_view raw)
        : raw_(raw)
    {
    }

    std::vector<MailAddress> read()
    {
        while (at_ < raw_.size())
            step(raw_[at_]);
        finishMailbox();
        return std::move(found_);
    }

private:
    void step(char c)
    {
        switch (c) {
        case '"':
            words_ += quoted();
            break;
        case '(':
            comment_ = comment();
            break;
        case '<':
            angle();
            break;
        case ',':
        case ';':
            finishMailbox();
            ++at_;
            break;
        case ':':
            groupName();
            break;
        default:
            words_.push_back(c);
            ++at_;
        }
    }

    std::string quoted()
    {
        std::string text;
        for (++at_; at_ < raw_.size() && raw_[at_] != '"'; ++at_) {
            if (raw_[at_] == '\\' && at_ + 1 < raw_.size())
                ++at_;
            text.push_back(raw_[at_]);
        }
        ++at_;
        return text;
    }

    std::string comment()
    {
        std::string text;
        int depth = 1;
        for (++at_; at_ < raw_.size(); ++at_) {
            char c = raw_[at_];
            if (c == '\\' && at_ + 1 < raw_.size()) {
                c = raw_[++at_];
            } else if (c == '(') {
                ++depth;
            } else if (c == ')' && --depth == 0) {
                break;
            }
            text.push_back(c);
        }
        ++at_;
        return text;
    }

    void angle()
    {
        const std::size_t end = raw_.find('>', at_);
        std::string_view inside = raw_.substr(at_ + 1, end == std::string_view::npos ? end : end - at_ - 1);
        if (inside.starts_with('@')) // an obsolete route: <@relay:user@host>
            inside = inside.substr(std::min(inside.size(), inside.find(':') + 1));
        angle_ = trimmed(inside);
        hasAngle_ = true;
        at_ = end == std::string_view::npos ? raw_.size() : end + 1;
    }

    /// "Friends: a@x, b@y;" or a stray colon inside an address ("mailto:a@x" is not taken apart).
    void groupName()
    {
        ++at_;
        if (hasAngle_ || isAddressOrCoded()) {
            words_.push_back(':');
            return;
        }
        clearWords();
    }

    /// Looks only at what was added since it last looked: a field may be a hundred thousand colons.
    bool isAddressOrCoded()
    {
        const std::size_t from = looked_ == 0 ? 0 : looked_ - 1;
        isAddressOrCoded_ = isAddressOrCoded_ || words_.find('@', from) != std::string::npos
            || words_.find("=?", from) != std::string::npos;
        looked_ = words_.size();
        return isAddressOrCoded_;
    }

    void clearWords()
    {
        words_.clear();
        looked_ = 0;
        isAddressOrCoded_ = false;
    }

    void finishMailbox()
    {
        MailAddress mailbox;
        const std::string_view words = trimmed(words_);
        if (hasAngle_) {
            mailbox.address = angle_;
            mailbox.name = decodeHeaderText(words);
        } else if (words.find('@') != std::string_view::npos) {
            mailbox.address = words;
        } else {
            mailbox.name = decodeHeaderText(words);
        }
        if (mailbox.name.empty())
            mailbox.name = decodeHeaderText(trimmed(comment_));
        mailbox.name = trimmed(mailbox.name);
        mailbox.address = decodeHeaderText(mailbox.address);
        if (!mailbox.name.empty() || !mailbox.address.empty())
            found_.push_back(std::move(mailbox));
        clearWords();
        comment_.clear();
        angle_.clear();
        hasAngle_ = false;
    }

    std::string_view raw_;
    std::size_t at_ = 0;
    std::string words_, comment_, angle_;
    bool hasAngle_ = false, isAddressOrCoded_ = false;
    std::size_t looked_ = 0; // so much of the words was looked at for the above
    std::vector<MailAddress> found_;
};

} // namespace

std::vector<MailAddress> parseAddressList(std::string_view raw)
{
    return AddressReader(raw).read();
}

std::string displayAddress(const MailAddress& address)
{
    if (address.name.empty())
        return address.address;
    return address.address.empty() ? address.name : fmt::format("{} <{}>", address.name, address.address);
}

bool isPlainAddress(std::string_view text)
{
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos || at == 0 || at + 1 == text.size() || text.find('@', at + 1) != text.npos)
        return false;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte == 0x7F || std::string_view(",;:<>()[]\"\\").find(c) != std::string_view::npos)
            return false;
    }
    return true;
}

} // namespace mervo::desk
