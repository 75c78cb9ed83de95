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

} // namespace mervo::ScriptText
