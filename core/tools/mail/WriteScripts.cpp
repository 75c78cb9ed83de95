#include "core/tools/mail/MailScripts.h"

#include "core/tools/mail/ScriptFragments.h"

namespace mervo::MailScripts {

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
