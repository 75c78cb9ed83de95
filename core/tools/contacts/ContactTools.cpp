#include "core/tools/contacts/ContactTools.h"

#include "core/tools/Arguments.h"
#include "core/tools/MissingBridge.h"

#include <array>

namespace mervo::Tools {

namespace {

Invocation buildFind(const Args& args)
{
    Arguments::requireOneOf(args, {"query", "email"}, "query or email");
    return {};
}

Invocation buildAdd(const Args& args)
{
    Arguments::requireOneOf(args, {"first", "last", "name"}, "first, last, or name");
    return {};
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
    static const Tool tool = withoutBridge("Contacts",
        {
            .id = "contact.find",
            .summary =
                "Find people by [query] (name substring) and/or [email] (email substring); ≥1 required. "
                "email-only scans the whole address book (slower). [limit=20]. Read-only. One line per hit: name "
                "|| org || emails || phones. Use to resolve a sender to a known contact.",
            .effect = Effect::read,
            .arguments = {optional("query", "text that the name contains", Formats::needle),
                optional("email", "text that an address contains", Formats::needle),
                optional("limit", "at most so many (20)", Formats::scriptLimit(20))},
            .build = buildFind,
        });
    return tool;
}

const Tool& contactAdd()
{
    static const Tool tool = withoutBridge("Contacts",
        {
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
        });
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
