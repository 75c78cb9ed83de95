#pragma once

#include "platform/applescript/values/Value.h"

#include <cstdint>
#include <exception>
#include <string>

namespace mervo::applescript {

/// The numbers that scripts see.
namespace ErrorNumber {
inline constexpr int userCanceled = -128;
inline constexpr int fileNotFound = -43;
inline constexpr int outOfMemory = -108;
inline constexpr int notRunning = -600;
inline constexpr int cannotCoerce = -1700;
inline constexpr int notUnderstood = -1708;
inline constexpr int timedOut = -1712;
inline constexpr int invalidIndex = -1719;
inline constexpr int wrongParameters = -1721;
inline constexpr int accessNotAllowed = -1723;
inline constexpr int noSuchObject = -1728;
inline constexpr int notAuthorized = -1743;
inline constexpr int general = -2700;
inline constexpr int divideByZero = -2701;
inline constexpr int stackOverflow = -2706;
inline constexpr int cannotGoAfter = -2740;
inline constexpr int syntax = -2741;
inline constexpr int undefinedVariable = -2753;
inline constexpr int exitOutsideLoop = -2755;
inline constexpr int handlerFailed = -10000;
inline constexpr int cannotSet = -10006;
inline constexpr int invalidDate = -30720;
} // namespace ErrorNumber

/// A piece of the source: byte offsets, the end not included.
struct Place {
    std::uint32_t start = 0;
    std::uint32_t end = 0;
};

/// What a running script fails with, and what the objects of applications throw.
///
/// An object model may leave the message empty: the interpreter then writes the standard words for the number and
/// for what was being done ("Can’t get subject of message id 7 of mailbox \"INBOX\"." for -1728, "Can’t set ... to
/// ...." for -10006, "... Access not allowed." for -1723). Either way it puts "Mail got an error: " in front.
class ScriptError : public std::exception {
public:
    explicit ScriptError(int number, std::string message = {}, Value offender = {});

    const char* what() const noexcept override { return message.c_str(); }

    int number;
    std::string message;
    Value offender; // `from`
    Value partialResult; // `partial result`
    Value expectedClass; // `to`
    bool isPlaced = false;
    Place place;
    bool isFromApplication = false; // the message names the application already

    /// One whose place is known already.
    static ScriptError at(Place place, int number, std::string message);
    /// "Can’t make V into type C."
    static ScriptError cannotCoerce(const Value& value, std::string_view className);
    /// "Can’t get REFERENCE."
    static ScriptError noSuchObject(const std::string& specifier, Value offender = {});
    /// "Can’t get REFERENCE. Invalid index."
    static ScriptError invalidIndex(const std::string& specifier, Value offender = {});
    /// "Can’t set REFERENCE to V."
    static ScriptError cannotSet(const std::string& specifier, const Value& value);
    /// "V doesn’t understand the “MESSAGE” message."
    static ScriptError notUnderstood(const Value& receiver, const std::string& message);
    static ScriptError stackOverflow();
    static ScriptError outOfMemory();
};

} // namespace mervo::applescript
