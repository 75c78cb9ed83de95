#pragma once

#include "platform/desk/settings/Table.h"

#include <filesystem>

#define TOML_HEADER_ONLY 1
#include <toml++/toml.h>

namespace mervo::desk {

struct Table::Source {
    const std::filesystem::path& file;
    const toml::table& values;

    [[noreturn]] void fail(const toml::node& at, std::string_view sentence) const
    {
        throw ConfigurationError(file, static_cast<long>(at.source().begin.line), sentence);
    }
};

} // namespace mervo::desk
