set x to
--> error -2741: Expected expression but found end of script.

set x to
return x
--> error -2741: Expected expression but found end of line.

if true then
set x to 1
--> error -2741: Expected “end” but found end of script.

repeat 2 times
end if
--> error -2741: Expected “repeat” but found “if”.

on f()
end g
--> error -2741: Expected “f” but found identifier.

if true then
on f()
end f
end if
--> error -2741: Expected “end” but found “on”.

set x to 5 6
--> error -2740: A number can’t go after this number.

display dialog "hi"
--> error -2740: A identifier can’t go after this identifier.

return a b
--> error -2740: A identifier can’t go after this identifier.

return 1 = 2 = 3
--> error -2741: Expected end of line but found “=”.

set 5 to x
--> error -2741: Expected a variable or a reference but found number.

return (1
--> error -2741: Expected “)” but found end of script.

return {1, 2
--> error -2741: Expected “}” but found end of script.

return {1, a:2}
--> error -2741: Expected “,” or “}” but found “:”.

return {a:1, 2}
--> error -2741: Expected the name of a property and “:” but found number.

return 1 as planet
--> error -2741: Expected class name but found identifier.

return "a\q"
--> error -2741: Expected “\n”, “\r”, “\t”, “\"” or “\\” but found “\q”.

exit repeat
--> error -2755: “exit repeat” stands outside of any “repeat”.

considering colour
end considering
--> error -2741: Expected case, diacriticals, white space, hyphens, punctuation, numeric strings or application responses but found identifier.

set x to 1
on run
end run
--> error -2741: Expected one run handler: “on run” and statements outside of it exclude each other, but found “on”.

return ¬ 5
--> error -2741: Expected expression but found “¬”.

make new thing
--> error -2741: Expected a command of the language or a “tell application” around it but found identifier.

path to desktop
--> error -2741: Expected “home folder” but found identifier.

set x to «event aevtoapp»
--> error -2741: Expected expression but found “«event aevtoapp»”.

error to e = error to c
--> error -2741: Expected expression but found “error”.

error "a" to a to b
--> error -2741: A part of “error” stands here twice.

try
on error number a number b
end try
--> error -2741: A part of “on error” stands here twice.

using terms from application id x
end using terms from
--> error -2741: Expected “application” and its name but found identifier.

using terms from application x
end using terms from
--> error -2741: Expected “application” and its name but found identifier.

return @
--> error -2741: Expected expression but found “@”.

script foo
end script
--> error -2741: Script objects are not known to this host.

transaction
end transaction
--> error -2741: Transactions are not known to this host.
