#include "core/tools/mail/MailScripts.h"

#include "core/tools/mail/ScriptFragments.h"

namespace mervo::MailScripts {

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

const std::string& accountServers()
{
    static const std::string script = assembled({R"AS(
on run argv
	set out to {}
	tell application "Mail"
		repeat with acct in (get every account)
			set theAddress to ""
			set theServer to ""
			try
				set theAddress to item 1 of (get email addresses of acct)
			end try
			try
				set theServer to server name of acct
			end try
			set end of out to (name of acct) & tab & theAddress & tab & theServer
		end repeat
		set end of out to "end" -- else the last line would lose the tab before an empty server
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
    static const std::string script =
        assembled({kOneMailboxHead, kSelector, kOpenMail, kFindMailbox, kSelectMatching, kKeepNewest, R"AS(
		if target is missing value then return "(no matching message)"
		return content of target
	end tell
end run
)AS"});
    return script;
}

const std::string& ownReply()
{
    // A sender is "Name <address>" or an address. One with another "<" in its name is not taken apart: it is nobody's.
    static const std::string script = assembled({kOneMailboxHead, kSelector, kOpenMail, kFindMailbox, R"AS(
		set isDrafts to false
		try
			set isDrafts to (name of drafts mailbox) is mbName
		end try
		if isDrafts then return ""
)AS",
        kSelectMatching, R"AS(
			if ok then set ok to my isAnswered(item i of subjects, scQ)
			if ok then set ok to my addressOf(item i of senders) is fromQ
)AS",
        kKeepNewest, R"AS(
		if target is missing value then return ""
		return content of target
	end tell
end run

on isAnswered(theSubject, theTag)
	set place to offset of theTag in theSubject
	if place < 2 then return false
	return (text 1 thru (place - 1) of theSubject) contains "re:"
end isAnswered

on addressOf(theSender)
	if theSender does not end with ">" then return theSender
	try
		return text ((offset of "<" in theSender) + 1) thru -2 of theSender
	end try
	return ""
end addressOf
)AS"});
    return script;
}

const std::string& open()
{
    static const std::string script =
        assembled({kOneMailboxHead, kSelector, kOpenMail, kFindMailbox, kSelectMatching, kKeepNewest, R"AS(
		if target is missing value then return "(no matching message)"
		set theSubject to subject of target
		open target
		activate
		return "OK opened: " & theSubject
	end tell
end run
)AS"});
    return script;
}

} // namespace mervo::MailScripts
