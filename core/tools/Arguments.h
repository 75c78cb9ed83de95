#pragma once

#include "core/policy/Tool.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How tools read their arguments: the conventions that every summary relies on.
///
///  - Required: present with a value that is not empty; blanks count as a value.
///  - Optional with a default: an absent key takes the default, a present empty value stays empty.
///  - Boolean: the word "false" in any letter case is off, everything else is on.
namespace mervo::Arguments {

/// The value of a required key. Throws ToolError::missingArg with the key.
const std::string& required(const Args& args, std::string_view key);

std::string optional(const Args& args, std::string_view key, std::string_view fallback = {});

bool isPresent(const Args& args, std::string_view key); ///< with a value that is not empty
bool isOn(const Args& args, std::string_view key, bool fallback = true);

/// Throws ToolError::missingArg with the phrase unless one of the keys has a value.
void requireOneOf(const Args& args, std::initializer_list<std::string_view> keys, std::string_view phrase);

/// The whole text as a decimal number with an optional sign; nothing for anything else or beyond 64 bits.
std::optional<std::int64_t> wholeNumber(std::string_view text);

/// The comma-separated `attachments`, trimmed of blanks and tabs, one path a line; empty fields are dropped.
std::string attachments(const Args& args);

/// The remark of the two tools that reach only the owner, on a `to`; `where` is "address" or "handle".
std::function<std::vector<Remark>(const Args&)> ignoringRecipient(const std::string& tool, const std::string& where);

using Build = std::function<Invocation(const Args&)>;

/// A build that accepts everything and gives no script: for tools that run in this process.
Build acceptAll();

/// The same after a check of required keys, in this order.
Build requiring(std::vector<std::string_view> keys);

} // namespace mervo::Arguments
