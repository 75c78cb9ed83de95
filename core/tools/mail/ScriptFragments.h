#pragma once

#include "core/tools/ScriptText.h"

#include <string_view>

/// What the mail tools' scripts are put together from. Only their own sources include this.
namespace mervo::MailScripts {

using ScriptText::assembled;
using ScriptText::kIsoMinute;
using ScriptText::kJoinLines;
using ScriptText::kParseISO;

inline constexpr std::string_view kOneMailboxHead = R"AS(
on run argv
	set acctName to item 1 of argv
	set mbName to item 2 of argv
)AS";

// A flag for each criterion and for groups of them, so that tests that are off cost a few looks at variables for each
// message.
inline constexpr std::string_view kCriteria = R"AS(
	set fromQ to item 3 of argv
	set toQ to item 4 of argv
	set beforeQ to item 5 of argv
	set afterQ to item 6 of argv
	set olderQ to item 7 of argv
	set minMB to item 8 of argv
	set maxMB to item 9 of argv
	set subjQ to item 10 of argv
	set scQ to item 11 of argv
	set statusQ to item 12 of argv
	set hasAttQ to item 13 of argv
	set minBytes to 0
	if minMB is not "" then set minBytes to minMB as real
	set maxBytes to 0
	if maxMB is not "" then set maxBytes to maxMB as real
	set beforeDate to missing value
	if beforeQ is not "" then set beforeDate to my parseISO(beforeQ)
	set afterDate to missing value
	if afterQ is not "" then set afterDate to my parseISO(afterQ)
	if olderQ is not "" then set beforeDate to (current date) - (olderQ as integer) * days
	set byFrom to (fromQ is not "")
	set byTo to (toQ is not "")
	set byMin to (minBytes > 0)
	set byMax to (maxBytes > 0)
	set byBefore to (beforeDate is not missing value)
	set byAfter to (afterDate is not missing value)
	set bySubject to (subjQ is not "")
	set byPart to (scQ is not "")
	set onlyUnread to (statusQ is "unread")
	set onlyRead to (statusQ is "read")
	set byAttachment to (hasAttQ is not "")
	set bySize to (byMin or byMax)
	set byDate to (byBefore or byAfter)
	set byRest to (onlyUnread or onlyRead or byTo or byAttachment)
)AS";

inline constexpr std::string_view kOpenMail = R"AS(
	tell application "Mail"
)AS";

inline constexpr std::string_view kFindMailbox = R"AS(
		set theAccount to first account whose name is acctName
		set mb to missing value
		repeat with box in (get every mailbox of theAccount)
			if (name of box) is mbName then set mb to contents of box
		end repeat
		if mb is missing value then error "mailbox not found: " & mbName
)AS";

inline constexpr std::string_view kSnapshot = R"AS(
		set msgs to every message of mb
		set sizes to message size of (every message of mb)
		set senders to sender of (every message of mb)
		set subjects to subject of (every message of mb)
		set arrivals to date received of (every message of mb)
		if statusQ is not "" then set readFlags to read status of (every message of mb)
)AS";

inline constexpr std::string_view kEachMessage = R"AS(
		repeat with i from 1 to count of msgs
)AS";

// Leaves the verdict on message i in `ok`.
inline constexpr std::string_view kFilter = R"AS(
			set ok to true
			if byFrom then set ok to (item i of senders) contains fromQ
			if bySubject and ok then set ok to (item i of subjects) is subjQ
			if byPart and ok then set ok to (item i of subjects) contains scQ
			if bySize and ok then
				if byMin then set ok to (item i of sizes) >= minBytes
				if byMax and ok then set ok to (item i of sizes) <= maxBytes
			end if
			if byDate and ok then
				if byBefore then set ok to (item i of arrivals) < beforeDate
				if byAfter and ok then set ok to (item i of arrivals) > afterDate
			end if
			if byRest and ok then
				if onlyUnread then set ok to not (item i of readFlags)
				if onlyRead then set ok to (item i of readFlags)
				if byTo and ok then
					set ok to false
					try
						set m to item i of msgs
						repeat with addr in (get address of every to recipient of m)
							if addr contains toQ then
								set ok to true
								exit repeat
							end if
						end repeat
					end try
				end if
				if byAttachment and ok then
					set ok to false
					try
						set m to item i of msgs
						set ok to (count of mail attachments of m) > 0
					end try
				end if
			end if
)AS";

// Items 3 to 5 of the tools that work on one message.
inline constexpr std::string_view kSelector = R"AS(
	set subjQ to item 3 of argv
	set scQ to item 4 of argv
	set fromQ to item 5 of argv
)AS";

// Leaves the newest matching message in `target`, the first of those with the same date; or missing value. Further
// conditions on `ok` stand between the two halves.
inline constexpr std::string_view kSelectMatching = R"AS(
		set subjects to subject of (every message of mb)
		set senders to sender of (every message of mb)
		set arrivals to date received of (every message of mb)
		set msgs to every message of mb
		set target to missing value
		set newest to missing value
		repeat with i from 1 to count of msgs
			set ok to true
			if subjQ is not "" then set ok to (item i of subjects) is subjQ
			if ok and scQ is not "" then set ok to (item i of subjects) contains scQ
			if ok and fromQ is not "" then set ok to (item i of senders) contains fromQ
)AS";

inline constexpr std::string_view kKeepNewest = R"AS(
			if ok and newest is not missing value then set ok to (item i of arrivals) > newest
			if ok then
				set newest to item i of arrivals
				set target to item i of msgs
			end if
		end repeat
)AS";

inline constexpr std::string_view kReturnLines = R"AS(
	end tell
	return my joinLines(out)
end run
)AS";

} // namespace mervo::MailScripts
