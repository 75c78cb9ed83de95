#pragma once

#include "platform/desk/mail/MessageRecord.h"
#include "platform/desk/mail/RecordMemory.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// A chunk of the index in memory, and the records in it.
class RecordChunk {
public:
    /// `bytes` are part of `memory`, which lives as long as any of its chunks. Throws MalformedRecords.
    RecordChunk(std::shared_ptr<const RecordMemory> memory, std::string_view bytes);

    const std::vector<MessageRecord>& records() const noexcept { return records_; }

private:
    std::shared_ptr<const RecordMemory> memory_;
    std::vector<MessageRecord> records_;
};

/// The chunks of one mailbox by number. Successive states share the chunks that did not change.
using RecordChunks = std::map<std::int64_t, std::shared_ptr<const RecordChunk>>;

} // namespace mervo::desk
