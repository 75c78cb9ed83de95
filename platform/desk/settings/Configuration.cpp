#include "platform/desk/settings/Configuration.h"

#include "platform/desk/settings/Places.h"
#include "platform/desk/settings/TableSource.h"

#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <sys/stat.h>

namespace mervo::desk {

struct Configuration::Document {
    std::filesystem::path file;
    toml::table values;
    std::map<std::string_view, Table::Source> sections; // those that are there, in `values`
};

Configuration Configuration::parse(std::string_view text, const std::filesystem::path& file, Sections sections)
{
    const auto document = std::make_shared<Document>();
    document->file = file;
    try {
        document->values = toml::parse(text, file.string());
    } catch (const toml::parse_error& error) {
        throw ConfigurationError(
            file, static_cast<long>(error.source().begin.line), fmt::format("{}.", error.description()));
    }
    const Table::Source whole{document->file, document->values};
    std::set<std::string_view> names;
    for (const Section& section : sections)
        names.insert(section.name);
    Table(whole).refuseUnknownKeys(names, "of the desk");
    for (const Section& section : sections) {
        const toml::node* node = document->values.get(section.name);
        if (node == nullptr)
            continue;
        if (!node->is_table())
            whole.fail(*node, fmt::format("\"{}\" must be a table; write {}.", section.name, section.form));
        const auto [place, isNew] =
            document->sections.emplace(section.name, Table::Source{document->file, *node->as_table()});
        section.check(Table(place->second));
    }
    Configuration result;
    result.file_ = file;
    result.document_ = document;
    return result;
}

Configuration Configuration::load(Sections sections)
{
    const std::filesystem::path file = configurationFile();
    struct stat status { };
    if (stat(file.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            Configuration result = parse("", file, sections);
            result.file_.clear();
            return result;
        }
        throw ConfigurationError(file, 0, fmt::format("the file cannot be read ({}).", std::strerror(errno)));
    }
    if (!S_ISREG(status.st_mode))
        throw ConfigurationError(file, 0, "this is not a file.");
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad())
        throw ConfigurationError(file, 0, fmt::format("the file cannot be read ({}).", std::strerror(errno)));
    return parse(text, file, sections);
}

std::optional<Table> Configuration::section(const Section& section) const
{
    const auto found = document_->sections.find(section.name);
    return found == document_->sections.end() ? std::nullopt : std::optional(Table(found->second));
}

} // namespace mervo::desk
