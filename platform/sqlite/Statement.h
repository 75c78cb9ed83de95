#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3_stmt;

namespace mervo::sqlite {

class Connection;

/// A prepared statement: bind in order, then step. Lives no longer than its connection. Every function throws Error.
class Statement {
public:
    Statement(const Connection& connection, std::string_view sql);
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    Statement& operator=(Statement&&) = delete;
    Statement(Statement&& other) noexcept;
    ~Statement();

    Statement& bind(std::string_view text);
    Statement& bind(const char* text) { return bind(std::string_view(text)); }
    Statement& bind(const std::string& text) { return bind(std::string_view(text)); }
    Statement& bind(std::int64_t number);
    Statement& bind(int number) { return bind(std::int64_t{number}); }
    Statement& bind(double number);
    Statement& bind(const std::optional<std::string>& text); ///< NULL when absent
    Statement& bindBytes(std::string_view bytes); ///< not copied: they must outlive the statement

    /// True while there is a row.
    bool step();
    /// Runs a statement that gives no rows.
    void run();

    /// Columns by number, from 0.
    std::optional<std::string> optionalText(int column) const; ///< nothing for NULL
    std::int64_t integer(int column) const; ///< 0 for NULL
    std::string_view bytes(int column) const; ///< until the next step

    /// Columns by name, ignoring case as SQL does; a column that is not there reads as NULL.
    std::string text(std::string_view column) const;
    std::optional<std::string> optionalText(std::string_view column) const;
    std::int64_t integer(std::string_view column) const;

private:
    int index(std::string_view column) const;

    const Connection* connection_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
    mutable std::vector<std::string> names_; ///< of the columns, known from the first one asked for by name
    mutable std::size_t expected_ = 0; ///< where the next column asked for most likely stands
};

} // namespace mervo::sqlite
