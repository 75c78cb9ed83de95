#pragma once

#include "platform/desk/settings/ConfigurationError.h"

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// A table of desk.toml. Every reader throws ConfigurationError for a value of the wrong kind. Valid as long as the
/// Configuration that it comes from.
class Table {
public:
    struct Source; // the table as the TOML parser left it

    explicit Table(const Source& source) noexcept
        : source_(source)
    {
    }

    bool contains(std::string_view key) const;
    /// `where` ends the sentence: "of a mail account".
    void refuseUnknownKeys(const std::set<std::string_view>& known, std::string_view where) const;

    /// A text of one line; empty when the key is not there.
    std::string text(std::string_view key) const;
    /// A list of such texts; empty when the key is not there.
    std::vector<std::string> texts(std::string_view key) const;
    /// true or false; `otherwise` when the key is not there.
    bool flag(std::string_view key, bool otherwise) const;
    /// Reads the tables written as [[SECTION.KEY]], one after the other; none when the key is not there. `header` is
    /// that spelling, for complaints.
    void eachTable(std::string_view key, std::string_view header, const std::function<void(const Table&)>& read) const;

    /// Throws a complaint about this table.
    [[noreturn]] void fail(std::string_view sentence) const;
    /// Throws a complaint about the value of a key, which must be there.
    [[noreturn]] void fail(std::string_view key, std::string_view sentence) const;

private:
    const Source& source_;
};

} // namespace mervo::desk
