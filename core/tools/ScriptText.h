#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/// What the scripts of several families are put together from. Only sources of scripts include this.
namespace mervo::ScriptText {

/// One text of several, each without the line end that it begins with here.
std::string assembled(std::initializer_list<std::string_view> fragments);

// A handler: midnight of the day of a text in the form YYYY-MM-DD.
inline constexpr std::string_view kParseISO = R"AS(

on parseISO(s)
	set d to current date
	set time of d to 0
	set day of d to 1
	set year of d to (text 1 thru 4 of s) as integer
	set month of d to (text 6 thru 7 of s) as integer
	set day of d to (text 9 thru 10 of s) as integer
	return d
end parseISO
)AS";

// A handler: a date as "2026-03-01 08:15", whatever the locale.
inline constexpr std::string_view kIsoMinute = R"AS(

on isoMinute(d)
	set ymd to ((year of d) * 10000 + ((month of d) as integer) * 100 + (day of d)) as text
	set hm to (10000 + (hours of d) * 100 + (minutes of d)) as text
	return (text 1 thru 4 of ymd) & "-" & (text 5 thru 6 of ymd) & "-" & (text 7 thru 8 of ymd) & " " & (text 2 thru 3 of hm) & ":" & (text 4 thru 5 of hm)
end isoMinute
)AS";

// A handler: the items of a list, one a line.
inline constexpr std::string_view kJoinLines = R"AS(

on joinLines(theLines)
	set oldDelimiters to AppleScript's text item delimiters
	set AppleScript's text item delimiters to linefeed
	set joinedText to theLines as text
	set AppleScript's text item delimiters to oldDelimiters
	return joinedText
end joinLines
)AS";

} // namespace mervo::ScriptText
