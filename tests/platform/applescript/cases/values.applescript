return {-7 mod 3, 7 mod -3, -7.5 div 2, 7 div 0.5, "7" div 2}
--> -1, 1, -3, 14, 3

return {5 / 2 * 2, 2 ^ -1, - 3, +4, - -5}
--> 5.0, 0.5, -3, 4, 5

return 5 div 0
--> error -2701: Can’t divide 5 by zero.

return 5 / 0
--> error -2701: Can’t divide 5.0 by zero.

return {0.0001, 0.00012, 0.0011, 123456789.123, 9999.99999999999, -0.5, 100.0}
--> 1.0E-4, 1.2E-4, 0.0011, 1.23456789123E+8, 1.0E+4, -0.5, 100.0

return {2.5 as integer, 3.5 as integer, -2.6 as integer, "3.7" as integer, " 12 " as number, "1.0" as integer}
--> 2, 4, -3, 4, 12, 1

return "" as integer
--> error -1700: Can’t make "" into type integer.

return "0x10" as number
--> error -1700: Can’t make "0x10" into type number.

return "inf" as real
--> error -1700: Can’t make "inf" into type real.

return missing value as real
--> error -1700: Can’t make missing value into type real.

return {missing value as list, true as list, "TRUE" as boolean, {{7}} as integer}
--> missing value, true, true, 7

return 2 as boolean
--> error -1700: Can’t make 2 into type boolean.

return {a:1} as text
--> error -1700: Can’t make {a:1} into type text.

return {1, {2, "x"}} as text
--> 12x

return {March as text, March as integer, text as text, yes as text}
--> March, 3, text, yes

return {3 > 2, "10" < "9", 10 < "9", "a" comes before "B", "ab" > "a", "_" < "0"}
--> true, true, false, true, true, true

return true < false
--> error -1700: Can’t make true into type number.

return {{} contains {}, {1} contains {}, {{1}} contains 1, {{1}} contains {{1}}, {1, 2} starts with 1, {1, 2} ends with {1, 2}}
--> true, true, false, true, true, true

return {{a:1, b:2} contains {b:2}, {a:1} contains {a:2}, 5 contains 5}
--> true, false, true

return {1} & {a:2}
--> 1, a:2

return {a:1} & {a:2, b:3}
--> a:1, b:3

return {count of (missing value & 1), (1 & 2 & 3) & 4, "" & 1 & {2, 3}}
--> 2, 1, 2, 3, 4, 123

return 1 & 2 & 3 = {1, 2, 3}
--> true

set L to {1}
set M to L & 2
set end of M to 3
return L
--> 1

return {not true and false, not (true and false), true or false and false}
--> false, true, true

return {1 is equal to 1, 1 is not equal to 2, 2 is not less than 2, 2 does not come before 1, "b" doesn't start with "a"}
--> true, true, true, true, true

return {3 isn't 4, 3 isn't in {4}, "a" isn't contained by "abc"}
--> true, true, false

return {class of pi, class of text, class of missing value, class of yes, class of me}
--> real, class, class, constant, script

return {class of 1 is integer, class of "" is string, class of {} is list}
--> true, true, true
