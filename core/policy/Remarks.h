#pragma once

#include "core/policy/Tool.h"

#include <string>
#include <vector>

/// What a caller should know about a call besides its result: arguments without an effect or with an unlikely one, and
/// what the answer leaves out. Nothing here refuses a call or changes what runs. Throws only std::bad_alloc.
///
/// Sentences quote the caller's own texts shortened and made visible, each on one line.
namespace mervo::Remarks {

/// From the arguments alone: every key that the tool does not know, every value outside its argument's format, and what
/// the tool adds. At most one remark for each argument, except where the tool adds several.
std::vector<Remark> of(const Tool& tool, const Args& args);

/// From the output of a run before the tool's `transform`.
std::vector<std::string> after(const Tool& tool, const Args& args, const std::string& output);

/// The line of a script that failed, and behind it on the same line what the arguments should have looked like: a
/// script that makes a date or a number of a text says neither which argument the text came from nor what it wanted.
std::string explained(const std::string& error, const Tool& tool, const Args& args);

} // namespace mervo::Remarks
