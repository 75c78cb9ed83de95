#pragma once

#include "platform/sqlite/Error.h"

#include <string>

/// A failure of a database in words for people, one line each, without a full stop.
namespace mervo::DatabaseFailure {

/// What is wrong with which file.
std::string fault(const sqlite::Error& error);
std::string remedy(const sqlite::Error& error);
/// Both.
std::string sentence(const sqlite::Error& error);

} // namespace mervo::DatabaseFailure
