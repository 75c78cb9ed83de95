#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace mervo::platform {

/// A value of a property list (the system's manual page plist(5)): what job descriptions are made of. A plain value.
struct PropertyList {
    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList>;
    struct Other { ///< a date, a number with a fraction, bytes: read as such, never written
        bool operator==(const Other&) const = default;
    };

    std::variant<Other, bool, std::int64_t, std::string, Array, Dictionary> value;

    /// The value when it is of this type, else null.
    template <typename Type>
    const Type* as() const
    {
        return std::get_if<Type>(&value);
    }
    /// A member of a dictionary; null when there is none, or this is no dictionary.
    const PropertyList* find(const std::string& key) const;
    /// A member of this type; null when there is none.
    template <typename Type>
    const Type* find(const std::string& key) const
    {
        const PropertyList* member = find(key);
        return member == nullptr ? nullptr : member->as<Type>();
    }

    bool operator==(const PropertyList&) const;
};

/// The XML or the binary form. Nothing for other bytes, for values nested more than 100 deep, and for more than 1 MiB.
std::optional<PropertyList> readPropertyList(std::string_view bytes);

/// The XML form, its keys in order, indented with tabs. Texts are written up to a NUL, `Other` as an empty text.
std::string propertyListXml(const PropertyList& list);

} // namespace mervo::platform
