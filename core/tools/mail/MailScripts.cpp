#include "core/tools/mail/MailScripts.h"

#include <initializer_list>
#include <string_view>

namespace mervo::MailScripts {

namespace {

std::string assembled(std::initializer_list<std::string_view> fragments)
{
    std::string script;
    for (const auto fragment : fragments)
        script += fragment.substr(fragment.starts_with('\n') ? 1 : 0);
    return script;
}

constexpr std::string_view kOneMailboxHead = R"AS(
on run argv
	set acctName to item 1 of argv
	set mbName to item 2 of argv
)AS";

// A flag for each criterion and for groups of them, so that tests that are off cost a few looks at variables for each
// message.
constexpr std::string_view kCriteria = R"AS(
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

constexpr std::string_view kOpenMail = R"AS(
	tell application "Mail"
)AS";

constexpr std::string_view kFindMailbox = R"AS(
		set theAccount to first account whose name is acctName
		set mb to missing value
		repeat with box in (get every mailbox of theAccount)
			if (name of box) is mbName then set mb to contents of box
		end repeat
		if mb is missing value then error "mailbox not found: " & mbName
)AS";

constexpr std::string_view kSnapshot = R"AS(
		set msgs to every message of mb
		set sizes to message size of (every message of mb)
		set senders to sender of (every message of mb)
		set subjects to subject of (every message of mb)
		set arrivals to date received of (every message of mb)
		if statusQ is not "" then set readFlags to read status of (every message of mb)
)AS";

constexpr std::string_view kEachMessage = R"AS(
		repeat with i from 1 to count of msgs
)AS";

// Leaves the verdict on message i in `ok`.
constexpr std::string_view kFilter = R"AS(
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

constexpr std::string_view kParseISO = R"AS(

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

constexpr std::string_view kIsoMinute = R"AS(

on isoMinute(d)
	set ymd to ((year of d) * 10000 + ((month of d) as integer) * 100 + (day of d)) as text
	set hm to (10000 + (hours of d) * 100 + (minutes of d)) as text
	return (text 1 thru 4 of ymd) & "-" & (text 5 thru 6 of ymd) & "-" & (text 7 thru 8 of ymd) & " " & (text 2 thru 3 of hm) & ":" & (text 4 thru 5 of hm)
end isoMinute
)AS";

constexpr std::string_view kJoinLines = R"AS(

on joinLines(theLines)
	set oldDelimiters to AppleScript's text item delimiters
	set AppleScript's text item delimiters to linefeed
	set joinedText to theLines as text
	set AppleScript's text item delimiters to oldDelimiters
	return joinedText
end joinLines
)AS";

constexpr std::string_view kReturnLines = R"AS(
	end tell
	return my joinLines(out)
end run
)AS";

} // namespace

const std::string& accounts()
{
    static const std::string script = assembled({R"AS(
on run argv
	set out to {}
	tell application "Mail"
		repeat with acct in (get every account)
			set end of out to "ACCOUNT: " & (name of acct)
			repeat with box in (get every mailbox of acct)
				try
					set end of out to "  " & (name of box)
				end try
			end repeat
		end repeat
)AS",
        kReturnLines, kJoinLines});
    return script;
}

const std::string& headers()
{
    // Only the wanted range is asked for: the first twenty of a large mailbox cost twenty messages.
    static const std::string script = assembled({kOneMailboxHead, R"AS(
	set lim to (item 3 of argv) as integer
	set out to {}
)AS",
        kOpenMail, kFindMailbox, R"AS(
		set total to count of messages of mb
		if lim > 0 and lim < total then set total to lim
		if total > 0 then
			set arrivals to date received of (messages 1 thru total of mb)
			set senders to sender of (messages 1 thru total of mb)
			set subjects to subject of (messages 1 thru total of mb)
			repeat with i from 1 to count of arrivals
				set end of out to my isoMinute(item i of arrivals) & " || " & (item i of senders) & " || " & (item i of subjects)
			end repeat
		end if
)AS",
        kReturnLines, kIsoMinute, kJoinLines});
    return script;
}

const std::string& audit()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, R"AS(
	set lim to (item 14 of argv) as integer
	set hits to 0
	set out to {}
)AS",
        kOpenMail, kFindMailbox, kSnapshot, kEachMessage, kFilter, R"AS(
			if ok then
				set end of out to my isoMinute(item i of arrivals) & " || " & (item i of sizes) & " || " & (item i of senders) & " || " & (item i of subjects)
				set hits to hits + 1
				if hits = lim then exit repeat
			end if
		end repeat
)AS",
        kReturnLines, kParseISO, kIsoMinute, kJoinLines});
    return script;
}

