return {"É" = "é", ("e" & character id 769) = "é", "straße" = "STRASSE", "Ω" = "ω"}
--> true, true, true, true

return {"e" < "é", "é" < "f", "zebra" > "élan"}
--> true, true, true

considering case
	return {"a" < "B", "a" < "A", "A" < "a", "a" = "a"}
end considering
--> true, true, false, true

ignoring punctuation
	return {"it's" = "its", "a.b" contains "ab"}
end ignoring
--> true, true

considering case but ignoring diacriticals, hyphens
	return {"É-t" = "Et", "é" = "E"}
end considering
--> true, false

try
	considering case
		error "x"
	end considering
end try
return "a" = "A"
--> true

on f()
	considering case
		return "a" = "A"
	end considering
end f
return {f(), "a" = "A"}
--> false, true

considering numeric strings
	return {"a 2" < "a 10", "v007" = "v7"}
end considering
--> true, true

return {offset of "É" in "café au lait", offset of "b" in "→🔗b", offset of "" in "a"}
--> 4, 3, 0

considering case
	return offset of "A" in "banAna"
end considering
--> 4

ignoring white space
	return offset of "bc" in "a b c"
end ignoring
--> 3

set text item delimiters to "X"
considering case
	return count of text items of "axbXc"
end considering
--> 2

set text item delimiters to "X"
return count of text items of "axbXc"
--> 3

set text item delimiters to {"ab", "abc"}
return text items of "1abc2ab3"
--> 1, 2, 3

set old to AppleScript's text item delimiters
set AppleScript's text item delimiters to "--"
set s to {1, {2, 3}} as text
set AppleScript's text item delimiters to old
return {s, {1, 2} as text}
--> 1--2--3, 12

set text item delimiters to ", "
return "n: " & {1, 2}
--> n: 1, 2

ignoring application responses
	return 1
end ignoring
--> 1
