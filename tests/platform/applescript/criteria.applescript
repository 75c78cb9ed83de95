on run argv
	set acctName to item 1 of argv
	set mbName to item 2 of argv
	set fromQ to item 3 of argv
	set toQ to item 4 of argv
	set beforeQ to item 5 of argv
	set afterQ to item 6 of argv
	set olderQ to item 7 of argv
	set minMB to item 8 of argv
	set subjQ to item 9 of argv
	set scQ to item 10 of argv
	set statusQ to item 11 of argv
	set lim to (item 12 of argv) as integer
	set minBytes to 0
	if minMB is not "" then set minBytes to minMB as real
	set beforeDate to missing value
	if beforeQ is not "" then set beforeDate to parseISO(beforeQ)
	set afterDate to missing value
	if afterQ is not "" then set afterDate to my parseISO(afterQ)
	if olderQ is not "" then set beforeDate to (current date) - ((olderQ as integer) * days)
	set out to {}
	set hits to 0
	tell application "Post"
		set theAccount to first account whose name is acctName
		set theBox to missing value
		repeat with mb in (every box of theAccount)
			if (name of mb) is mbName then set theBox to contents of mb
		end repeat
		if theBox is missing value then error "box not found: " & mbName
		set msgs to every letter of theBox
		set theSizes to letter size of (every letter of theBox)
		set theSenders to sender of (every letter of theBox)
		set theSubjects to subject of (every letter of theBox)
		set theDates to date received of (every letter of theBox)
		if statusQ is not "" then set theReads to read status of (every letter of theBox)
		repeat with i from 1 to count of msgs
			set ok to true
			if ok and fromQ is not "" then
				if (item i of theSenders) does not contain fromQ then set ok to false
			end if
			if ok and subjQ is not "" then
				if (item i of theSubjects) is not subjQ then set ok to false
			end if
			if ok and scQ is not "" then
				if (item i of theSubjects) does not contain scQ then set ok to false
			end if
			if ok and minBytes > 0 then
				if (item i of theSizes) < minBytes then set ok to false
			end if
			if ok and beforeDate is not missing value then
				if (item i of theDates) ≥ beforeDate then set ok to false
			end if
			if ok and afterDate is not missing value then
				if (item i of theDates) ≤ afterDate then set ok to false
			end if
			if ok and statusQ is "unread" then
				if (item i of theReads) then set ok to false
			end if
			if ok and toQ is not "" then
				set found to false
				try
					repeat with r in (to recipients of (item i of msgs))
						if (address of r) contains toQ then set found to true
					end repeat
				end try
				if not found then set ok to false
			end if
			if ok then
				set d to item i of theDates
				set line_ to ((year of d) as text) & "-" & ((month of d) as integer) & "-" & (day of d)
				set end of out to line_ & " || " & (item i of theSizes) & " || " & (item i of theSenders) & " || " & (item i of theSubjects)
				set hits to hits + 1
				if lim > 0 and hits = lim then exit repeat
			end if
		end repeat
	end tell
	set AppleScript's text item delimiters to linefeed
	set resultText to out as text
	set AppleScript's text item delimiters to ""
	return resultText
end run

on parseISO(s)
	set t to current date
	set time of t to 0
	set day of t to 1
	set year of t to (text 1 thru 4 of s) as integer
	set month of t to (text 6 thru 7 of s) as integer
	set day of t to (text 9 thru 10 of s) as integer
	return t
end parseISO
