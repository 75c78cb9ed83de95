#pragma once

#include <string>

/// The scripts of the mail tools: constant texts, put together from shared fragments on first use. Arguments reach
/// them as positional items only, so that no quote, backslash or line end in a subject can do harm.
///
/// Dates come out as "2026-03-01 08:15", local time, made by a handler and not by the system's locale: such lines
/// sort. A mailbox can hold a hundred thousand messages: properties are read as whole lists, one request for each;
/// recipients and attachments cost a request for each message and are looked at last.
namespace mervo::MailScripts {

const std::string& accounts();
const std::string& accountServers(); ///< a line each: name, first address and server, parted by tabs
const std::string& headers(); ///< account, mailbox, limit

// With the criteria's thirteen items; there is one filter, so that what a count previews is what an operation does.
const std::string& audit(); ///< and limit
const std::string& search(); ///< and limit
const std::string& messageId();
const std::string& count(); ///< gives "<matches>|<kilobytes>"
const std::string& remove();
const std::string& move(); ///< and destination
const std::string& flag(); ///< and "1" or "0", the index of a colour or ""
const std::string& junk(); ///< and "1" or "0"

// With account, mailbox, subject, subjectContains, from: one message.
const std::string& body();
/// The newest one whose subject holds "re:" before subjectContains, and whose sender's address is `from`; no draft.
/// Gives an empty text when there is none.
const std::string& ownReply();
const std::string& open();
const std::string& reply(); ///< and body, "1" for a reply to all
const std::string& forward(); ///< and to, body

const std::string& draft(); ///< to, subject, body, attachments one a line, from
const std::string& send(); ///< the same
const std::string& notify(); ///< subject, to, body, from, attachments

} // namespace mervo::MailScripts
