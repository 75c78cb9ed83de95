#include "platform/desk/addressbook/CardEdit.h"

#include "platform/ascii.h"
#include "platform/desk/addressbook/CardText.h"
#include "platform/desk/contentlines/TextValue.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <set>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;
using Node = ContentDocument::Node;

/// The labels that a TYPE says in every version; any other is a line of its own.
constexpr std::array kTypes{"work", "home", "cell", "fax", "pager", "main"};

struct Place {
    const char* line;
    std::size_t part; ///< of a structured value
    bool isStructured;
};

Place placeOf(ContactField field)
{
    switch (field) {
    case ContactField::lastName:
        return {"N", 0, true};
    case ContactField::firstName:
        return {"N", 1, true};
    case ContactField::middleName:
        return {"N", 2, true};
    case ContactField::organization:
        return {"ORG", 0, true};
    case ContactField::department:
        return {"ORG", 1, true};
    case ContactField::nickname:
        return {"NICKNAME", 0, false};
    case ContactField::jobTitle:
        return {"TITLE", 0, false};
    case ContactField::note:
        return {"NOTE", 0, false};
    }
    return {"NOTE", 0, false};
}

std::string versionOf(const ContentDocument& document, Node card)
{
    return document.valueOf(card, "VERSION").value_or("3.0");
}

/// Gives the first such line another value, or adds the line.
void setLine(ContentDocument& document, Node card, const char* name, const std::string& value)
{
    const auto node = readableLine(document, card, name);
    const auto line = node ? document.read(*node) : std::nullopt;
    const ContentLine base = line ? *line : ContentLine{.name = name};
    const ContentLine made = withCardValue(base, value, versionOf(document, card));
    if (node) {
        document.replace(*node, made);
    } else {
        document.add(card, made);
    }
}

/// One part of a structured value; the others stay, as do ends that are there for them.
std::string withPart(const std::vector<std::string>& parts, std::size_t index, std::string_view text)
{
    std::string value;
    for (std::size_t i = 0; i < std::max(parts.size(), index + 1); ++i) {
        const std::string_view part = i == index ? text : i < parts.size() ? std::string_view(parts[i]) : "";
        value += (i == 0 ? "" : ";") + std::string(part);
    }
    return value;
}

bool isEmptyValue(std::string_view value)
{
    return value.find_first_not_of(';') == std::string_view::npos;
}

std::vector<std::string> structuredParts(const ContentDocument& document, Node card, const char* name)
{
    const auto node = readableLine(document, card, name);
    const auto line = node ? document.read(*node) : std::nullopt;
    return line ? writtenParts(*line) : std::vector<std::string>();
}

void setName(ContentDocument& document, Node card)
{
    const std::string name = composedName(readContact(document, card));
    if (!name.empty())
        setLine(document, card, "FN", escapedText(name));
}

std::string freeGroup(const ContentDocument& document, Node card)
{
    std::set<std::string> taken;
    for (const Node node : document.lines(card)) {
        if (const auto line = document.read(node))
            taken.insert(ascii::lowered(line->group));
    }
    int number = 1;
    while (taken.contains(fmt::format("item{}", number)))
        ++number;
    return fmt::format("item{}", number);
}

bool isType(const std::string& word)
{
    return std::ranges::find(kTypes, word) != kTypes.end();
}

/// Whether a type of the line is what its label was read from.
void dropLabel(ContentLine& line)
{
    for (LineParameter& parameter : line.parameters) {
        if (parameter.name.empty() || ascii::equalsIgnoringCase(parameter.name, "TYPE"))
            std::erase_if(parameter.values, [](const std::string& value) { return isType(ascii::lowered(value)); });
    }
    std::erase_if(line.parameters, [](const LineParameter& parameter) {
        return parameter.values.empty()
            && (parameter.name.empty() || ascii::equalsIgnoringCase(parameter.name, "TYPE"));
    });
}

/// Writes the label into the line, or beside it.
void putLabel(ContentDocument& document, Node card, ContentLine& line, const std::string& label)
{
    const std::string lowered = ascii::lowered(label);
    const std::string type = lowered == "mobile" ? "cell" : lowered;
    const std::optional<Node> beside = labelLine(document, card, line.group);
    dropLabel(line);
    if (label.empty() || isType(type)) {
        if (beside)
            document.remove(*beside);
        if (!label.empty())
            line.parameters.push_back({"TYPE", {type}});
        return;
    }
    if (line.group.empty())
        line.group = freeGroup(document, card);
    if (beside) {
        document.setValue(*beside, escapedText(label));
    } else {
        document.add(card, {.group = line.group, .name = "X-ABLabel", .value = escapedText(label)});
    }
}

