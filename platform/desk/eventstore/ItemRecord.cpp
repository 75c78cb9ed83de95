#include "platform/desk/eventstore/ItemRecord.h"

#include "platform/ascii.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/recurrence/ItemText.h"
#include "platform/desk/recurrence/Recurrences.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>

namespace mervo::desk {
namespace {

using Node = ContentDocument::Node;

constexpr std::int64_t kAnyZone = 2 * kDay; // what floats may lie so far from its place in UTC

std::string textOf(const ContentDocument& document, Node component, std::string_view name)
{
    return platform::withValidUtf8(document.textOf(component, name).value_or(""));
}

EventRecord readEvent(const ContentDocument& document, Node event)
{
    EventRecord record;
    record.uid = document.valueOf(event, "UID").value_or("");
    record.title = textOf(document, event, "SUMMARY");
    record.location = textOf(document, event, "LOCATION");
    record.notes = textOf(document, event, "DESCRIPTION");
    record.url = platform::withValidUtf8(document.valueOf(event, "URL").value_or(""));
    record.recurrence = document.valueOf(event, "RRULE").value_or("");
    record.status = document.valueOf(event, "STATUS").value_or("");
    std::ranges::transform(record.status, record.status.begin(), platform::ascii::upper);
    record.sequence = numberOf(document, event, "SEQUENCE").value_or(0);
    record.stamp = momentOf(document, event, "DTSTAMP");
    return record;
}

std::vector<std::int64_t> readAlarms(const ContentDocument& document, Node task)
{
    std::vector<std::int64_t> alarms;
    for (const auto trigger : absoluteTriggers(document, task)) {
        if (const auto moment = momentIn(document.read(trigger)->value))
            alarms.push_back(*moment);
    }
    return alarms;
}

TaskRecord readTask(const ContentDocument& document, Node task, const FileZones& zones)
{
    TaskRecord record;
    record.uid = document.valueOf(task, "UID").value_or("");
    record.title = textOf(document, task, "SUMMARY");
    record.notes = textOf(document, task, "DESCRIPTION");
    record.isCompleted = isCompleted(document, task);
    record.isFlagged = platform::ascii::equalsIgnoringCase(document.valueOf(task, kFlag).value_or(""), "TRUE");
    record.priority =
        static_cast<int>(std::clamp<std::int64_t>(numberOf(document, task, "PRIORITY").value_or(0), 0, 9));
    if (const auto due = dueOf(document, task, zones)) {
        using Kind = DueRecord::Kind;
        const bool floats = due->clock == DateValue::Clock::floating;
        record.due.kind = due->isDate ? Kind::date : floats ? Kind::floating : Kind::moment;
        record.due.seconds = due->isDate || floats ? due->wall : due->moment();
    }
    record.completed = momentOf(document, task, "COMPLETED");
    record.created = momentOf(document, task, "CREATED");
    record.modified = momentOf(document, task, "LAST-MODIFIED");
    record.alarms = readAlarms(document, task);
    return record;
}

void readTasks(const ContentDocument& document, const std::string& bytes, ItemRecord& record)
{
    const auto tasks = itemsOf(document, "VTODO");
    if (tasks.empty())
        return;
    const ItemText text = readItemText(bytes);
    const FileZones zones(text.zones);
    std::set<std::string> masters;
    for (const Node task : tasks) {
        if (!document.line(task, "RECURRENCE-ID"))
            masters.insert(document.valueOf(task, "UID").value_or(""));
    }
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const bool isChange = document.line(tasks[i], "RECURRENCE-ID").has_value();
        if (isChange && masters.contains(document.valueOf(tasks[i], "UID").value_or("")))
            continue;
        record.tasks.push_back(readTask(document, tasks[i], zones));
        record.tasks.back().component = static_cast<std::uint32_t>(i);
    }
}

/// True when every rule of the file comes to an end, and one of them has dates.
bool endsSometime(const ContentDocument& document)
{
    for (const Node event : itemsOf(document, "VEVENT")) {
        for (const Node rule : document.lines(event, "RRULE")) {
            const std::string value = document.read(rule).value_or(ContentLine{}).value;
            if (value.find("COUNT=") == std::string::npos && value.find("UNTIL=") == std::string::npos)
                return false;
        }
    }
    return true;
}

bool hasChanges(const ContentDocument& document)
{
    return std::ranges::any_of(
        itemsOf(document, "VEVENT"), [&](Node event) { return document.line(event, "RECURRENCE-ID").has_value(); });
}

void setBounds(const ContentDocument& document, ItemRecord& record)
{
    constexpr std::size_t kMostTried = 1000; // dates; who has more is asked each time
    std::vector<Occurrence> dates = firstOccurrences(record.times);
    const bool isRepeating = std::ranges::any_of(dates, [](const Occurrence& date) { return !date.key.empty(); });
    bool isFirstKnown = !isRepeating || !hasChanges(document), isLastKnown = !isRepeating;
    if (isRepeating && endsSometime(document)) {
        Occurrences all = occurrences(record.times, {kFirstWallTime, kLastWallTime}, kMostTried);
        isFirstKnown = isLastKnown = !all.isBounded;
        if (!all.isBounded)
            dates = std::move(all.all);
    }
    for (const Occurrence& date : dates) {
        record.first = std::min(record.first, date.start - kAnyZone);
        record.last = std::max(record.last, date.end + kAnyZone);
    }
    if (!isFirstKnown)
        record.first = std::numeric_limits<std::int64_t>::min();
    if (!isLastKnown)
        record.last = std::numeric_limits<std::int64_t>::max();
}

void readEvents(const ContentDocument& document, const std::string& bytes, ItemRecord& record)
{
    for (const Node event : itemsOf(document, "VEVENT"))
        record.events.push_back(readEvent(document, event));
    if (record.events.empty())
        return;
    record.times = timesText(bytes);
    setBounds(document, record);
}

/// Numbers as they lie in memory, texts with their length in front: the cache belongs to one machine.
class Packer {
public:
    template <typename Number>
    void number(Number value)
    {
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void text(const std::string& value)
    {
        number(static_cast<std::uint32_t>(value.size()));
        bytes_ += value;
    }
    void maybe(const std::optional<std::int64_t>& value)
    {
        number<std::uint8_t>(value ? 1 : 0);
        number(value.value_or(0));
    }
    std::string take() { return std::move(bytes_); }

private:
    std::string bytes_;
};

class Unpacker {
public:
    explicit Unpacker(std::string_view bytes)
        : rest_(bytes)
    {
    }
    template <typename Number>
    Number number()
    {
        Number value{};
        if (rest_.size() < sizeof value) {
            isGood_ = false;
            return value;
        }
        std::memcpy(&value, rest_.data(), sizeof value);
        rest_.remove_prefix(sizeof value);
        return value;
    }
    std::string text()
    {
        const auto size = number<std::uint32_t>();
        isGood_ = isGood_ && size <= rest_.size();
        if (!isGood_)
            return {};
        std::string value(rest_.substr(0, size));
        rest_.remove_prefix(size);
        return value;
    }
    std::optional<std::int64_t> maybe()
    {
        const bool isThere = number<std::uint8_t>() != 0;
        const auto value = number<std::int64_t>();
        return isThere ? std::optional(value) : std::nullopt;
    }
    /// How many elements follow, each of at least a byte.
    std::size_t count()
    {
        const auto value = number<std::uint32_t>();
        isGood_ = isGood_ && value <= rest_.size();
        return isGood_ ? value : 0;
    }
    bool isWhole() const { return isGood_ && rest_.empty(); }

private:
    std::string_view rest_;
    bool isGood_ = true;
};

void pack(Packer& to, const EventRecord& event)
{
    for (const std::string* text :
        {&event.uid, &event.title, &event.location, &event.notes, &event.url, &event.recurrence, &event.status})
        to.text(*text);
    to.number(event.sequence);
    to.maybe(event.stamp);
}

EventRecord unpackEvent(Unpacker& from)
{
    EventRecord event;
    for (std::string* text :
        {&event.uid, &event.title, &event.location, &event.notes, &event.url, &event.recurrence, &event.status})
        *text = from.text();
    event.sequence = from.number<std::int64_t>();
    event.stamp = from.maybe();
    return event;
}

void pack(Packer& to, const TaskRecord& task)
{
    to.number(task.component);
    for (const std::string* text : {&task.uid, &task.title, &task.notes})
        to.text(*text);
    to.number<std::uint8_t>(static_cast<std::uint8_t>((task.isCompleted ? 1 : 0) + (task.isFlagged ? 2 : 0)));
    to.number<std::int32_t>(task.priority);
    to.number(task.due.kind);
    to.number(task.due.seconds);
    for (const auto* moment : {&task.completed, &task.created, &task.modified})
        to.maybe(*moment);
    to.number(static_cast<std::uint32_t>(task.alarms.size()));
    for (const std::int64_t alarm : task.alarms)
        to.number(alarm);
}

TaskRecord unpackTask(Unpacker& from)
{
    TaskRecord task;
    task.component = from.number<std::uint32_t>();
    for (std::string* text : {&task.uid, &task.title, &task.notes})
        *text = from.text();
    const auto flags = from.number<std::uint8_t>();
    task.isCompleted = (flags & 1U) != 0;
    task.isFlagged = (flags & 2U) != 0;
    task.priority = from.number<std::int32_t>();
    task.due.kind = from.number<DueRecord::Kind>();
    task.due.seconds = from.number<std::int64_t>();
    for (auto* moment : {&task.completed, &task.created, &task.modified})
        *moment = from.maybe();
    task.alarms.resize(from.count());
    for (std::int64_t& alarm : task.alarms)
        alarm = from.number<std::int64_t>();
    return task;
}

} // namespace

ItemRecord readRecord(const std::string& bytes)
{
    ItemRecord record;
    const ContentDocument document(bytes);
    if (!document.isBalanced() || document.components(document.root(), "VCALENDAR").empty()) {
        record.isDamaged = true;
        return record;
    }
    readEvents(document, bytes, record);
    readTasks(document, bytes, record);
    return record;
}

std::string packed(const ItemRecord& record)
{
    Packer to;
    to.number<std::uint8_t>(record.isDamaged ? 1 : 0);
    to.number(record.first);
    to.number(record.last);
    to.number(static_cast<std::uint32_t>(record.events.size()));
    for (const EventRecord& event : record.events)
        pack(to, event);
    to.number(static_cast<std::uint32_t>(record.tasks.size()));
    for (const TaskRecord& task : record.tasks)
        pack(to, task);
    to.text(record.times);
    return to.take();
}

std::optional<ItemRecord> unpacked(std::string_view bytes)
{
    Unpacker from(bytes);
    ItemRecord record;
    record.isDamaged = from.number<std::uint8_t>() != 0;
    record.first = from.number<std::int64_t>();
    record.last = from.number<std::int64_t>();
    for (std::size_t count = from.count(); count > 0; --count)
        record.events.push_back(unpackEvent(from));
    for (std::size_t count = from.count(); count > 0; --count)
        record.tasks.push_back(unpackTask(from));
    record.times = from.text();
    return from.isWhole() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace mervo::desk
