#include "platform/propertylist/PropertyList.h"

#include <cstdlib>
#include <memory>
#include <plist/plist.h>

namespace mervo::platform {

namespace {

constexpr std::size_t kLongest = 1024 * 1024;
constexpr int kDeepest = 100;

/// What libplist hands out belongs to its caller.
using Node = std::unique_ptr<void, decltype(&plist_free)>;
using Characters = std::unique_ptr<char, decltype(&std::free)>;

std::optional<PropertyList> valueOf(plist_t node, int depth);

std::string textOf(plist_t node)
{
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const Characters owned(text, &std::free);
    return text == nullptr ? std::string() : std::string(text);
}

std::optional<PropertyList> arrayOf(plist_t node, int depth)
{
    std::optional<PropertyList> list(std::in_place);
    auto& array = list->value.emplace<PropertyList::Array>();
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        auto item = valueOf(plist_array_get_item(node, i), depth);
        if (!item)
            return std::nullopt;
        array.push_back(*std::move(item));
    }
    return list;
}

std::optional<PropertyList> dictionaryOf(plist_t node, int depth)
{
    std::optional<PropertyList> list(std::in_place);
    auto& dictionary = list->value.emplace<PropertyList::Dictionary>();
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const std::unique_ptr<void, decltype(&std::free)> owned(position, &std::free);
    for (;;) {
        char* name = nullptr;
        plist_t member = nullptr;
        plist_dict_next_item(node, position, &name, &member);
        const Characters key(name, &std::free);
        if (member == nullptr)
            return list;
        auto value = valueOf(member, depth);
        if (!value || name == nullptr)
            return std::nullopt;
        dictionary.insert_or_assign(name, *std::move(value));
    }
}

std::optional<PropertyList> valueOf(plist_t node, int depth)
{
    if (depth > kDeepest)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return PropertyList{flag != 0};
    }
    case PLIST_UINT: {
        std::uint64_t number = 0; // negative ones as their complement
        plist_get_uint_val(node, &number);
        return PropertyList{static_cast<std::int64_t>(number)};
    }
    case PLIST_STRING:
        return PropertyList{textOf(node)};
    case PLIST_ARRAY:
        return arrayOf(node, depth + 1);
    case PLIST_DICT:
        return dictionaryOf(node, depth + 1);
    default:
        return PropertyList{PropertyList::Other{}};
    }
}

plist_t nodeOf(const PropertyList& list);

struct NodeMaker {
    plist_t operator()(const PropertyList::Other&) const { return plist_new_string(""); }
    plist_t operator()(bool flag) const { return plist_new_bool(flag ? 1 : 0); }
    plist_t operator()(std::int64_t number) const { return plist_new_uint(static_cast<std::uint64_t>(number)); }
    plist_t operator()(const std::string& text) const { return plist_new_string(text.c_str()); }
    plist_t operator()(const PropertyList::Array& items) const
    {
        const plist_t array = plist_new_array();
        for (const PropertyList& item : items)
            plist_array_append_item(array, nodeOf(item));
        return array;
    }
    plist_t operator()(const PropertyList::Dictionary& members) const
    {
        const plist_t dictionary = plist_new_dict();
        for (const auto& [key, member] : members)
            plist_dict_set_item(dictionary, key.c_str(), nodeOf(member));
        return dictionary;
    }
};

plist_t nodeOf(const PropertyList& list)
{
    return std::visit(NodeMaker{}, list.value);
}

} // namespace

const PropertyList* PropertyList::find(const std::string& key) const
{
    const auto* members = as<Dictionary>();
    const auto found = members == nullptr ? Dictionary::const_iterator() : members->find(key);
    return members == nullptr || found == members->end() ? nullptr : &found->second;
}

bool PropertyList::operator==(const PropertyList&) const = default;

std::optional<PropertyList> readPropertyList(std::string_view bytes)
{
    if (bytes.size() > kLongest)
        return std::nullopt;
    plist_t read = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &read);
    const Node node(read, &plist_free);
    return read == nullptr ? std::nullopt : valueOf(read, 0);
}

std::string propertyListXml(const PropertyList& list)
{
    const Node node(nodeOf(list), &plist_free);
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node.get(), &text, &length);
    const std::unique_ptr<char, decltype(&plist_to_xml_free)> owned(text, &plist_to_xml_free);
    return text == nullptr ? std::string() : std::string(text, length);
}

} // namespace mervo::platform
