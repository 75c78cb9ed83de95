#include "platform/desk/settings/Table.h"

#include "platform/desk/settings/TableSource.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

std::string oneLine(const Table::Source& source, const toml::node& node, std::string_view key)
{
    const auto value = node.value_exact<std::string>();
    if (!value)
        source.fail(node, fmt::format("\"{}\" must be a text in quotes.", key));
    if (value->empty())
        source.fail(node, fmt::format("\"{}\" is empty.", key));
    if (std::any_of(value->begin(), value->end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }))
        source.fail(node, fmt::format("\"{}\" holds a control character.", key));
    return *value;
}

} // namespace

bool Table::contains(std::string_view key) const
{
    return source_.values.contains(key);
}

void Table::refuseUnknownKeys(const std::set<std::string_view>& known, std::string_view where) const
{
    for (const auto& [key, value] : source_.values) {
        if (!known.contains(key.str())) {
            throw ConfigurationError(source_.file, static_cast<long>(key.source().begin.line),
                fmt::format("\"{}\" is not a known key {}.", key.str(), where));
        }
    }
}

std::string Table::text(std::string_view key) const
{
    const toml::node* node = source_.values.get(key);
    return node == nullptr ? std::string() : oneLine(source_, *node, key);
}

std::vector<std::string> Table::texts(std::string_view key) const
{
    std::vector<std::string> result;
    const toml::node* node = source_.values.get(key);
    if (node == nullptr)
        return result;
    if (!node->is_array())
        source_.fail(*node, fmt::format("\"{}\" must be a list of texts, such as [\"one\", \"two\"].", key));
    for (const toml::node& item : *node->as_array())
        result.push_back(oneLine(source_, item, key));
    return result;
}

bool Table::flag(std::string_view key, bool otherwise) const
{
    const toml::node* node = source_.values.get(key);
    if (node == nullptr)
        return otherwise;
    const auto value = node->value_exact<bool>();
    if (!value)
        source_.fail(*node, fmt::format("\"{}\" must be true or false.", key));
    return *value;
}

void Table::eachTable(
    std::string_view key, std::string_view header, const std::function<void(const Table&)>& read) const
{
    const toml::node* list = source_.values.get(key);
    if (list == nullptr)
        return;
    if (!list->is_array())
        source_.fail(*list, fmt::format("\"{0}\" must be a list; write each {0} under its own {1}.", key, header));
    for (const toml::node& item : *list->as_array()) {
        if (!item.is_table())
            source_.fail(item, fmt::format("\"{}\" must be a list of tables; write {}.", key, header));
        read(Table(Source{source_.file, *item.as_table()}));
    }
}

void Table::fail(std::string_view sentence) const
{
    source_.fail(source_.values, sentence);
}

void Table::fail(std::string_view key, std::string_view sentence) const
{
    source_.fail(*source_.values.get(key), sentence);
}

} // namespace mervo::desk
