#pragma once

#include "core/policy/Tool.h"

#include <string>
#include <string_view>
#include <vector>

/// The eleven criteria by which eight mail tools select messages, and the form in which their scripts receive them.
namespace mervo::MailCriteria {

/// The sentence that names the criteria in every summary and in the refusal of a call without any.
inline constexpr char kSentence[] =
    "from / to / before=YYYY-MM-DD / after / olderThan=Ndays / minSize=MB / maxSize=MB / subject / subjectContains"
    " / status=unread|read / hasAttachment";

/// At least one criterion must have a value, whatever the value, so that no bulk operation runs on a whole mailbox.
/// Throws ToolError.
void requireFilter(const Args& args);

/// Megabytes as bytes in whole digits ("1.5" gives "1572864"). What is no decimal number, or does not fit 64 bits as
/// bytes, stays as it is: the script then refuses it.
std::string bytesOfMegabytes(const std::string& megabytes);

/// The positional items 1 to 13 of every criteria script: account, mailbox and the criteria; absent ones are empty.
std::vector<std::string> argv(
    const Args& args, std::string_view accountFallback = {}, std::string_view mailboxFallback = {});

/// Criteria that are overridden by another one.
std::vector<Remark> remarks(const Args& args);

/// The criteria as a tool's arguments, between its own first and last ones.
std::vector<Argument> arguments(std::vector<Argument> first, std::vector<Argument> last = {});

} // namespace mervo::MailCriteria
