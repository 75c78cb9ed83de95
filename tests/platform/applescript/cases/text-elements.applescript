set s to "naïve→🔗👩‍👩‍👧x"
return {count of s, character 7 of s, character 8 of s, character -1 of s, text 3 thru 6 of s}
--> 9, 🔗, 👩‍👩‍👧, x, ïve→

return {word 1 of "it's 3.14, (x-y) a@b.org", words of "it's 3.14, (x-y) a@b.org"}
--> it's, it's, 3.14, x, y, a, b.org

return {text from word 2 to word 3 of "the quick  brown fox", text from character 2 to word 2 of "ab cd"}
--> quick  brown, b cd

return paragraphs of ("a" & return & linefeed & "b" & linefeed & linefeed & "c")
--> a, b, , c

return {count of paragraphs of "", count of words of "", count of text items of "", length of ""}
--> 0, 0, 0, 0

return {characters 4 thru 2 of "abcde", text 2 thru end of "abc", text -2 thru -1 of "abc"}
--> b, c, d, bc, bc

return text (middle word of "x y z") thru 7 of "ab cd ef"
--> cd e

return text 1 thru (every word of "x") of "ab"
--> error -1728: Can’t get every word of "ab".

return text 1 thru 9 of "abc"
--> error -1728: Can’t get text 1 thru 9 of "abc".

return text 0 thru 1 of "abc"
--> error -1728: Can’t get text 0 thru 1 of "abc".

return {id of "é", id of "ab", character id 128279, string id {72, 105}, reverse of characters of "abc"}
--> 233, 97, 98, 🔗, Hi, c, b, a

return {first character of "abc", last word of "a b", middle character of "abc", 2nd word of "a b", every character of "ab"}
--> a, b, b, b, a, b

return some item of {5, 5}
--> 5

set character 1 of "abc" to "x"
--> error -10006: Can’t set character 1 of "abc" to "x".

return quoted form of ""
--> ''

return length of ("a" & return & linefeed)
--> 2

set out to ""
repeat with c in "añb"
	set out to out & c & "."
end repeat
return out
--> a.ñ.b.
