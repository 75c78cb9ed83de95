#pragma once

#include "platform/eventkit.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace mervo::desk {

/// What makes two handles the same collection, event or reminder.
inline std::string identity(const platform::Collection& collection)
{
    return collection.id;
}

inline std::string identity(const platform::Event& event)
{
    return event.calendar.id + '\0' + event.item + '\0' + event.occurrence;
}

inline std::string identity(const platform::Reminder& reminder)
{
    return reminder.list.id + '\0' + reminder.item;
}

/// Collections, events or reminders as they were at one moment, in the order in which scripts see them.
template <typename Item>
class Look {
public:
    explicit Look(std::vector<Item> items)
        : items_(std::move(items))
    {
    }

    const std::vector<Item>& items() const noexcept { return items_; }

    /// The same one as it was then; null when it was gone.
    const Item* find(const Item& known) const
    {
        if (places_.size() != items_.size()) {
            for (std::size_t i = 0; i < items_.size(); ++i)
                places_.insert_or_assign(identity(items_[i]), i);
        }
        const auto place = places_.find(identity(known));
        return place == places_.end() ? nullptr : &items_[place->second];
    }

private:
    std::vector<Item> items_;
    mutable std::unordered_map<std::string, std::size_t> places_; // made on first use
};

} // namespace mervo::desk
