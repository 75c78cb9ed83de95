#include "platform/desk/mail/RecordChunks.h"

#include <utility>

namespace mervo::desk {

RecordChunk::RecordChunk(std::shared_ptr<const RecordMemory> memory, std::string_view bytes)
    : memory_(std::move(memory))
{
    records_.reserve(kMessagesInChunk);
    readRecords(bytes, records_);
}

} // namespace mervo::desk
