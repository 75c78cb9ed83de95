#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace mervo::desk {

/// The database of messages, `Library/Messages/chat.db` in the user's home: tables `handle` (who), `message` (what; its
/// date counts nanoseconds since 2001-01-01 UTC), `chat`, and the joins of chats with both. Other programs write it
/// too: their tables are used as they are, and columns that are missing are left out. Throws std::runtime_error, with
/// SQLite's words where it is a sqlite::Error; waits up to 10 s for another program's lock.
class ChatStore {
public:
    explicit ChatStore(std::filesystem::path file);

    /// Everyone whom a message came from or went to. Empty when there is no database.
    std::vector<std::string> handles() const;

    /// Records a message that was sent. Creates the database and its tables if needed.
    void addSent(const std::string& handle, const std::string& text, std::int64_t unixSeconds) const;

private:
    std::filesystem::path file_;
};

/// The database in the user's home.
std::filesystem::path chatFile();

} // namespace mervo::desk
