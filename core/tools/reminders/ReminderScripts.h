#pragma once

#include <string>

/// The scripts of the reminder tools: constant texts. A list is meant by its name, and all lists of that name are; one
/// that no list has is an error.
namespace mervo::ReminderScripts {

const std::string& add(); ///< name, list or "", due YYYY-MM-DD or "", notes or ""
const std::string& addList(); ///< name
const std::string& renameList(); ///< present name, new name
const std::string& complete(); ///< list or "", part of the name, "1" or "0"
const std::string& remove(); ///< list or "", part of the name

} // namespace mervo::ReminderScripts
