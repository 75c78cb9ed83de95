#pragma once

#include "platform/applescript/syntax/Token.h"
#include "platform/applescript/values/Dictionary.h"
#include "platform/applescript/values/Value.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mervo::applescript {

/// Properties that values of the language have by themselves.
enum class LanguageProperty {
    none,
    className,
    contents,
    date,
    dateString,
    day,
    frontmost,
    hours,
    id,
    length,
    minutes,
    month,
    name,
    posixPath,
    properties,
    quotedForm,
    rest,
    reverse,
    running,
    seconds,
    shortDateString,
    textItemDelimiters,
    time,
    timeString,
    version,
    weekday,
    year,
};

enum class LanguageClass {
    none,
    alias,
    anything,
    application,
    boolean,
    character,
    classTerm,
    constant,
    date,
    file,
    integer,
    item,
    list,
    number,
    paragraph,
    posixFile,
    real,
    record,
    reference,
    script,
    text,
    textItem,
    word,
};

enum class LanguageCommand {
    none,
    activate,
    close,
    count,
    currentDate,
    delay,
    remove, // delete
    doShellScript,
    duplicate,
    exists,
    get,
    launch,
    log,
    make,
    move,
    offset,
    pathTo,
    quit,
    randomNumber,
    reopen,
    round,
    run,
};

/// What one term can mean; several at once where a word is both a class and a property.
struct Meaning {
    Symbol words; // the term itself
    Symbol className; // a class: its singular
    bool isPlural = false;
    LanguageProperty property = LanguageProperty::none;
    LanguageClass languageClass = LanguageClass::none;
    LanguageCommand command = LanguageCommand::none;
    Value constant;
    // In a dictionary's table:
    TermId propertyId = kNoTerm;
    const ClassTerm* classTerm = nullptr;
    const CommandTerm* commandTerm = nullptr;

    bool isProperty() const noexcept { return property != LanguageProperty::none || propertyId != kNoTerm; }
    bool isClass() const noexcept { return languageClass != LanguageClass::none || classTerm; }
    bool isCommand() const noexcept { return command != LanguageCommand::none || commandTerm; }
    bool isConstant() const noexcept { return !constant.is(Kind::none); }
};

/// Terms by their words; the longest that the tokens spell is found.
class TermTable {
public:
    TermTable() = default;
    explicit TermTable(const Dictionary& dictionary);
    /// The language's own terms.
    static const TermTable& language();

    struct Found {
        const Meaning* meaning = nullptr;
        std::size_t words = 0;
    };
    Found longest(std::span<const Token> tokens) const;
    /// The term of exactly so many words.
    Found exactly(std::span<const Token> tokens, std::size_t words) const;

private:
    struct Term {
        std::vector<std::string> words;
        Meaning meaning;
    };
    enum class Number { singular, plural };
    Meaning& add(std::string_view words);
    void addClass(std::string_view words, std::string_view className, Number number, LanguageClass which);
    void addClass(std::string_view words, Number number, const ClassTerm& term);
    void addLanguage();

    Meaning nameless_; // what has no words
    std::unordered_map<std::string, std::vector<Term>> terms_; // by first word, longest first
};

} // namespace mervo::applescript
