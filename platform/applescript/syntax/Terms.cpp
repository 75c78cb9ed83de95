#include "platform/applescript/syntax/Terms.h"

#include "platform/unicode.h"

#include <algorithm>

namespace mervo::applescript {

namespace {

struct PropertyName {
    const char* name;
    LanguageProperty property;
};
constexpr PropertyName kProperties[] = {{"class", LanguageProperty::className},
    {"contents", LanguageProperty::contents}, {"date string", LanguageProperty::dateString},
    {"day", LanguageProperty::day}, {"frontmost", LanguageProperty::frontmost}, {"hours", LanguageProperty::hours},
    {"id", LanguageProperty::id}, {"length", LanguageProperty::length}, {"minutes", LanguageProperty::minutes},
    {"month", LanguageProperty::month}, {"name", LanguageProperty::name}, {"POSIX path", LanguageProperty::posixPath},
    {"properties", LanguageProperty::properties}, {"quoted form", LanguageProperty::quotedForm},
    {"rest", LanguageProperty::rest}, {"reverse", LanguageProperty::reverse}, {"running", LanguageProperty::running},
    {"seconds", LanguageProperty::seconds}, {"short date string", LanguageProperty::shortDateString},
    {"text item delimiters", LanguageProperty::textItemDelimiters}, {"time", LanguageProperty::time},
    {"time string", LanguageProperty::timeString}, {"version", LanguageProperty::version},
    {"weekday", LanguageProperty::weekday}, {"year", LanguageProperty::year}};

struct ClassName {
    const char* singular;
    const char* plural;
    LanguageClass which;
};
constexpr ClassName kClasses[] = {{"alias", "aliases", LanguageClass::alias}, {"anything", "", LanguageClass::anything},
    {"application", "applications", LanguageClass::application}, {"boolean", "booleans", LanguageClass::boolean},
    {"character", "characters", LanguageClass::character}, {"class", "classes", LanguageClass::classTerm},
    {"constant", "constants", LanguageClass::constant}, {"date", "dates", LanguageClass::date},
    {"file", "files", LanguageClass::file}, {"integer", "integers", LanguageClass::integer},
    {"item", "items", LanguageClass::item}, {"list", "lists", LanguageClass::list},
    {"number", "numbers", LanguageClass::number}, {"paragraph", "paragraphs", LanguageClass::paragraph},
    {"POSIX file", "", LanguageClass::posixFile}, {"real", "reals", LanguageClass::real},
    {"record", "records", LanguageClass::record}, {"reference", "references", LanguageClass::reference},
    {"script", "scripts", LanguageClass::script}, {"text", "texts", LanguageClass::text},
    {"text item", "text items", LanguageClass::textItem}, {"word", "words", LanguageClass::word}};

struct CommandName {
    const char* name;
    LanguageCommand command;
};
constexpr CommandName kCommands[] = {{"activate", LanguageCommand::activate}, {"close", LanguageCommand::close},
    {"count", LanguageCommand::count}, {"current date", LanguageCommand::currentDate},
    {"delay", LanguageCommand::delay}, {"delete", LanguageCommand::remove},
    {"do shell script", LanguageCommand::doShellScript}, {"duplicate", LanguageCommand::duplicate},
    {"exists", LanguageCommand::exists}, {"get", LanguageCommand::get}, {"launch", LanguageCommand::launch},
    {"log", LanguageCommand::log}, {"make", LanguageCommand::make}, {"move", LanguageCommand::move},
    {"offset", LanguageCommand::offset}, {"path to", LanguageCommand::pathTo}, {"quit", LanguageCommand::quit},
    {"random number", LanguageCommand::randomNumber}, {"reopen", LanguageCommand::reopen},
    {"round", LanguageCommand::round}, {"run", LanguageCommand::run}};

std::vector<std::string> wordsOf(std::string_view text)
{
    std::vector<std::string> words;
    std::string folded = platform::foldCase(text);
    std::size_t start = 0;
    while (start < folded.size()) {
        const std::size_t end = std::min(folded.find(' ', start), folded.size());
        if (end > start)
            words.push_back(folded.substr(start, end - start));
        start = end + 1;
    }
    return words;
}

bool spells(std::span<const Token> tokens, std::span<const std::string> words) noexcept
{
    if (tokens.size() < words.size())
        return false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!tokens[i].isWord(words[i]))
            return false;
    }
    return true;
}

} // namespace

