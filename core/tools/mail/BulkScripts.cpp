#include "core/tools/mail/MailScripts.h"

#include "core/tools/mail/ScriptFragments.h"

namespace mervo::MailScripts {

namespace {

constexpr std::string_view kFindDestination = R"AS(
		set destMB to missing value
		repeat with box in (get every mailbox of theAccount)
			if (name of box) is destName then set destMB to contents of box
		end repeat
		if destMB is missing value then error "destination mailbox not found: " & destName
)AS";

// One pass finds all matches before it touches the first one. A message that fails is met again by the next pass: other
// programs work on the same mailbox, and what a pass missed for their sake comes into view in the one after it.
constexpr std::string_view kBeginPass = R"AS(
		set passNum to 0
		set total to 0
		repeat
			set passNum to passNum + 1
)AS";

constexpr std::string_view kBeginMatching = R"AS(
			set hits to {}
			set errCount to 0
			repeat with i from 1 to count of msgs
				try
)AS";

constexpr std::string_view kEndMatching = R"AS(
					if ok then set end of hits to item i of msgs
				on error
					set errCount to errCount + 1
				end try
			end repeat
			if (count of hits) is 0 and errCount is 0 then exit repeat
			set didThisPass to 0
			repeat with i from 1 to count of hits
				try
)AS";

constexpr std::string_view kEndPass = R"AS(
					set didThisPass to didThisPass + 1
				end try
			end repeat
			set total to total + didThisPass
			if didThisPass is 0 and errCount is 0 then exit repeat
			if passNum is 30 then exit repeat
		end repeat
	end tell
)AS";

// For changes in place. A message that another program has removed meanwhile is passed over; whatever else fails
// would fail for the next one, too, and is the script's error.
constexpr std::string_view kCollect = R"AS(
			if ok then set end of hits to item i of msgs
		end repeat
		set total to 0
		repeat with i from 1 to count of hits
			set m to item i of hits
			try
)AS";

constexpr std::string_view kEndChanges = R"AS(
				set total to total + 1
			on error errText number errNum
				if errNum is not -1728 then error errText number errNum
			end try
		end repeat
	end tell
)AS";

} // namespace

const std::string& remove()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, kOpenMail, kFindMailbox, kBeginPass,
        kSnapshot, kBeginMatching, kFilter, kEndMatching, R"AS(
					delete (item i of hits)
)AS",
        kEndPass, R"AS(
	return "OK deleted " & total & " message(s) -> Trash"
end run
)AS",
        kParseISO});
    return script;
}

const std::string& move()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, R"AS(
	set destName to item 14 of argv
)AS",
        kOpenMail, kFindMailbox, kFindDestination, kBeginPass, kSnapshot, kBeginMatching, kFilter, kEndMatching, R"AS(
					move (item i of hits) to destMB
)AS",
        kEndPass, R"AS(
	return "OK moved " & total & " message(s) -> " & destName
end run
)AS",
        kParseISO});
    return script;
}

const std::string& flag()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, R"AS(
	set flagVal to item 14 of argv
	set colorIdx to item 15 of argv
	set hits to {}
)AS",
        kOpenMail, kFindMailbox, kSnapshot, kEachMessage, kFilter, kCollect, R"AS(
				if flagVal is "1" then
					set flagged status of m to true
					if colorIdx is not "" then set flag index of m to (colorIdx as integer)
				else
					set flagged status of m to false
				end if
)AS",
        kEndChanges, R"AS(
	if flagVal is "1" then return "OK flagged " & total & " message(s)"
	return "OK unflagged " & total & " message(s)"
end run
)AS",
        kParseISO});
    return script;
}

const std::string& junk()
{
    static const std::string script = assembled({kOneMailboxHead, kCriteria, R"AS(
	set junkVal to item 14 of argv
	set hits to {}
)AS",
        kOpenMail, kFindMailbox, kSnapshot, kEachMessage, kFilter, kCollect, R"AS(
				set junk mail status of m to (junkVal is "1")
)AS",
        kEndChanges, R"AS(
	if junkVal is "1" then return "OK marked " & total & " message(s) as junk"
	return "OK unmarked " & total & " message(s)"
end run
)AS",
        kParseISO});
    return script;
}

} // namespace mervo::MailScripts
