#include "core/tools/mail/MailScripts.h"

#include "core/tools/mail/ScriptFragments.h"

namespace mervo::MailScripts {

namespace {

constexpr std::string_view kMessageHead = R"AS(
on run argv
	set toAddr to item 1 of argv
	set subjText to item 2 of argv
	set bodyText to item 3 of argv
	set attachText to item 4 of argv
	set fromAddr to item 5 of argv
)AS";

// Files are looked up outside of the tell: inside, Mail would take the path for one of its own objects.
constexpr std::string_view kNewMessage = R"AS(
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
)AS";

constexpr std::string_view kFilesOf = R"AS(

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
)AS";

} // namespace

const std::string& draft()
{
    static const std::string script = assembled({kMessageHead, kNewMessage, R"AS(
		save msg
	end tell
	return "OK draft saved"
end run
)AS",
        kFilesOf});
    return script;
}

const std::string& send()
{
    static const std::string script = assembled({kMessageHead, kNewMessage, R"AS(
		send msg
	end tell
	return "OK sent"
end run
)AS",
        kFilesOf});
    return script;
}

const std::string& notify()
{
    static const std::string script = assembled({R"AS(
on run argv
	set subjText to item 1 of argv
	set toAddr to item 2 of argv
	set bodyText to item 3 of argv
	set fromAddr to item 4 of argv
	set attachText to item 5 of argv
)AS",
        kNewMessage, R"AS(
		send msg
	end tell
	return "OK notify sent to " & toAddr
end run
)AS",
        kFilesOf});
    return script;
}

const std::string& reply()
{
    // The quoting is built by hand: what a reply begins with differs from one version of Mail to the next.
    static const std::string script = assembled({kOneMailboxHead, kSelector, R"AS(
	set bodyText to item 6 of argv
	set allFlag to item 7 of argv
)AS",
        kOpenMail, kFindMailbox, kSelectMatching, kKeepNewest, R"AS(
		if target is missing value then error "no matching message to reply to"
		set attribution to "On " & ((date sent of target) as text) & ", " & (sender of target) & " wrote:"
		set quotedText to content of target
		if allFlag is "1" then
			set theReply to reply target opening window false reply to all true
		else
			set theReply to reply target opening window false reply to all false
		end if
		set content of theReply to bodyText & return & return & attribution & return & quotedText
		send theReply
	end tell
	return "OK replied"
end run
)AS"});
    return script;
}

const std::string& forward()
{
    static const std::string script = assembled({kOneMailboxHead, kSelector, R"AS(
	set toAddr to item 6 of argv
	set noteText to item 7 of argv
)AS",
        kOpenMail, kFindMailbox, kSelectMatching, kKeepNewest, R"AS(
		if target is missing value then error "no matching message to forward"
		set fromLine to "From: " & (sender of target)
		set subjectLine to "Subject: " & (subject of target)
		set originalText to content of target
		set theForward to forward target opening window false
		tell theForward
			make new to recipient at end of to recipients with properties {address:toAddr}
		end tell
		set content of theForward to noteText & return & return & "---------- Forwarded message ----------" & return & fromLine & return & subjectLine & return & return & originalText
		send theForward
	end tell
	return "OK forwarded to " & toAddr
end run
)AS"});
    return script;
}

} // namespace mervo::MailScripts
