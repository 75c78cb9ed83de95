#include "platform/desk/addressbook/ContactCache.h"

#include "platform/desk/settings/Places.h"
#include "platform/files.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <stdexcept>

namespace mervo::desk {
namespace {

constexpr std::string_view kHead = "mervo-contacts 1\n";
constexpr std::size_t kLongest = 256 * 1024 * 1024;
constexpr std::size_t kMostItems = 1'000'000;

void put(std::string& to, std::uint64_t number)
{
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    to.append(bytes, sizeof bytes);
}

void put(std::string& to, std::string_view text)
{
    put(to, text.size());
    to += text;
}

/// Takes apart what `put` wrote. Throws std::out_of_range at an end that comes too early.
class Taker {
public:
    explicit Taker(std::string_view bytes)
        : left_(bytes)
    {
    }
    bool isDone() const { return left_.empty(); }
    std::uint64_t number()
    {
        std::uint64_t value = 0;
        std::memcpy(&value, piece(sizeof value).data(), sizeof value);
        return value;
    }
    std::string_view text() { return piece(number()); }
    std::size_t count()
    {
        const std::uint64_t value = number();
        if (value > kMostItems)
            throw std::out_of_range("count");
        return value;
    }

private:
    std::string_view piece(std::uint64_t length)
    {
        if (length > left_.size())
            throw std::out_of_range("text");
        const std::string_view taken = left_.substr(0, length);
        left_.remove_prefix(length);
        return taken;
    }
    std::string_view left_;
};

std::string encoded(const ReadCards& cards)
{
    std::string bytes;
    put(bytes, cards.why);
    put(bytes, cards.contacts.size());
    for (const Contact& contact : cards.contacts) {
        put(bytes, contact.uid);
        put(bytes, contact.name);
        for (const std::string& field : contact.fields)
            put(bytes, field);
        for (const auto& values : contact.values) {
            put(bytes, values.size());
            for (const ContactValue& value : values) {
                put(bytes, value.label);
                put(bytes, value.value);
            }
        }
        put(bytes, contact.birthday);
        put(bytes, std::uint64_t{contact.isCompany} | std::uint64_t{contact.isGroup} << 1U);
        put(bytes, contact.members.size());
        for (const std::string& member : contact.members)
            put(bytes, member);
    }
    return bytes;
}

Contact takeContact(Taker& from)
{
    Contact contact;
    contact.uid = from.text();
    contact.name = from.text();
    for (std::string& field : contact.fields)
        field = from.text();
    for (auto& values : contact.values) {
        values.resize(from.count());
        for (ContactValue& value : values) {
            value.label = from.text();
            value.value = from.text();
        }
    }
    contact.birthday = from.text();
    const std::uint64_t kinds = from.number();
    contact.isCompany = (kinds & 1U) != 0;
    contact.isGroup = (kinds & 2U) != 0;
    contact.members.resize(from.count());
    for (std::string& member : contact.members)
        member = from.text();
    return contact;
}

std::string entry(std::string_view file, const ItemStamp& stamp, std::string_view cards)
{
    std::string bytes;
    put(bytes, file);
    put(bytes, stamp.inode);
    put(bytes, static_cast<std::uint64_t>(stamp.bytes));
    put(bytes, static_cast<std::uint64_t>(stamp.modified));
    put(bytes, cards);
    return bytes;
}

} // namespace

ContactCache::ContactCache(const std::filesystem::path& root)
    : file_(cacheFolder() / "contacts" / fmt::format("{:016x}", itemFingerprint(root.lexically_normal().string())))
{
    try {
        read();
    } catch (const std::exception&) {
        entries_.clear(); // a damaged one
    }
}

void ContactCache::read()
{
    bytes_ = platform::readFile(file_, kLongest).value_or("");
    if (!bytes_.starts_with(kHead))
        return;
    Taker sum(std::string_view(bytes_).substr(kHead.size()));
    const std::uint64_t expected = sum.number();
    const std::string_view body = std::string_view(bytes_).substr(kHead.size() + sizeof expected);
    if (itemFingerprint(body) != expected)
        return;
    Taker from(body);
    while (!from.isDone()) {
        const std::string_view file = from.text();
        ItemStamp stamp{.inode = from.number()};
        stamp.bytes = static_cast<std::int64_t>(from.number());
        stamp.modified = static_cast<std::int64_t>(from.number());
        entries_[file] = {stamp, from.text()};
    }
}

std::optional<ReadCards> ContactCache::find(const std::string& file, const ItemStamp& stamp) const
{
    const auto found = entries_.find(file);
    if (found == entries_.end() || found->second.stamp != stamp)
        return std::nullopt;
    try {
        Taker from(found->second.cards);
        ReadCards cards{.contacts = {}, .why = std::string(from.text()), .isRead = true};
        cards.contacts.reserve(from.count());
        for (std::size_t left = cards.contacts.capacity(); left > 0 && !from.isDone(); --left)
            cards.contacts.push_back(takeContact(from));
        found->second.isUsed = true;
        return cards;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void ContactCache::keep(const std::string& file, const ItemStamp& stamp, const ReadCards& cards)
{
    if (stamp.isSettled())
        fresh_ += entry(file, stamp, encoded(cards));
}

void ContactCache::write() noexcept
{
    try {
        const auto isUsed = [](const auto& known) { return known.second.isUsed; };
        if (fresh_.empty() && std::ranges::all_of(entries_, isUsed))
            return;
        std::string body;
        for (const auto& [file, known] : entries_) {
            if (known.isUsed)
                body += entry(file, known.stamp, known.cards);
        }
        body += fresh_;
        std::string bytes(kHead);
        put(bytes, itemFingerprint(body));
        bytes += body;
        if (!platform::createPrivateFolder(file_.parent_path()))
            platform::replaceFile(file_, bytes, platform::Keep::whileRunning);
    } catch (const std::exception&) {
        return; // without a cache the next call reads the cards
    }
}

} // namespace mervo::desk