const std::string& search()
{
    static const std::string script = assembled({R"AS(
on run argv
	set acctQ to item 1 of argv
	set mbQ to item 2 of argv
)AS",
        kCriteria, R"AS(
	set lim to (item 14 of argv) as integer
	set allBoxes to (mbQ is "all" or mbQ is "")
	set hits to 0
	set full to false
	set out to {}
)AS",
        kOpenMail, R"AS(
		if acctQ is "all" or acctQ is "" then
			set accts to every account
		else
			set theAccount to first account whose name is acctQ
			set accts to {theAccount}
		end if
		repeat with acctIndex from 1 to count of accts
			set acct to item acctIndex of accts
			set acctName to name of acct
			set boxes to every mailbox of acct
			set boxNames to name of every mailbox of acct
			repeat with boxIndex from 1 to count of boxes
				set mbName to item boxIndex of boxNames
				if allBoxes or mbName is mbQ then
					try
						set mb to item boxIndex of boxes
)AS",
        kSnapshot, kEachMessage, kFilter, R"AS(
							if ok then
								set end of out to acctName & "/" & mbName & " || " & my isoMinute(item i of arrivals) & " || " & (item i of sizes) & " || " & (item i of senders) & " || " & (item i of subjects)
								set hits to hits + 1
								if lim > 0 and hits >= lim then
									set full to true
									exit repeat
								end if
							end if
						end repeat
					end try
				end if
				if full then exit repeat
			end repeat
			if full then exit repeat
		end repeat
)AS",
        kReturnLines, kParseISO, kIsoMinute, kJoinLines});
    return script;
}

const std::string& messageId()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, R"AS(
	set out to {}
)AS",
        kOpenMail, kFindMailbox, kSnapshot, kEachMessage, kFilter, R"AS(
			if ok then set end of out to message id of (item i of msgs)
		end repeat
)AS",
        kReturnLines, kParseISO, kJoinLines});
    return script;
}

const std::string& count()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, R"AS(
	set hits to 0
	set totalBytes to 0
)AS",
        kOpenMail, kFindMailbox, kSnapshot, kEachMessage, kFilter, R"AS(
			if ok then
				set hits to hits + 1
				set totalBytes to totalBytes + (item i of sizes)
			end if
		end repeat
	end tell
	set kilobytes to (totalBytes / 1024) as integer
	return (hits as text) & "|" & (kilobytes as text)
end run
)AS",
        kParseISO});
    return script;
}

const std::string& body()
{
    static const std::string script = assembled({kOneMailboxHead, R"AS(
	set subjQ to item 3 of argv
	set scQ to item 4 of argv
	set fromQ to item 5 of argv
)AS",
        kOpenMail, kFindMailbox, R"AS(
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
			if ok and newest is not missing value then set ok to (item i of arrivals) > newest
			if ok then
				set newest to item i of arrivals
				set target to item i of msgs
			end if
		end repeat
		if target is missing value then return "(no matching message)"
		return content of target
	end tell
end run
)AS"});
    return script;
}

const std::string& draft()
{
    // Files are looked up outside of the tell: inside, Mail would take the path for one of its own objects.
    static const std::string script = assembled({R"AS(
on run argv
	set toAddr to item 1 of argv
	set subjText to item 2 of argv
	set bodyText to item 3 of argv
	set attachText to item 4 of argv
	set fromAddr to item 5 of argv
	set attachFiles to my filesOf(attachText)
	tell application "Mail"
		set msg to make new outgoing message with properties {subject:subjText, content:bodyText, visible:false}
		tell msg
			make new to recipient at end of to recipients with properties {address:toAddr}
		end tell
		if fromAddr is not "" then
			try
				set sender of msg to fromAddr
			end try
		end if
		repeat with i from 1 to count of attachFiles
			set oneFile to item i of attachFiles
			tell content of msg
				make new attachment with properties {file name:oneFile} at after last paragraph
			end tell
		end repeat
		if (count of attachFiles) > 0 then delay 1
		save msg
	end tell
	return "OK draft saved"
end run

on filesOf(attachText)
	set theFiles to {}
	if attachText is "" then return theFiles
	set oldDelimiters to AppleScript's text item delimiters
	set AppleScript's text item delimiters to linefeed
	set thePaths to text items of attachText
	set AppleScript's text item delimiters to oldDelimiters
	repeat with i from 1 to count of thePaths
		set end of theFiles to POSIX file (item i of thePaths)
	end repeat
	return theFiles
end filesOf
)AS"});
    return script;
}

} // namespace mervo::MailScripts
