#include "platform/desk/mail/Answer.h"

#include "platform/desk/mail/MessageHead.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <set>

namespace mervo::desk {
namespace {

constexpr std::size_t kLongestThread = 100; // ids; the oldest ones give way, but for the first
constexpr std::size_t kLongestId = 900; // octets: an id cannot be folded, and a line has 998 at most

/// The fields of a head that an answer is made from; the first one of a name counts.
struct Fields {
    std::string from, replyTo, to, cc, messageId, inReplyTo, references;
};

Fields fieldsOf(std::string_view message)
{
    Fields fields;
    const auto take = [](std::string& into, std::string_view value) {
        if (into.empty())
            into = value;
    };
    forEachField(message.substr(0, endOfHead(message).value_or(message.size())),
        [&](std::string_view name, std::string_view value) {
            const std::string lower = platform::foldCase(name);
            const std::array<std::pair<std::string_view, std::string*>, 7> wanted{
                {{"from", &fields.from}, {"reply-to", &fields.replyTo}, {"to", &fields.to}, {"cc", &fields.cc},
                    {"message-id", &fields.messageId}, {"in-reply-to", &fields.inReplyTo},
                    {"references", &fields.references}}};
            for (const auto& [known, into] : wanted) {
                if (lower == known)
                    take(*into, value);
            }
        });
    return fields;
}

/// What stands in angle brackets, without them; what could break a header line is no id.
std::vector<std::string> messageIds(std::string_view field)
{
    std::vector<std::string> found;
    while (true) {
        const std::size_t open = field.find('<');
        const std::size_t close = open == std::string_view::npos ? open : field.find('>', open);
        if (close == std::string_view::npos)
            return found;
        const std::string_view id = field.substr(open + 1, close - open - 1);
        const auto isPlain = [](unsigned char c) { return c > 0x20 && c < 0x7F && c != '<'; };
        if (!id.empty() && id.size() <= kLongestId && std::all_of(id.begin(), id.end(), isPlain))
            found.emplace_back(id);
        field.remove_prefix(close + 1);
    }
}

void joinThread(OutgoingMail& mail, const Fields& fields)
{
    const std::vector<std::string> own = messageIds(fields.messageId), before = messageIds(fields.inReplyTo);
    mail.references = messageIds(fields.references);
    if (mail.references.empty() && before.size() == 1)
        mail.references = before;
    if (own.empty())
        return;
    mail.inReplyTo = own.front();
    std::erase(mail.references, own.front());
    mail.references.push_back(own.front());
    if (mail.references.size() > kLongestThread) {
        mail.references.erase(
            mail.references.begin() + 1, mail.references.end() - static_cast<std::ptrdiff_t>(kLongestThread - 1));
    }
}

bool beginsWith(std::string_view subject, std::initializer_list<std::string_view> prefixes)
{
    const std::string folded = platform::foldCase(subject);
    return std::any_of(
        prefixes.begin(), prefixes.end(), [&](std::string_view prefix) { return folded.starts_with(prefix); });
}

bool isOneOf(const std::vector<std::string>& addresses, const std::string& folded)
{
    return std::any_of(
        addresses.begin(), addresses.end(), [&](const std::string& own) { return platform::foldCase(own) == folded; });
}

bool isOwn(const std::vector<MailAccountSettings>& accounts, const MailAddress& address)
{
    const std::string folded = platform::foldCase(address.address);
    return std::any_of(accounts.begin(), accounts.end(),
        [&](const MailAccountSettings& account) { return isOneOf(account.addresses, folded); });
}

/// The account's address that the message was sent to, else its first one.
std::string senderFor(const Fields& fields, const MailAccountSettings& account)
{
    for (const std::string& field : {fields.to, fields.cc}) {
        for (const MailAddress& address : parseAddressList(field)) {
            for (const std::string& own : account.addresses) {
                if (platform::foldCase(own) == platform::foldCase(address.address))
                    return own;
            }
        }
    }
    return account.addresses.front();
}

/// Appends what can be written to and is not in the lists yet.
void addNew(std::vector<MailAddress>& to, const std::vector<MailAddress>& addresses, std::set<std::string>& known)
{
    for (const MailAddress& address : addresses) {
        if (isPlainAddress(address.address) && known.insert(platform::foldCase(address.address)).second)
            to.push_back(address);
    }
}

std::vector<MailAddress> withoutOwn(
    std::vector<MailAddress> addresses, const std::vector<MailAccountSettings>& accounts)
{
    std::erase_if(addresses, [&](const MailAddress& address) { return isOwn(accounts, address); });
    return addresses;
}

} // namespace

OutgoingMail replyTo(std::string_view message, const MailAccountSettings& account,
    const std::vector<MailAccountSettings>& accounts, ReplyTo whom)
{
    const Fields fields = fieldsOf(message);
    const std::string subject = readMessageHead(message).subject;
    OutgoingMail mail;
    mail.sender = senderFor(fields, account);
    mail.subject = beginsWith(subject, {"re:"}) ? subject : "Re: " + subject;
    joinThread(mail, fields);

    const std::vector<MailAddress> writers = parseAddressList(fields.replyTo.empty() ? fields.from : fields.replyTo);
    const std::vector<MailAddress> readers = parseAddressList(fields.to), others = parseAddressList(fields.cc);
    const std::vector<MailAddress> from = parseAddressList(fields.from);
    const bool isOurs = !from.empty() && isOwn(accounts, from.front());
    std::set<std::string> known;
    addNew(mail.to, isOurs ? readers : writers, known);
    for (const auto& addresses : {writers, from}) {
        if (mail.to.empty())
            addNew(mail.to, addresses, known);
    }
    if (whom == ReplyTo::all) {
        addNew(mail.to, withoutOwn(readers, accounts), known);
        addNew(mail.cc, withoutOwn(others, accounts), known);
    }
    return mail;
}

OutgoingMail forwardOf(std::string_view message, const MailAccountSettings& account)
{
    const Fields fields = fieldsOf(message);
    const std::string subject = readMessageHead(message).subject;
    OutgoingMail mail;
    mail.sender = senderFor(fields, account);
    mail.subject = beginsWith(subject, {"fwd:", "fw:"}) ? subject : "Fwd: " + subject;
    joinThread(mail, fields);
    mail.inReplyTo.clear(); // a forward goes on in the thread and answers nobody
    mail.forwarded = message;
    return mail;
}

} // namespace mervo::desk
