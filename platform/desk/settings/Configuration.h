#pragma once

#include "platform/desk/settings/Table.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

/// desk.toml, the owner's configuration of the desk. Each kind of data has a section in it, described beside the code
/// that reads it (MailSettings.h, ChatSettings.h). A mistake anywhere in the file is an error for every reader, so that
/// a mistyped section never means the defaults in silence.
namespace mervo::desk {

/// A section: a key at the top of the file with a table below it.
struct Section {
    std::string_view name; ///< "mail"
    std::string_view form; ///< how to write it, for the complaint about another kind of value: "[messages]"
    void (*check)(const Table& table); ///< reads all of it; throws ConfigurationError
};

/// All sections that the file may have, checked in this order.
using Sections = std::span<const Section>;

class Configuration {
public:
    /// `file` is for the complaints. Throws ConfigurationError.
    static Configuration parse(std::string_view text, const std::filesystem::path& file, Sections sections);
    /// The file at its place; one that is not there is as good as an empty one. Throws ConfigurationError.
    static Configuration load(Sections sections);

    /// Where it was read from; empty when there is no file.
    const std::filesystem::path& file() const noexcept { return file_; }
    /// Nothing when the file does not have the section.
    std::optional<Table> section(const Section& section) const;

private:
    struct Document;

    std::filesystem::path file_;
    std::shared_ptr<const Document> document_;
};

} // namespace mervo::desk
