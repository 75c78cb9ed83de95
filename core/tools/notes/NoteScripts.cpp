#include "core/tools/notes/NoteScripts.h"

#include "core/tools/ScriptText.h"

#include <string_view>

namespace mervo::NoteScripts {

namespace {

using ScriptText::assembled;
using ScriptText::kIsoMinute;
using ScriptText::kJoinLines;

constexpr std::string_view kEachFolder = R"AS(
	tell application "Notes"
		repeat with acct in (get every account)
			repeat with f in (get every folder of acct)
				set folderName to name of f
				if not my isTrashFolder(folderName) then
)AS";

constexpr std::string_view kEndOfFolders = R"AS(
				end if
			end repeat
		end repeat
)AS";

constexpr std::string_view kIsTrashFolder = R"AS(

on isTrashFolder(folderName)
	set trashNames to {"Recently Deleted", "Supprimées récemment", "Suppressions récentes", "Eliminadas recientemente", "Zuletzt gelöscht", "Eliminati di recente", "Eliminate di recente", "Onlangs verwijderd", "Recentemente eliminadas", "Apagados recentemente"}
	ignoring case
		return trashNames contains {folderName as text}
	end ignoring
end isTrashFolder
)AS";

// Leaves the matching notes in `hits`.
constexpr std::string_view kCollect = R"AS(
on run argv
	set nameQ to item 1 of argv
	set hits to {}
)AS";

constexpr std::string_view kMatchName = R"AS(
					set hits to hits & (get every note of f whose name contains nameQ)
)AS";

// The words for none and for several, of the tools that work on one note.
constexpr std::string_view kOnlyOne = R"AS(
		set total to count of hits
		if total is 0 then return "(no matching note)"
		if total > 1 then return "(ambiguous: " & total & " notes match; make name= more specific)"
		set theNote to item 1 of hits
)AS";

constexpr std::string_view kReturnLines = R"AS(
	end tell
	return my joinLines(out)
end run
)AS";

// A name is plain text, and a title in a body is HTML.
constexpr std::string_view kEscaped = R"AS(

on escaped(plain)
	set plain to my replaced(plain, "&", "&amp;")
	set plain to my replaced(plain, "<", "&lt;")
	return my replaced(plain, ">", "&gt;")
end escaped

on replaced(source, old, new)
	set oldDelimiters to AppleScript's text item delimiters
	set AppleScript's text item delimiters to old
	set parts to text items of source
	set AppleScript's text item delimiters to new
	set changed to parts as text
	set AppleScript's text item delimiters to oldDelimiters
	return changed
end replaced
)AS";

} // namespace

const std::string& list()
{
    static const std::string script = assembled({R"AS(
on run argv
	set out to {}
	tell application "Notes"
		repeat with f in (get every folder)
			set end of out to (name of f) & " (" & (count of notes of f) & ")"
		end repeat
)AS",
        kReturnLines, kJoinLines});
    return script;
}

const std::string& find()
{
    static const std::string script = assembled({R"AS(
on run argv
	set nameQ to item 1 of argv
	set bodyQ to item 2 of argv
	set lim to (item 3 of argv) as integer
	set out to {}
)AS",
        kEachFolder, R"AS(
					if lim > 0 and (count of out) = lim then exit repeat
					if nameQ is "" and bodyQ is "" then
						set found to (get every note of f)
					else if bodyQ is "" then
						set found to (get every note of f whose name contains nameQ)
					else if nameQ is "" then
						set found to (get every note of f whose plaintext contains bodyQ)
					else
						set found to (get every note of f whose name contains nameQ and plaintext contains bodyQ)
					end if
					repeat with n in found
						if lim > 0 and (count of out) = lim then exit repeat
						try
							set end of out to folderName & " || " & (name of n) & " || " & my isoMinute(modification date of n)
						end try
					end repeat
)AS",
        kEndOfFolders, kReturnLines, kIsTrashFolder, kIsoMinute, kJoinLines});
    return script;
}

const std::string& read()
{
    static const std::string script = assembled({kCollect, kEachFolder, kMatchName, kEndOfFolders, kOnlyOne, R"AS(
		return (name of theNote) & linefeed & "----" & linefeed & (plaintext of theNote)
	end tell
end run
)AS",
        kIsTrashFolder});
    return script;
}

const std::string& add()
{
    static const std::string script = assembled({R"AS(
on run argv
	set theTitle to item 1 of argv
	set theBody to item 2 of argv
	tell application "Notes"
		set theNote to make new note with properties {body:"<div><b>" & theTitle & "</b></div><div>" & theBody & "</div>"}
		return "OK note: " & (name of theNote)
	end tell
end run
)AS"});
    return script;
}

const std::string& open()
{
    static const std::string script = assembled({R"AS(
on run argv
	set nameQ to item 1 of argv
	tell application "Notes"
		activate
	end tell
)AS",
        kEachFolder, R"AS(
					set found to (get every note of f whose name contains nameQ)
					if (count of found) > 0 then
						set theNote to item 1 of found
						set theName to name of theNote
						show theNote
						return "OK opened: " & theName
					end if
)AS",
        kEndOfFolders, R"AS(
	end tell
	return "(no matching note)"
end run
)AS",
        kIsTrashFolder});
    return script;
}

const std::string& update()
{
    static const std::string script = assembled({R"AS(
on run argv
	set nameQ to item 1 of argv
	set appended to item 2 of argv
	set newBody to item 3 of argv
	set hits to {}
)AS",
        kEachFolder, kMatchName, kEndOfFolders, kOnlyOne, R"AS(
		set theName to name of theNote
		if newBody is not "" then set body of theNote to "<div><b>" & my escaped(theName) & "</b></div><div>" & newBody & "</div>"
		if appended is not "" then set body of theNote to (body of theNote) & "<div>" & appended & "</div>"
		return "OK updated: " & theName
	end tell
end run
)AS",
        kIsTrashFolder, kEscaped});
    return script;
}

const std::string& remove()
{
    static const std::string script = assembled({kCollect, kEachFolder, kMatchName, kEndOfFolders, R"AS(
		set deleted to 0
		repeat with n in hits
			try
				delete n
				set deleted to deleted + 1
			end try
		end repeat
		return "OK deleted " & deleted & " note(s)"
	end tell
end run
)AS",
        kIsTrashFolder});
    return script;
}

const std::string& matching()
{
    static const std::string script = assembled({kCollect, R"AS(
	set out to {}
)AS",
        kEachFolder, kMatchName, kEndOfFolders, R"AS(
		repeat with n in hits
			try
				set end of out to name of n
			end try
		end repeat
)AS",
        kReturnLines, kIsTrashFolder, kJoinLines});
    return script;
}

} // namespace mervo::NoteScripts
