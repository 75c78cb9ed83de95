set n to 0
repeat with i from 1.0 to 2 by 0.5
	set n to n + i
end repeat
return {n, i}
--> 4.5, 2.0

repeat with i from 1 to 3
	set i to 10
end repeat
return i
--> 10

repeat with i from 1 to 2 by 0
end repeat
--> error -2700: A repeat can’t go on by 0.

if 1 = 2 then return 1
if 1 = 1 then return 2 else return 3
--> 2

if false then
	return 1
else if false then
	return 2
else
	return 3
end
--> 3

5
set x to result + 1
return {x, result}
--> 6, 6

on f()
end f
set x to f()
return x
--> error -2753: The variable x is not defined.

on f({a, {b}}, c)
	return a + b + c
end f
return f({1, {2}}, 3)
--> 6

on f(a, b)
end f
f("x")
--> error -1721: {"x"} doesn’t match the parameters {a, b} for f.

on f()
	global g
	set g to 3
end f
f()
return g
--> 3

property p : {1}
on f()
	set end of p to 2
	set my p to my p & 3
end f
f()
return p of me
--> 1, 2, 3

to greet of me
return 1
end greet
--> error -2741: Expected end of line but found “of”.

to greet()
	return 1
end
return greet() of me
--> 1

global a, b
set a to 1
on f()
	set a to a + 1
	set b to a
end f
f()
return {a, b}
--> 2, 2

on run
	local a
	set a to 4
	return a
end run
--> 4

on run {a, b}
	return a
end run
--> error -1728: Can’t get item 1 of {}.

try
	error "m" number 5 from {1} partial result {2} to integer
on error m number n from f partial result p to t
	return {m, n, f, p, t}
end try
--> m, 5, 1, 2, integer

try
	error number -128
on error number 5
	return 1
end try
--> error -128: User canceled.

try
	error number -128
on error number -128
	return 1
end try
--> 1

error
--> error -2700: An error has occurred.

use AppleScript version "2.4"
use scripting additions
return 1
--> 1

do shell script "ls"
--> error -1708: «script» doesn’t understand the “do shell script” message.

return {round 2.4 rounding up, round -2.5, round -2.7 rounding toward zero, round 2.9 rounding down, round 0.5 rounding as taught in school}
--> 3, -2, -2, 2, 1

set n to random number from 3 to 3
return {n, (random number) < 1}
--> 3, true

return {POSIX path of (path to home folder) ends with "/", name of POSIX file "/a/b c", exists POSIX file "/nonexistent"}
--> true, b c, false

return date "nonsense"
--> error -30720: Invalid date and time date "nonsense".

return {year of date "2024-02-29", time of date "2024-02-29 01:02:03", hours of date "Monday, July 1, 2024 at 12:30:00 PM"}
--> 2024, 3723, 12

set t to date "2024-03-31"
set month of t to February
return {short date string of t, date string of t, time string of t}
--> 3/2/24, Saturday, March 2, 2024, 12:00:00 AM

set a to date "2024-01-01"
set b to date "2024-01-02"
return {b - a, a < b, b ≥ a, a + 1 * days = b, a is in {a}}
--> 86400, true, true, true, true

return (date "2024-01-01") * 2
--> error -1700: Can’t make date "Monday, January 1, 2024 at 12:00:00 AM" into type number.
