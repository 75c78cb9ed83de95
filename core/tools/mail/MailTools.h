#pragma once

#include "core/policy/Tool.h"

#include <span>

/// The mail family: reading, composing, bulk.
namespace mervo::Tools {

const Tool& mailAccounts();
const Tool& mailHeaders();
const Tool& mailAudit();
const Tool& mailSearch();
const Tool& mailBody();
const Tool& mailOpen();
const Tool& mailMessageId();

const Tool& mailDraft();
const Tool& mailSend();
const Tool& mailNotify();
const Tool& mailReply();
const Tool& mailReplyAll();
const Tool& mailForward();

const Tool& mailDelete();
const Tool& mailMove();
const Tool& mailArchive();
const Tool& mailFlag();
const Tool& mailJunk();

} // namespace mervo::Tools

namespace mervo::MailReadTools {
std::span<const Tool* const> all();
}

namespace mervo::MailComposeTools {
std::span<const Tool* const> all();
}

namespace mervo::MailBulkTools {
std::span<const Tool* const> all();
}
