#include "core/tools/calendar/CalendarScripts.h"

#include "core/tools/ScriptText.h"

namespace mervo::CalendarScripts {

const std::string& add()
{
    // The dates are made outside of the tell: inside, an application may take their parts for its own. All properties
    // go into one request, so that no half of an event stays behind.
    static const std::string script = ScriptText::assembled({R"AS(
on run argv
	set calName to item 1 of argv
	set summaryText to item 2 of argv
	set dayText to item 3 of argv
	set hourText to item 4 of argv
	set durationText to item 5 of argv
	set locationText to item 6 of argv
	set notesText to item 7 of argv
	set urlText to item 8 of argv
	set startDate to (current date) + (dayText as integer) * days
	if hourText is not "" then
		set hours of startDate to hourText as integer
		set minutes of startDate to 0
		set seconds of startDate to 0
	end if
	set endDate to startDate + (durationText as integer) * minutes
	tell application "Calendar"
		set theProperties to {summary:summaryText, start date:startDate, end date:endDate}
		if locationText is not "" then set theProperties to theProperties & {location:locationText}
		if notesText is not "" then set theProperties to theProperties & {description:notesText}
		if urlText is not "" then set theProperties to theProperties & {url:urlText}
		tell calendar calName
			make new event at end of events with properties theProperties
		end tell
	end tell
	return "OK event @ " & (startDate as text)
end run
)AS"});
    return script;
}

} // namespace mervo::CalendarScripts
