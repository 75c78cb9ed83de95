#pragma once

#include "core/policy/Tool.h"
#include "frontends/cli/Command.h"

#include <string>

namespace mervo::cli {

/// A tool and what it is called with.
struct Call {
    const Tool* tool = nullptr;
    Args args;
};

/// The tool with this id. Throws UsageError, which names the nearest ones, when there is none.
const Tool& findTool(const std::string& id);

/// Reads the words of `run` and `explain`: a tool's id, then key=value words.
///
/// A word is split at its first "=", and the value is taken as it stands. body-file=<path> becomes `body` with the text
/// of the file, "-" being standard input. A key that the tool does not know is passed on. Throws UsageError for an
/// unknown tool, a word without "=", a key given twice and for bytes that are not UTF-8; ServiceError when the file
/// cannot be read.
Call readCall(const Arguments& arguments, Io& io);

/// On whose behalf this process acts, for the audit trail: "auto:<name>" inside a run of an automation, as RONDEL_RUN
/// or the process that supervises it tells, else "cli".
std::string actor();

} // namespace mervo::cli