/// A value that is a URI, as version 4.0 writes numbers, stays one.
std::string writtenLike(const ContentLine& before, const ContactValue& value)
{
    for (const std::string_view scheme : {"mailto:", "tel:"}) {
        if (before.value.size() > scheme.size()
            && ascii::equalsIgnoringCase(before.value.substr(0, scheme.size()), scheme))
            return std::string(scheme) + withoutControls(value.value);
    }
    return ascii::equalsIgnoringCase(before.name, "URL") ? withoutControls(value.value) : escapedText(value.value);
}

} // namespace

std::string emptyCard(std::string_view uid)
{
    return fmt::format("BEGIN:VCARD\r\nVERSION:3.0\r\nUID:{}\r\nN:;;;;\r\nEND:VCARD\r\n", uid);
}

void setContactField(ContentDocument& document, Node card, ContactField field, const std::string& text)
{
    const Place place = placeOf(field);
    std::string value = place.isStructured
        ? withPart(structuredParts(document, card, place.line), place.part, escapedText(text))
        : escapedText(text);
    const bool isName = std::string_view(place.line) == "N"; // which every card must have
    if (isName || !isEmptyValue(value)) {
        setLine(document, card, place.line, value);
    } else {
        while (const auto node = readableLine(document, card, place.line)) // the next one would show otherwise
            document.remove(*node);
    }
    if (field == ContactField::firstName || field == ContactField::lastName || field == ContactField::organization)
        setName(document, card);
}

void setCompany(ContentDocument& document, Node card, bool isCompany)
{
    if (isCompany) {
        setLine(document, card, "X-ABShowAs", "COMPANY");
    } else {
        document.removeLines(card, "X-ABShowAs");
    }
}

void setBirthday(ContentDocument& document, Node card, const std::string& date)
{
    document.removeLines(card, "BDAY");
    if (!date.empty())
        document.add(card, {.name = "BDAY", .value = date});
}

void addContactValue(ContentDocument& document, Node card, ContactValueKind kind, const ContactValue& value)
{
    ContentLine line{.name = lineName(kind)};
    line.value = writtenLike(line, value);
    putLabel(document, card, line, value.label);
    const auto others = valueLines(document, card, kind);
    const Node added = document.add(card, line);
    if (!others.empty() && valueLines(document, card, kind).back() != added) { // behind a card within this one
        document.remove(added);
        document.addBehind(others.back(), line);
    }
}

bool setContactValue(
    ContentDocument& document, Node card, ContactValueKind kind, std::size_t index, const ContactValue& value)
{
    const auto nodes = valueLines(document, card, kind);
    if (index >= nodes.size())
        return false;
    const Contact before = readContact(document, card);
    const ContactValue& old = before.all(kind)[index];
    const ContentLine read = *document.read(nodes[index]);
    ContentLine line = read;
    if (value.value != old.value)
        line = withCardValue(line, writtenLike(read, value), versionOf(document, card));
    if (value.label != old.label)
        putLabel(document, card, line, value.label);
    document.replace(nodes[index], line);
    return true;
}

bool removeContactValue(ContentDocument& document, Node card, ContactValueKind kind, std::size_t index)
{
    const auto nodes = valueLines(document, card, kind);
    if (index >= nodes.size())
        return false;
    const std::string group = document.read(nodes[index])->group;
    const auto label = labelLine(document, card, group);
    document.remove(nodes[index]);
    if (label)
        document.remove(*label);
    return true;
}

void setMember(ContentDocument& document, Node group, const std::string& uid, Membership membership)
{
    const char* name = versionOf(document, group) == "4.0" ? "MEMBER" : "X-ADDRESSBOOKSERVER-MEMBER";
    const std::string value = "urn:uuid:" + uid;
    for (const Node node : document.lines(group, name)) {
        const auto line = document.read(node);
        if (line && (line->value == value || line->value == uid))
            document.remove(node);
    }
    if (membership == Membership::member)
        document.add(group, {.name = name, .value = value});
}

void finishCard(ContentDocument& document, Node card, std::string_view revision)
{
    const auto name = readableLine(document, card, "FN");
    if (!name || document.read(*name)->value.empty())
        setLine(document, card, "FN", escapedText(readContact(document, card).name));
    setLine(document, card, "REV", std::string(revision));
}

} // namespace mervo::desk
