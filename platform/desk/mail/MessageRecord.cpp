#include "platform/desk/mail/MessageRecord.h"

#include <array>
#include <cstring>
#include <type_traits>

namespace mervo::desk {
namespace {

constexpr std::size_t kAlignment = 8;

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

std::size_t padded(std::size_t length) noexcept
{
    return (length + kAlignment - 1) / kAlignment * kAlignment;
}

} // namespace

MalformedRecords::MalformedRecords()
    : std::runtime_error("The mail index is damaged.")
{
}

std::int64_t MessageRecord::receivedSeconds() const noexcept
{
    return received() / 1'000'000'000 - (received() % 1'000'000'000 < 0 ? 1 : 0);
}

MessageHeader MessageRecord::header() const noexcept
{
    MessageHeader header;
    header.id = id();
    header.received = received();
    header.sent = sent();
    header.size = size();
    header.attachments = attachments();
    header.flags = fixed().flags;
    header.isNew = isNew();
    header.fileName = fileName();
    header.subject = subject();
    header.sender = sender();
    header.messageId = messageId();
    header.to = to();
    return header;
}

void appendRecord(std::string& chunk, const MessageHeader& header)
{
    using Fixed = MessageRecord::FixedPart;
    static_assert(sizeof(Fixed) == 56 && alignof(Fixed) == kAlignment && std::is_trivially_copyable_v<Fixed>);
    const std::array<std::string_view, MessageRecord::kTexts> texts = {
        header.fileName, header.subject, header.sender, header.messageId, header.to};
    Fixed fixed{};
    fixed.received = header.received;
    fixed.sent = header.sent;
    fixed.size = header.size;
    fixed.id = header.id;
    fixed.attachments = header.attachments;
    fixed.flags = header.flags;
    fixed.isNew = header.isNew ? 1 : 0;
    std::uint32_t end = 0;
    for (std::size_t i = 0; i < texts.size(); ++i)
        fixed.ends[i] = end += static_cast<std::uint32_t>(texts[i].size());
    chunk.append(reinterpret_cast<const char*>(&fixed), sizeof fixed);
    for (const std::string_view text : texts)
        chunk.append(text);
    chunk.resize(padded(chunk.size()));
}

std::size_t recordLength(const MessageHeader& header) noexcept
{
    return padded(sizeof(MessageRecord::FixedPart) + header.fileName.size() + header.subject.size()
        + header.sender.size() + header.messageId.size() + header.to.size());
}

void readRecords(std::string_view chunk, std::vector<MessageRecord>& records)
{
    using Fixed = MessageRecord::FixedPart;
    while (!chunk.empty()) {
        if (chunk.size() < sizeof(Fixed))
            throw MalformedRecords();
        const auto* fixed = reinterpret_cast<const Fixed*>(chunk.data());
        std::uint32_t start = 0;
        for (const std::uint32_t end : fixed->ends) {
            if (end < start)
                throw MalformedRecords();
            start = end;
        }
        const std::size_t length = padded(sizeof(Fixed) + start);
        if (length > chunk.size())
            throw MalformedRecords();
        records.push_back(MessageRecord(fixed));
        chunk.remove_prefix(length);
    }
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
