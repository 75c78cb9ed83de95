return {items 2 thru -2 of {1, 2, 3, 4}, rest of {1}, every number of {1, "a", 2.5}, item 2 of every text of {1, "a", "b"}}
--> 2, 3, 1, 2.5, b

return item "a" of {1}
--> error -1728: Can’t get item "a" of {1}.

return every item of {1, 2} whose class is integer
--> error -1728: Can’t get every item of {1, 2}.

return name of {1}
--> error -1728: Can’t get name of {1}.

set {a, {b, c}} to {1, {2, 3}}
return a + b + c
--> 6

set {a, b} to {1}
--> error -1728: Can’t get item 2 of {1}.

set r to {a:{1, 2}}
set end of a of r to 3
set item 1 of r's a to 0
return r
--> a:0, 2, 3

set r to {a:1}
set b of r to 2
--> error -10006: Can’t set b of {a:1} to 2.

set r to {|odd name|:1, length:7}
return {|odd name| of r, length of r, r's class}
--> 1, 7, record

set x to 1
set r to a reference to x
set contents of r to 5
return {x, r + 1}
--> 5, 6

repeat with v in {"a"}
	return {v is "a", (v as text) is "a", v & "" is "a", length of v, class of v, v contains "A", v is in {"a"}}
end repeat
--> false, true, true, 1, text, true, true

repeat with v in {"a"}
	return v
end repeat
--> a

set L to {1, 2}
repeat with v in L
	set end of L to 0
end repeat
return count of L
--> 4

set a to {1, {2}}
copy a to b
set item 1 of item 2 of b to 9
return a
--> 1, 2

return count of {a:1, b:2}
--> 2

return number of items of {4, 5}
--> 2

set x to {}
tell x to set end to 5
return x
--> 5

tell {1, 2} to return {item 1, count of it, length}
--> 1, 2, 2