TermTable::TermTable(const Dictionary& dictionary)
{
    for (const ClassTerm& term : dictionary.classes()) {
        // Where singular and plural are one word it counts as the singular; `every` says the other.
        addClass(term.plural, Number::plural, term);
        for (const std::string& synonym : term.pluralSynonyms)
            addClass(synonym, Number::plural, term);
        addClass(term.name, Number::singular, term);
        for (const std::string& synonym : term.synonyms)
            addClass(synonym, Number::singular, term);
        for (const PropertyTerm& property : term.properties) {
            add(property.name).propertyId = property.id;
            for (const std::string& synonym : property.synonyms)
                add(synonym).propertyId = property.id;
        }
    }
    for (const CommandTerm& command : dictionary.commands())
        add(command.name).commandTerm = &command;
    for (const std::string& word : dictionary.enumerators())
        add(word).constant = Value::constant(Symbol(word));
}

void TermTable::addLanguage()
{
    for (const PropertyName& entry : kProperties)
        add(entry.name).property = entry.property;
    for (const ClassName& entry : kClasses) {
        addClass(entry.singular, entry.singular, Number::singular, entry.which);
        addClass(entry.plural, entry.singular, Number::plural, entry.which);
    }
    addClass("string", "text", Number::singular, LanguageClass::text);
    addClass("Unicode text", "text", Number::singular, LanguageClass::text);
    addClass("strings", "text", Number::plural, LanguageClass::text);
    for (const CommandName& entry : kCommands)
        add(entry.name).command = entry.command;
    const auto addConstants = [&](const auto& words) {
        for (const char* word : words)
            add(word).constant = Value::constant(Symbol(word));
    };
    addConstants(kMonthNames);
    addConstants(kWeekdayNames);
    addConstants(std::initializer_list<const char*>{"yes", "no", "ask"});
    add("pi").constant = Value::real(3.14159265358979323846);
    add("space").constant = Value::text(" ");
    add("tab").constant = Value::text("\t");
    add("linefeed").constant = Value::text("\n");
    add("quote").constant = Value::text("\"");
    add("missing value").constant = Value::missing();
    add("minutes").constant = Value::integer(60);
    add("hours").constant = Value::integer(3600);
    add("days").constant = Value::integer(86400);
    add("weeks").constant = Value::integer(604800);
}

const TermTable& TermTable::language()
{
    static thread_local const TermTable table = [] {
        TermTable all;
        all.addLanguage();
        return all;
    }();
    return table;
}

Meaning& TermTable::add(std::string_view text)
{
    std::vector<std::string> words = wordsOf(text);
    if (words.empty())
        return nameless_;
    std::vector<Term>& terms = terms_[words.front()];
    for (Term& term : terms) {
        if (term.words == words)
            return term.meaning;
    }
    const auto shorter =
        std::find_if(terms.begin(), terms.end(), [&](const Term& term) { return term.words.size() < words.size(); });
    Meaning meaning;
    meaning.words = Symbol(text);
    return terms.insert(shorter, Term{std::move(words), std::move(meaning)})->meaning;
}

void TermTable::addClass(std::string_view words, std::string_view className, Number number, LanguageClass which)
{
    Meaning& meaning = add(words);
    meaning.className = Symbol(className);
    meaning.isPlural = number == Number::plural;
    meaning.languageClass = which;
}

void TermTable::addClass(std::string_view words, Number number, const ClassTerm& term)
{
    Meaning& meaning = add(words);
    meaning.className = Symbol(term.name);
    meaning.isPlural = number == Number::plural;
    meaning.classTerm = &term;
}

TermTable::Found TermTable::longest(std::span<const Token> tokens) const
{
    if (tokens.empty() || tokens.front().kind != TokenKind::word)
        return {};
    const auto terms = terms_.find(tokens.front().text);
    if (terms == terms_.end())
        return {};
    for (const Term& term : terms->second) {
        if (spells(tokens, term.words))
            return {&term.meaning, term.words.size()};
    }
    return {};
}

TermTable::Found TermTable::exactly(std::span<const Token> tokens, std::size_t words) const
{
    if (words == 0 || tokens.size() < words)
        return {};
    const auto terms = terms_.find(tokens.front().text);
    if (terms == terms_.end())
        return {};
    for (const Term& term : terms->second) {
        if (term.words.size() == words && spells(tokens, term.words))
            return {&term.meaning, words};
    }
    return {};
}

} // namespace mervo::applescript
