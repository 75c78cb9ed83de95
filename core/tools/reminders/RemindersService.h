#pragma once

#include "core/foundation/ServiceError.h"
#include "core/tools/calendar/EventKitAccess.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mervo {

/// Finds, changes and deletes reminders and their lists, those in groups too. A list is meant by its exact title, and
/// all lists of that title are; an empty title means all there are.
///
/// Each call opens a store of its own and blocks. Throws AccessError, RemError, platform::EventStoreError; the counts
/// throw nothing.
class RemindersService {
public:
    class RemError final : public ServiceError {
    public:
        static RemError noList(const std::string& name);
        static RemError noMatch(const std::string& name);
        static RemError ambiguous(const std::string& name, std::size_t count);
        static RemError badDate(const std::string& value);

    private:
        using ServiceError::ServiceError;
    };

    explicit RemindersService(EventKitAccess::OpenStore open);

    enum class Completed { leftOut, included };

    /// A line for each list with its counts, by title.
    std::string listAll() const;
    /// A line for each reminder, by due date, list and title; those without a due date last. None for a limit below 1.
    std::string find(const std::string& list, Completed completed, std::int64_t limit) const;
    /// Gives the only incomplete reminder whose title contains `name` a new due date, "2026-03-01" or "2026-03-01
    /// 08:15", and moves its alarms by the same time.
    std::string update(const std::string& name, const std::string& list, const std::string& due) const;
    /// Deletes every list of that title with all its reminders.
    std::string deleteList(const std::string& name) const;
    std::string clearCompleted(const std::string& list) const;

    static std::string scope(const std::string& list); ///< in words: all lists, or the name of one

    std::size_t listCount(const std::string& name) const noexcept; ///< reminders that deleteList deletes; 0 on failure
    std::size_t completedCount(const std::string& list) const noexcept; ///< likewise of clearCompleted

private:
    EventKitAccess::OpenStore open_;
};

} // namespace mervo
