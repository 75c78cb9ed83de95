#pragma once

#include <string>

/// The script of cal.add, a constant text.
namespace mervo::CalendarScripts {

const std::string& add(); ///< calendar, summary, days, hour, duration, location, notes, url

} // namespace mervo::CalendarScripts
