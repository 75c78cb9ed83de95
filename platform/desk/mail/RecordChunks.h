#pragma once

#include "platform/desk/mail/MessageRecord.h"
#include "platform/desk/mail/RecordMemory.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// One chunk of the index in memory, with its records found in it.
class RecordChunk {
public:
    /// The bytes lie in the memory, which lives as long as one of its chunks. Throws MalformedRecords.
    RecordChunk(std::shared_ptr<const RecordMemory> memory, std::string_view bytes);

    const std::vector<MessageRecord>& records() const noexcept { return records_; }

private:
    std::shared_ptr<const RecordMemory> memory_;
    std::vector<MessageRecord> records_;
};

/// The chunks of one mailbox by number. Several states of the mailbox share those that are the same in both.
using RecordChunks = std::map<std::int64_t, std::shared_ptr<const RecordChunk>>;

} // namespace mervo::desk
