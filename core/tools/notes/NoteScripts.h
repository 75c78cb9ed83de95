#pragma once

#include <string>

/// The scripts of the notes tools: constant texts, put together from shared fragments on first use. Arguments reach
/// them as positional items only.
///
/// They ask for the matching notes of a folder in one request (`whose`), so that no change in between can put another
/// note in the place of a match. Folders that are a trash, in any language known here, are passed over.
namespace mervo::NoteScripts {

const std::string& list();
const std::string& find(); ///< name, body, limit
const std::string& read(); ///< name
const std::string& add(); ///< title, body
const std::string& open(); ///< name
const std::string& update(); ///< name, append, body
const std::string& remove(); ///< name
const std::string& matching(); ///< name: the names of what `remove` would delete, one a line

} // namespace mervo::NoteScripts
