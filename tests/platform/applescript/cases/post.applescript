-- an element by name, of an element by name
get name of box "inbox" of account "HOME"
--> INBOX

-- by id, ordinal, from the end, named
{name of account id "A2", name of 1st account, name of last account, name of account -2, name of account named "work"}
--> Work, Home, Work, Home, Work

-- a synonym of the class
name of every service
--> Home, Work

-- a bulk property nests
get name of every box of every account
--> INBOX, Old, INBOX

-- an object shows as a reference
letter 1 of box 1 of account 1
--> letter id 7 of box INBOX of account id A1

-- missing where an element has none
letter note of letters of box 1 of account 1
--> missing value, kept, missing value

-- a range
subject of letters 2 thru 3 of box 1 of account 1
--> Lunch, Re: weekly report

-- a property that is an object
name of first box
--> INBOX

-- a term of many words before a shorter one
get letter size of letter 1 of first box
--> 2000

-- the language's terms on values
text 1 thru 6 of (get subject of letter 1 of first box)
--> Weekly

-- a filter
subject of (every letter of first box whose read status is true)
--> Lunch, Re: weekly report

-- a filter on two things, text rules
id of (letters of first box whose sender contains "ANN" and letter size > 1600)
--> 7

-- whose after a chain filters its head
subject of every letter of box "INBOX" of account "Home" whose id is 8
--> Lunch

-- a filter sees outer values
set least to 1000
get count of (every letter of first box whose letter size > least)
--> 2

-- a filter goes into elements
id of (every letter of first box whose (count of to recipients) > 1)
--> 8

-- a filter with it
id of (every letter of first box whose (subject of it) starts with "re")
--> 9

-- an empty filter
get every letter of first box whose id is 99
-->

-- a singular filter
subject of first letter of first box whose read status is true
--> Lunch

-- the last of a filter
subject of last letter of first box whose read status is true
--> Re: weekly report

-- a filter across containers
count of (every box of every account whose name is "INBOX")
--> 2

-- exists never fails
{exists account "Home", exists account "Nope", exists box "X" of account "Nope", (exists letter 9 of first box), exists (letters of first box whose id is 8)}
--> true, false, false, false, true

-- count does not list
count letters of box 1 of account 1
--> 3

-- number of
number of accounts
--> 2

-- tell an object
tell box 1 of account 1
	get {name, count of letters}
end tell
--> INBOX, 3

-- its and it
tell account 2 to get its name & (name of it)
--> WorkWork

-- a snapshot outlives a deletion
set msgs to every letter of first box
delete item 1 of msgs
get subject of item 2 of msgs
--> Lunch

-- loops see through
set out to ""
repeat with a in accounts
	set out to out & name of a & " "
end repeat
out & "."
--> Home Work .

-- loops over a fetched list
set out to {}
repeat with b in (every box of account 1)
	set end of out to name of b
end repeat
out
--> INBOX, Old

-- objects are equal by identity
{account 1 = account "Home", account 1 = account 2, account 1 is in (get accounts)}
--> true, false, true

-- class of an object
{class of account 1, class of account 1 is account}
--> account, true

-- properties
name of (get properties of account 1)
--> Home

-- contents of an object is the object
name of contents of account 2
--> Work

-- a reference is looked up anew
set r to a reference to subject of letter 1 of first box
set subject of letter 1 of first box to "new"
contents of r
--> new

-- application properties
{name, running, version}
--> Post, true, 1.0

-- enumerators
{iLetter, postcard is iLetter}
--> iLetter, false

-- the length of all
length of (every letter of first box)
--> 3

-- no such name
get account "Nope"
--> error -1728: Post got an error: Can’t get account "Nope".

-- a chain as written
get box "X" of account "Home"
--> error -1728: Post got an error: Can’t get box "X" of account "Home".

-- an index beyond
get letter 9 of first box
--> error -1719: Post got an error: Can’t get letter 9 of box "INBOX" of account id "A1". Invalid index.

-- a singular filter without match
first account whose name is "Nope"
--> error -1719: Post got an error: Can’t get account 1 whose name = "Nope". Invalid index.

-- a stale reference
set m to letter 1 of first box
delete m
get subject of m
--> error -1728: Post got an error: Can’t get subject of letter id 7 of box "INBOX" of account id "A1".

-- read only
set sender of letter 1 of first box to "x"
--> error -10006: Post got an error: Can’t set sender of letter 1 of box "INBOX" of account id "A1" to "x".

-- refused by the model
set broken part to 1
--> error -1723: Post got an error: Can’t get broken part. Access not allowed.

-- a model that fails in its own way
get broken part
--> error -10000: Post got an error: AppleEvent handler failed.

-- a handler is not the application's
h()
--> error -1708: Post got an error: Can’t continue h.

-- a command without meaning
duplicate letter 1 of first box
--> error -1708: Post got an error: Can’t continue duplicate.

-- a wrong value
set read status of letter 1 of first box to "maybe"
--> error -1700: Post got an error: Can’t make "maybe" into type boolean.

-- a property that the class has not
get address of account 1
--> error -1728: Post got an error: Can’t get address of account 1.
