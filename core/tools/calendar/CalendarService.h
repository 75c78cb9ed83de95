#pragma once

#include "core/foundation/ServiceError.h"
#include "core/tools/calendar/EventKitAccess.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mervo {

/// Finds, changes and deletes events of all calendars, between a moment and so many days of the calendar later, or
/// earlier for a negative number. Texts match titles alone, whatever their letter case.
///
/// Each call opens a store of its own and blocks. Throws AccessError, UpdateError, platform::EventStoreError.
class CalendarService {
public:
    class UpdateError final : public ServiceError {
    public:
        static UpdateError noMatch(const std::string& text);
        static UpdateError ambiguous(const std::vector<std::string>& lines);
        static UpdateError nothingToChange();

    private:
        using ServiceError::ServiceError;
    };

    /// What to set; empty texts are left as they are.
    struct Fields {
        std::string title = {};
        std::string location = {};
        std::string notes = {};
        std::string url = {}; ///< one that RFC 3986 does not allow is left as it is too
    };

    /// `now`: seconds since 1970-01-01 UTC.
    CalendarService(EventKitAccess::OpenStore open, std::int64_t now);

    /// A line for each event, by start, calendar and title. An empty `contains` filters nothing.
    std::string find(std::int64_t days, const std::string& contains) const;
    /// Changes the only event that matches, and of one that repeats only the occurrence.
    std::string update(const std::string& contains, std::int64_t days, const Fields& fields) const;
    /// Deletes the only event that matches, and of one that repeats only the occurrence.
    std::string remove(const std::string& contains, std::int64_t days) const;

private:
    std::vector<platform::Event> matching(
        platform::EventStore& store, std::int64_t days, const std::string& contains) const;
    platform::Event theOnly(platform::EventStore& store, std::int64_t days, const std::string& contains) const;

    EventKitAccess::OpenStore open_;
    std::int64_t now_;
};

} // namespace mervo
