#include "platform/sqlite/Statement.h"

#include "platform/sqlite/Connection.h"

#include <algorithm>
#include <sqlite3.h>
#include <utility>

namespace mervo::sqlite {

Statement::Statement(const Connection& connection, std::string_view sql)
    : connection_(&connection)
{
    connection.check(
        sqlite3_prepare_v2(connection.handle_, sql.data(), static_cast<int>(sql.size()), &statement_, nullptr));
}

Statement::Statement(Statement&& other) noexcept
    : connection_(other.connection_)
    , statement_(std::exchange(other.statement_, nullptr))
    , bound_(other.bound_)
    , names_(std::move(other.names_))
    , expected_(other.expected_)
{
}

Statement::~Statement()
{
    sqlite3_finalize(statement_);
}

Statement& Statement::bind(std::string_view text)
{
    const char* bytes = text.empty() ? "" : text.data(); // a null pointer would bind NULL
    connection_->check(sqlite3_bind_text64(statement_, ++bound_, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bind(std::int64_t number)
{
    connection_->check(sqlite3_bind_int64(statement_, ++bound_, number));
    return *this;
}

Statement& Statement::bind(double number)
{
    connection_->check(sqlite3_bind_double(statement_, ++bound_, number));
    return *this;
}

Statement& Statement::bind(const std::optional<std::string>& text)
{
    if (text)
        return bind(std::string_view(*text));
    connection_->check(sqlite3_bind_null(statement_, ++bound_));
    return *this;
}

Statement& Statement::bindBytes(std::string_view bytes)
{
    connection_->check(sqlite3_bind_blob64(statement_, ++bound_, bytes.data(), bytes.size(), SQLITE_STATIC));
    return *this;
}

bool Statement::step()
{
    const int code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        connection_->fail(code);
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (step()) { }
}

std::optional<std::string> Statement::optionalText(int column) const
{
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (bytes == nullptr)
        return std::nullopt;
    return std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(statement_, column);
}

std::string_view Statement::bytes(int column) const
{
    const void* data = sqlite3_column_blob(statement_, column);
    const int size = sqlite3_column_bytes(statement_, column);
    if (data == nullptr && size > 0)
        connection_->fail(SQLITE_NOMEM);
    return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
}

std::string Statement::text(std::string_view column) const
{
    return optionalText(column).value_or(std::string());
}

std::optional<std::string> Statement::optionalText(std::string_view column) const
{
    const int at = index(column);
    return at < 0 ? std::nullopt : optionalText(at);
}

std::int64_t Statement::integer(std::string_view column) const
{
    const int at = index(column);
    return at < 0 ? 0 : integer(at);
}

/// Readers mostly ask for columns in the order of the table and by their exact names, so the search starts behind the
/// last hit, and the comparison that ignores case comes second.
int Statement::index(std::string_view column) const
{
    if (names_.empty()) {
        for (int at = 0; at < sqlite3_column_count(statement_); ++at)
            names_.emplace_back(sqlite3_column_name(statement_, at));
    }
    if (expected_ < names_.size() && names_[expected_] == column)
        return static_cast<int>(expected_++);
    const auto found = std::find_if(names_.begin(), names_.end(), [&](const std::string& name) {
        return name.size() == column.size()
            && sqlite3_strnicmp(name.data(), column.data(), static_cast<int>(column.size())) == 0;
    });
    if (found == names_.end())
        return -1;
    expected_ = static_cast<std::size_t>(found - names_.begin()) + 1;
    return static_cast<int>(found - names_.begin());
}

} // namespace mervo::sqlite
