#include "core/tools/reminders/ReminderScripts.h"

#include "core/tools/ScriptText.h"

namespace mervo::ReminderScripts {

using ScriptText::assembled;

namespace {

constexpr std::string_view kMatchHead = R"AS(
on run argv
	set listName to item 1 of argv
	set namePart to item 2 of argv
)AS";

// Leaves the lists that a name means in `theLists`; all of them for none.
constexpr std::string_view kFindLists = R"AS(
		if listName is "" then
			set theLists to every list
		else
			set theLists to (every list whose name is listName)
			if (count of theLists) is 0 then error "no Reminders list named \"" & listName & "\"."
		end if
)AS";

// Leaves the reminders in `matches` whose name contains a text. They are all found before one is touched: what is
// looked at does not change under the search.
constexpr std::string_view kFindMatches = R"AS(
		set matches to {}
		repeat with i from 1 to count of theLists
			set matches to matches & (every reminder of (item i of theLists) whose name contains namePart)
		end repeat
)AS";

} // namespace

const std::string& add()
{
    // A date in another form leaves no reminder behind, and one request with all properties no half of one.
    static const std::string script = assembled({R"AS(
on run argv
	set reminderName to item 1 of argv
	set listName to item 2 of argv
	set dueText to item 3 of argv
	set notesText to item 4 of argv
	set dueDate to missing value
	if dueText is not "" then set dueDate to my parseISO(dueText)
	tell application "Reminders"
		set theProperties to {name:reminderName}
		if notesText is not "" then set theProperties to theProperties & {body:notesText}
		if dueDate is not missing value then set theProperties to theProperties & {due date:dueDate}
)AS",
        kFindLists, R"AS(
		if listName is "" then
			make new reminder with properties theProperties
		else
			make new reminder at end of reminders of (item 1 of theLists) with properties theProperties
		end if
	end tell
	return "OK reminder created"
end run
)AS",
        ScriptText::kParseISO});
    return script;
}

const std::string& addList()
{
    static const std::string script = assembled({R"AS(
on run argv
	set listName to item 1 of argv
	tell application "Reminders"
		if exists list listName then return "OK list exists: " & listName
		make new list with properties {name:listName}
	end tell
	return "OK list created: " & listName
end run
)AS"});
    return script;
}

const std::string& renameList()
{
    static const std::string script = assembled({R"AS(
on run argv
	set oldName to item 1 of argv
	set newName to item 2 of argv
	tell application "Reminders"
		if not (exists list oldName) then return "(no list named " & oldName & ")"
		set name of list oldName to newName
	end tell
	return "OK list renamed: " & oldName & " -> " & newName
end run
)AS"});
    return script;
}

const std::string& complete()
{
    // What one request sets is all there or none of it, and one write of the disk in place of hundreds.
    static const std::string script = assembled({kMatchHead, R"AS(
	set isDone to (item 3 of argv) is "1"
	tell application "Reminders"
)AS",
        kFindLists, kFindMatches, R"AS(
		set completed of matches to isDone
	end tell
	return "OK updated " & (count of matches) & " reminder(s)"
end run
)AS"});
    return script;
}

const std::string& remove()
{
    static const std::string script = assembled({kMatchHead, R"AS(
	set deletedCount to 0
	tell application "Reminders"
)AS",
        kFindLists, kFindMatches, R"AS(
		repeat with i from 1 to count of matches
			try
				delete (item i of matches)
				set deletedCount to deletedCount + 1
			end try
		end repeat
	end tell
	return "OK deleted " & deletedCount & " reminder(s)"
end run
)AS"});
    return script;
}

} // namespace mervo::ReminderScripts
