#include "core/tools/notes/NoteTools.h"

#include "core/foundation/Text.h"
#include "core/scripting/OSAScript.h"
#include "core/tools/Arguments.h"
#include "core/tools/notes/NoteScripts.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace mervo::Tools {

namespace {

/// The body is HTML; plain text keeps its lines.
std::string withBreaks(const std::string& text)
{
    return Text::join(Text::split(text, '\n'), "<br>");
}

Invocation buildList(const Args&)
{
    return {NoteScripts::list(), {}};
}

Invocation buildFind(const Args& args)
{
    return {NoteScripts::find(),
        {Arguments::optional(args, "name"), Arguments::optional(args, "body"),
            Arguments::optional(args, "limit", "30")}};
}

Invocation buildRead(const Args& args)
{
    return {NoteScripts::read(), {Arguments::required(args, "name")}};
}

Invocation buildAdd(const Args& args)
{
    const std::string& title = Arguments::required(args, "title");
    return {NoteScripts::add(), {title, withBreaks(Arguments::optional(args, "body"))}};
}

Invocation buildOpen(const Args& args)
{
    return {NoteScripts::open(), {Arguments::required(args, "name")}};
}

Invocation buildUpdate(const Args& args)
{
    Arguments::requireOneOf(args, {"append", "body"}, "append or body");
    const std::string& name = Arguments::required(args, "name");
    return {NoteScripts::update(),
        {name, withBreaks(Arguments::optional(args, "append")), withBreaks(Arguments::optional(args, "body"))}};
}

Invocation buildDelete(const Args& args)
{
    return {NoteScripts::remove(), {Arguments::required(args, "name")}};
}

std::optional<std::string> previewDelete(const Args& args)
{
    if (!Arguments::isPresent(args, "name"))
        return std::nullopt;
    const auto result = OSAScript::run(NoteScripts::matching(), {Arguments::optional(args, "name")});
    return result.ok ? std::optional(NoteTools::previewLine(result.output)) : std::nullopt;
}

} // namespace

const Tool& noteList()
{
    static const Tool tool{
        .id = "note.list",
        .summary = "List Notes folders with their note count. Read-only - discovery for note.find/add.",
        .effect = Effect::read,
        .arguments = {},
        .build = buildList,
    };
    return tool;
}

const Tool& noteFind()
{
    static const Tool tool{
        .id = "note.find",
        .summary = "List notes, optionally filtered by name and/or body substring ([name], [body], [limit=30]). "
                   "Case-insensitive. With no name/body it lists every note (bounded by limit) - the way to browse "
                   "all notes. Read-only. One line per hit: folder || name || modified.",
        .effect = Effect::read,
        .arguments = {optional("name", "text that the name contains", Formats::needle),
            optional("body", "text that the plain body contains", Formats::needle),
            optional("limit", "at most so many (30)", Formats::scriptLimit(30))},
        .build = buildFind,
    };
    return tool;
}

const Tool& noteRead()
{
    static const Tool tool{
        .id = "note.read",
        .summary = "Read the plain-text body of the SINGLE note whose name contains `name` (case-insensitive "
                   "substring; refuses on 0 or >1 match so a vague filter can't read the wrong note). Read-only. "
                   "Use note.find first to pin an exact title.",
        .effect = Effect::read,
        .arguments = {required("name", "text that the name of the note contains", Formats::needle)},
        .build = buildRead,
    };
    return tool;
}

const Tool& noteAdd()
{
    static const Tool tool{
        .id = "note.add",
        .summary = "Create a note (title, body). The title is auto-bolded. `body` is rendered as HTML: use <b>, "
                   "<i>, <br>, <ul><li>...</li></ul> for structure (NOT markdown, NOT plain-text \"- \" bullets - "
                   "those land as literal text). Plain-text newlines are converted to <br> as a fallback, so "
                   "multi-line plain text still keeps its line breaks. Escape literal <, >, & in non-HTML text "
                   "yourself.",
        .effect = Effect::create,
        .arguments = {required("title", "title, set in bold"),
            optional("body", "the text; HTML, line ends become <br>")},
        .build = buildAdd,
    };
    return tool;
}

const Tool& noteOpen()
{
    static const Tool tool{
        .id = "note.open",
        .summary = "Open Notes.app and show the first note whose name contains `name` (case-insensitive substring). "
                   "Read-only - only brings the app/note to the front. Use after note.add to surface a note for the "
                   "human.",
        .effect = Effect::read,
        .arguments = {required("name", "text that the name of the note contains", Formats::needle)},
        .build = buildOpen,
    };
    return tool;
}

const Tool& noteUpdate()
{
    static const Tool tool{
        .id = "note.update",
        .summary = "Update the SINGLE note whose name contains `name` (refuses on 0 or >1 match so a vague filter "
                   "can't hit the wrong note). Provide ≥1 of: [append] (HTML appended to the body - the safe "
                   "additive option), [body] (HTML that REPLACES the body, title kept). HTML rules as in note.add; "
                   "newlines → <br>.",
        .effect = Effect::create,
        .arguments = {required("name", "text that the name of the note contains", Formats::needle),
            optional("append", "added at the end; HTML, line ends become <br>"),
            optional("body", "takes the place of the body; HTML, line ends become <br>")},
        .build = buildUpdate,
    };
    return tool;
}

const Tool& noteDelete()
{
    static const Tool tool{
        .id = "note.delete",
        .summary = "Delete every note whose name contains `name` (case-insensitive substring). Moves to Notes → "
                   "Recently Deleted (recoverable ~30 days). The preview lists exactly which notes match - keep "
                   "`name` specific so it can't sweep more than intended. Approval.",
        .effect = Effect::destructive,
        .arguments = {required("name", "text that the name of the note contains", Formats::needle)},
        .build = buildDelete,
        .preview = previewDelete,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::NoteTools {

std::string previewLine(std::string_view names)
{
    constexpr std::size_t kMostShown = 5;
    const auto all = names.empty() ? std::vector<std::string>() : Text::split(names, '\n');
    std::string line = fmt::format("{} note(s)", all.size());
    const auto shown = static_cast<std::ptrdiff_t>(std::min(all.size(), kMostShown));
    if (shown > 0)
        line += ": " + Text::join(std::vector(all.begin(), all.begin() + shown), ", ");
    return all.size() > kMostShown ? line + "..." : line;
}

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::noteList(), &Tools::noteFind(), &Tools::noteRead(), &Tools::noteAdd(),
        &Tools::noteOpen(), &Tools::noteUpdate(), &Tools::noteDelete()};
    return tools;
}

} // namespace mervo::NoteTools
