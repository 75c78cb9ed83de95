#pragma once

#include "platform/desk/recurrence/ItemText.h"
#include "platform/desk/recurrence/RuleDates.h"
#include "platform/desk/recurrence/Zone.h"

#include <map>

namespace mervo::desk {

/// The time zones that a file names. An Olson name means the system's zone, since what files carry is often short or
/// out of date; then comes the file's own VTIMEZONE; then an Olson name behind a prefix
/// ("/freeassociation.sourceforge.net/Europe/Paris"). The work on all zones of a file is bounded: of more than 200 the
/// first are known.
class FileZones {
public:
    /// `zones` must outlive this.
    explicit FileZones(const std::vector<ItemZone>& zones);

    /// Null for a name that means nothing; a time in such a zone floats.
    std::shared_ptr<const Zone> find(const std::string& tzid) const;
    const std::shared_ptr<const Zone>& local() const { return local_; }

private:
    std::shared_ptr<const Zone> search(const std::string& tzid) const;

    const std::vector<ItemZone>& zones_;
    std::shared_ptr<const Zone> local_;
    mutable RuleDates::Steps steps_;
    mutable std::map<std::string, std::shared_ptr<const Zone>> found_;
};

/// A zone from a VTIMEZONE (RFC 5545, 3.6.5), with its changes up to the year 2100. Null without a usable observance.
std::shared_ptr<const Zone> readFileZone(const ItemZone& zone, RuleDates::Steps& steps);

} // namespace mervo::desk
