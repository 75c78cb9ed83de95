#include "platform/desk/eventstore/MovedSeries.h"

#include "platform/ascii.h"
#include "platform/desk/contentlines/TextValue.h"
#include "platform/desk/eventstore/EditedTimes.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/recurrence/ItemText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;
using Node = ContentDocument::Node;

constexpr std::string_view kUntil = "UNTIL=";

bool namesDays(std::string_view rule)
{
    constexpr std::array<std::string_view, 4> kDays{"BYDAY=", "BYMONTHDAY=", "BYYEARDAY=", "BYWEEKNO="};
    return std::ranges::any_of(splitValue(rule, ';'), [&](std::string_view part) {
        return std::ranges::any_of(
            kDays, [&](std::string_view name) { return ascii::equalsIgnoringCase(part.substr(0, name.size()), name); });
    });
}

class Mover {
public:
    Mover(ContentDocument& document, Node item, const DateValue& before, const DateValue& after)
        : document_(document)
        , item_(item)
        , text_(readItemText(document.text()))
        , zones_(text_.zones)
        , before_(before)
        , after_(after)
        , days_(dayOf(after.wall) - dayOf(before.wall))
    {
        for (const Node rule : document.lines(item, "RRULE")) {
            if (const auto line = document.read(rule); line && namesDays(line->value))
                days_ = 0;
        }
        for (const char* name : {"DUE", "DTSTART"}) { // the second one counts where there are both
            if (dateOf(document, item, name, zones_))
                startZone_ = std::string(document.read(*document.line(item, name))->parameter("TZID").value_or(""));
        }
    }

    void move()
    {
        for (const char* name : {"EXDATE", "RDATE"}) {
            for (const Node node : document_.lines(item_, name))
                moveLine(node);
        }
        for (const Node rule : document_.lines(item_, "RRULE"))
            moveEnd(rule);
        const std::string uid = document_.valueOf(item_, "UID").value_or("");
        for (const Node other : itemsOf(document_, document_.name(item_))) {
            const auto id = document_.line(other, "RECURRENCE-ID");
            if (id && document_.valueOf(other, "UID").value_or("") == uid)
                moveOccurrence(other, *id);
        }
    }

private:
    bool staysDate(const DateValue& value) const { return after_.isDate || (value.isDate && !before_.isDate); }

    DateValue moved(const DateValue& value) const
    {
        DateValue made = after_;
        made.isDate = staysDate(value);
        const std::int64_t seconds = made.isDate ? 0 : secondOfDay(after_.wall) - secondOfDay(before_.wall);
        made.wall = onClockOf(value, before_) + days_ * kDay + seconds;
        if (made.isDate)
            made.wall = dayOf(made.wall) * kDay;
        return made;
    }

    std::optional<DateValue> read(std::string_view value, const ContentLine& line) const
    {
        const auto zone = line.parameter("TZID");
        return readDateValue(std::string(value), zone ? zones_.find(std::string(*zone)) : nullptr, zones_.local());
    }

    /// A date, or a period whose end may be a length.
    std::optional<std::string> movedText(std::string_view value, const ContentLine& line, bool& isDate) const
    {
        const std::size_t slash = std::min(value.find('/'), value.size());
        const auto date = read(value.substr(0, slash), line);
        if (!date)
            return std::nullopt;
        isDate = staysDate(*date);
        std::string text = moved(*date).text();
        if (slash == value.size())
            return text;
        const auto end = read(value.substr(slash + 1), line);
        return text.append("/").append(end ? moved(*end).text() : std::string(value.substr(slash + 1)));
    }

    void moveLine(Node node)
    {
        auto line = document_.read(node);
        if (!line)
            return;
        std::string values;
        bool isDate = false;
        for (const std::string_view value : splitValue(line->value, ',')) {
            const auto text = movedText(value, *line, isDate);
            if (!text)
                return;
            values.append(values.empty() ? "" : ",").append(*text);
        }
        std::erase_if(line->parameters, [](const LineParameter& parameter) {
            return ascii::equalsIgnoringCase(parameter.name, "TZID")
                || (ascii::equalsIgnoringCase(parameter.name, "VALUE")
                    && !ascii::equalsIgnoringCase(parameter.values.front(), "PERIOD"));
        });
        if (isDate)
            line->parameters.push_back({"VALUE", {"DATE"}});
        else if (!startZone_.empty())
            line->parameters.push_back({"TZID", {startZone_}});
        line->value = values;
        document_.replace(node, *line);
    }

    /// RFC 5545, 3.3.10: UNTIL is a date, floats or is in UTC, as DTSTART is.
    void moveEnd(Node rule)
    {
        const auto line = document_.read(rule);
        std::string parts;
        for (const std::string_view part : line ? splitValue(line->value, ';') : std::vector<std::string_view>()) {
            const bool isUntil = ascii::equalsIgnoringCase(part.substr(0, kUntil.size()), kUntil);
            const auto until = isUntil ? read(part.substr(kUntil.size()), *line) : std::nullopt;
            parts += parts.empty() ? "" : ";";
            if (!until) {
                parts += part;
                continue;
            }
            const DateValue end = moved(*until);
            const bool isWritten = end.isDate || end.clock == DateValue::Clock::floating;
            parts.append(kUntil).append(isWritten ? end.text() : utcText(end.moment()));
        }
        if (line)
            document_.setValue(rule, parts);
    }

    void moveOccurrence(Node occurrence, Node id)
    {
        const auto date = dateOf(document_, occurrence, "RECURRENCE-ID", zones_);
        const auto start = dateOf(document_, occurrence, "DTSTART", zones_);
        moveLine(id);
        if (!date || !start || date->moment() != start->moment())
            return;
        for (const char* name : {"DTSTART", "DTEND", "DUE"}) {
            if (const auto line = document_.line(occurrence, name))
                moveLine(*line);
        }
    }

    ContentDocument& document_;
    Node item_;
    ItemText text_;
    FileZones zones_;
    DateValue before_, after_;
    std::int64_t days_;
    std::string startZone_;
};

} // namespace

void moveDates(ContentDocument& document, Node item, const DateValue& before, const DateValue& after)
{
    const bool isSame = before.wall == after.wall && before.isDate == after.isDate && before.clock == after.clock;
    if (!isSame && !document.line(item, "RECURRENCE-ID"))
        Mover(document, item, before, after).move();
}

} // namespace mervo::desk
