#include "cockpit/model/queue/ActionPresentation.h"

#include "core/catalogue/Catalogue.h"
#include "core/foundation/Text.h"
#include "core/policy/Remarks.h"

#include <QCryptographicHash>
#include <QUrl>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace mervo::ActionPresentation {

namespace {

constexpr std::string_view kOriginalSender = "(original sender)";

constexpr std::array<std::pair<std::string_view, std::string_view>, 8> kSymbols{{
    {"mail.send", "paperplane.fill"},
    {"mail.delete", "trash.fill"},
    {"mail.draft", "square.and.pencil"},
    {"mail.headers", "tray.full.fill"},
    {"cal.add", "calendar.badge.plus"},
    {"reminder.add", "checklist"},
    {"note.add", "note.text"},
    {"auto.rm", "clock.badge.xmark"},
}};

constexpr std::array<std::string_view, 13> kFirstKeys{"from", "to", "subject", "subjectContains", "dest", "mailbox",
    "olderThan", "before", "after", "status", "minSize", "maxSize", "hasAttachment"};

std::string part(const std::string& key, const std::string& value)
{
    if (key == "olderThan")
        return "older " + value + "d";
    return key == "mailbox" ? value : key + " " + value;
}

const std::string* find(const Args& args, std::string_view key)
{
    const auto found = args.find(key);
    return found == args.end() ? nullptr : &found->second;
}

std::string encoded(const std::string& text, const char* kept)
{
    return QUrl::toPercentEncoding(QString::fromStdString(text), kept).toStdString();
}

/// RFC 6068, section 5: a line break in a body is CR LF.
std::string withNetworkLines(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        if (letter == '\n' && !result.ends_with('\r'))
            result += '\r';
        result += letter;
    }
    return result;
}

void addField(std::vector<std::string>& fields, const char* name, const Args& args)
{
    const std::string* value = find(args, name);
    if (value != nullptr && !value->empty())
        fields.push_back(std::string(name) + "=" + encoded(withNetworkLines(*value), ""));
}

} // namespace

std::string_view symbol(std::string_view tool)
{
    const auto* const found = std::ranges::find(kSymbols, tool, &std::pair<std::string_view, std::string_view>::first);
    return found == kSymbols.end() ? "bolt.fill" : found->second;
}

std::string_view tint(std::string_view tool)
{
    if (tool == "cal.add")
        return "red";
    if (tool == "reminder.add" || tool == "note.add")
        return "purple";
    if (tool.starts_with("mail"))
        return "blue";
    return tool.starts_with("auto") ? "teal" : "orange";
}

std::string detailLine(const Args& args)
{
    std::vector<std::string> parts;
    for (const std::string_view key : kFirstKeys) {
        if (const std::string* value = find(args, key))
            parts.push_back(part(std::string(key), *value));
    }
    for (const auto& [key, value] : args) {
        if (key != "account" && std::ranges::find(kFirstKeys, key) == kFirstKeys.end())
            parts.push_back(part(key, value));
    }
    return Text::join(parts, " · ");
}

std::vector<Remark> remarks(const PendingAction& action)
{
    const Tool* tool = Tools::find(action.tool);
    return tool == nullptr ? std::vector<Remark>() : Remarks::of(*tool, action.args);
}

std::optional<Email> email(const PendingAction& action)
{
    const Args& args = action.args;
    const std::string* body = find(args, "body");
    if (body == nullptr)
        return std::nullopt;
    const bool isReply = action.tool.starts_with("mail.reply");
    Email email;
    email.body = *body;
    if (const std::string* to = find(args, "to")) {
        email.to = *to;
    } else if (isReply) {
        email.to = find(args, "from") != nullptr ? *find(args, "from") : std::string(kOriginalSender);
    }
    if (const std::string* subject = find(args, "subject")) {
        email.subject = *subject;
    } else if (isReply) {
        email.subject = "Re: " + (find(args, "subjectContains") != nullptr ? *find(args, "subjectContains") : "");
    }
    email.canOpenInMail = email.to != kOriginalSender;
    return email;
}

std::string mailtoUrl(const Args& args)
{
    const std::string* to = find(args, "to");
    std::string url = "mailto:" + (to == nullptr ? std::string() : encoded(*to, "@,"));
    std::vector<std::string> fields;
    addField(fields, "subject", args);
    addField(fields, "body", args);
    if (!fields.empty())
        url += "?" + Text::join(fields, "&");
    return url;
}

std::string digest(const PendingAction& action)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const auto add = [&](const std::string& text) {
        hash.addData(QByteArray::number(static_cast<qulonglong>(text.size())) + ':');
        hash.addData(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    };
    for (const std::string* text : {&action.id, &action.tool, &action.summary, &action.createdAt})
        add(*text);
    add(action.preview ? "preview" + *action.preview : "none");
    for (const auto& [key, value] : action.args) {
        add(key);
        add(value);
    }
    return hash.result().toHex().toStdString();
}

} // namespace mervo::ActionPresentation
