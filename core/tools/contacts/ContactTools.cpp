#include "core/tools/contacts/ContactTools.h"

#include "core/tools/Arguments.h"

#include <array>

namespace mervo::Tools {

namespace {

/// The names are looked through first, and addresses asked for those alone that are left.
constexpr auto kFind = R"AS(on run argv
	set nameText to item 1 of argv
	set emailText to item 2 of argv
	set lim to (item 3 of argv) as integer
	set out to {}
	tell application "Contacts"
		if nameText is "" then
			set candidates to (get every person)
		else
			set candidates to (get every person whose name contains nameText)
		end if
		repeat with p in candidates
			set mails to value of every email of p
			set isHit to emailText is ""
			repeat with m in mails
				if m contains emailText then set isHit to true
			end repeat
			if isHit then
				set org to organization of p
				if org is missing value then set org to ""
				set mailText to ""
				repeat with m in mails
					set mailText to mailText & m & " "
				end repeat
				set phoneText to ""
				repeat with n in (get value of every phone of p)
					set phoneText to phoneText & n & " "
				end repeat
				set end of out to (name of p) & " || " & org & " || " & mailText & " || " & phoneText
				if lim > 0 and (count of out) is lim then exit repeat
			end if
		end repeat
	end tell
	set AppleScript's text item delimiters to linefeed
	return out as text
end run
)AS";

constexpr auto kAdd = R"AS(on run argv
	set firstName to item 1 of argv
	set lastName to item 2 of argv
	set wholeName to item 3 of argv
	set theEmail to item 4 of argv
	set thePhone to item 5 of argv
	set theOrg to item 6 of argv
	if firstName is "" and lastName is "" then set firstName to wholeName
	tell application "Contacts"
		set p to make new person
		if firstName is not "" then set first name of p to firstName
		if lastName is not "" then set last name of p to lastName
		if theOrg is not "" then set organization of p to theOrg
		if theEmail is not "" then make new email at end of emails of p with properties {label:"work", value:theEmail}
		if thePhone is not "" then make new phone at end of phones of p with properties {label:"mobile", value:thePhone}
		save
		return "OK contact created: " & (name of p)
	end tell
end run
)AS";

Invocation buildFind(const Args& args)
{
    Arguments::requireOneOf(args, {"query", "email"}, "query or email");
    return {kFind,
        {Arguments::optional(args, "query"), Arguments::optional(args, "email"),
            Arguments::optional(args, "limit", "20")}};
}

Invocation buildAdd(const Args& args)
{
    Arguments::requireOneOf(args, {"first", "last", "name"}, "first, last, or name");
    std::vector<std::string> items;
    for (const char* key : {"first", "last", "name", "email", "phone", "org"})
        items.push_back(Arguments::optional(args, key));
    return {kAdd, std::move(items)};
}

std::vector<Remark> remarksOnAdd(const Args& args)
{
    const bool split = Arguments::isPresent(args, "first") || Arguments::isPresent(args, "last");
    if (!split || !Arguments::isPresent(args, "name"))
        return {};
    return {Remark::withoutEffect("name", "name has no effect beside first or last")};
}

} // namespace

const Tool& contactFind()
{
    static const Tool tool{
        .id = "contact.find",
        .summary = "Find people by [query] (name substring) and/or [email] (email substring); ≥1 required. "
                   "email-only scans the whole address book (slower). [limit=20]. Read-only. One line per hit: name "
                   "|| org || emails || phones. Use to resolve a sender to a known contact.",
        .effect = Effect::read,
        .arguments = {optional("query", "text that the name contains", Formats::needle),
            optional("email", "text that an address contains", Formats::needle),
            optional("limit", "at most so many (20)", Formats::scriptLimit(20))},
        .build = buildFind,
    };
    return tool;
}

const Tool& contactAdd()
{
    static const Tool tool{
        .id = "contact.add",
        .summary = "Create a contact (one of first/last/name required; [email], [phone], [org]). `name` is stored "
                   "AS-IS in the first-name field (no auto-split) - for a full name pass first= and last= "
                   "separately.",
        .effect = Effect::create,
        .arguments = {optional("first", "first name"), optional("last", "last name"),
            optional("name", "whole name, kept as first name when first and last are empty"),
            optional("email", "address"), optional("phone", "phone number"), optional("org", "organisation")},
        .build = buildAdd,
        .remarks = remarksOnAdd,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::ContactTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::contactFind(), &Tools::contactAdd()};
    return tools;
}

} // namespace mervo::ContactTools
