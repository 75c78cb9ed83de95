#include "platform/desk/mail/HeaderChunk.h"

#include <array>
#include <cstring>
#include <type_traits>

namespace mervo::desk {
namespace {

struct FixedPart {
    std::int64_t received, sent;
    std::uint64_t size;
    std::uint32_t id;
    std::int32_t attachments;
    std::array<std::uint32_t, 5> lengths; // in the order of texts()
    std::uint8_t flags, isNew;
    std::uint16_t unused;
};
static_assert(sizeof(FixedPart) == 56 && std::is_trivially_copyable_v<FixedPart>);

std::array<std::string_view MessageHeader::*, 5> texts()
{
    return {&MessageHeader::fileName, &MessageHeader::subject, &MessageHeader::sender, &MessageHeader::messageId,
        &MessageHeader::to};
}

std::uint64_t word(const char* at) noexcept
{
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return value;
}

std::uint64_t mixed(std::uint64_t state, std::uint64_t value) noexcept
{
    state = (state ^ value) * 0x9E3779B97F4A7C15U;
    return state ^ state >> 29;
}

} // namespace

std::string encodeChunk(const std::vector<MessageHeader>& headers)
{
    std::string bytes;
    bytes.reserve(headers.size() * 256);
    for (const MessageHeader& header : headers) {
        FixedPart fixed{};
        fixed.received = header.received;
        fixed.sent = header.sent;
        fixed.size = header.size;
        fixed.id = header.id;
        fixed.attachments = header.attachments;
        fixed.flags = header.flags;
        fixed.isNew = header.isNew ? 1 : 0;
        for (std::size_t i = 0; i < fixed.lengths.size(); ++i)
            fixed.lengths[i] = static_cast<std::uint32_t>((header.*texts()[i]).size());
        bytes.append(reinterpret_cast<const char*>(&fixed), sizeof fixed);
        for (const auto text : texts())
            bytes.append(header.*text);
    }
    return bytes;
}

bool decodeChunk(std::string_view bytes, std::vector<MessageHeader>& headers)
{
    while (!bytes.empty()) {
        FixedPart fixed;
        if (bytes.size() < sizeof fixed)
            return false;
        std::memcpy(&fixed, bytes.data(), sizeof fixed);
        bytes.remove_prefix(sizeof fixed);
        MessageHeader& header = headers.emplace_back();
        header.received = fixed.received;
        header.sent = fixed.sent;
        header.size = fixed.size;
        header.id = fixed.id;
        header.attachments = fixed.attachments;
        header.flags = fixed.flags;
        header.isNew = fixed.isNew != 0;
        for (std::size_t i = 0; i < fixed.lengths.size(); ++i) {
            if (bytes.size() < fixed.lengths[i])
                return false;
            header.*texts()[i] = bytes.substr(0, fixed.lengths[i]);
            bytes.remove_prefix(fixed.lengths[i]);
        }
    }
    return true;
}

std::uint64_t fingerprint(std::string_view bytes) noexcept
{
    // Four lanes, so that one multiplication does not wait for the other.
    std::array<std::uint64_t, 4> lanes = {1, 2, 3, 4};
    const std::size_t length = bytes.size();
    for (; bytes.size() >= 32; bytes.remove_prefix(32)) {
        for (std::size_t i = 0; i < 4; ++i)
            lanes[i] = mixed(lanes[i], word(bytes.data() + i * 8));
    }
    std::uint64_t state = length;
    for (const std::uint64_t lane : lanes)
        state = mixed(state, lane);
    for (const char c : bytes)
        state = mixed(state, static_cast<unsigned char>(c));
    return state;
}

} // namespace mervo::desk
