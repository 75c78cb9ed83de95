#pragma once

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/recurrence/DateValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mervo::desk {

/// The clocks of a file: which zones it knows, and which it gets.
class FileClocks {
public:
    explicit FileClocks(ContentDocument& document)
        : document_(document)
    {
    }

    /// A date or time as the file has it; nothing for what is none.
    std::optional<DateValue> read(ContentDocument::Node item, std::string_view name) const;

    /// Writes a day.
    void setDate(ContentDocument::Node item, std::string_view name, WallTime day);
    /// Writes a moment on the clock that the line has (or `like`, where there is no line), else on the owner's, whose
    /// VTIMEZONE the file then gets.
    void setMoment(ContentDocument::Node item, std::string_view name, std::int64_t moment, std::string_view like = {});

private:
    void set(ContentDocument::Node item, ContentLine line);
    void needZone(const std::string& name, std::int64_t since);

    ContentDocument& document_;
};

/// "20260105T090000Z".
std::string utcText(std::int64_t moment);

} // namespace mervo::desk
