#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace mervo::desk {

/// The database of messages, `Library/Messages/chat.db` in the user's home: tables `handle` (who), `message` (what; its
/// date counts nanoseconds since 2001-01-01 UTC), `chat`, and the joins of chats with both. Other programs fill it too:
/// what they have made is used as it is, columns that it lacks are left out. Throws std::runtime_error, with SQLite's
/// words where it is a sqlite::Error; waits up to 10 s for another program's lock.
class ChatStore {
public:
    explicit ChatStore(std::filesystem::path file);

    /// Everyone whom a message came from or went to. Nothing when there is no database.
    std::vector<std::string> handles() const;

    /// Keeps a message that was sent. The database and its tables are made when there are none.
    void addSent(const std::string& handle, const std::string& text, std::int64_t unixSeconds) const;

private:
    std::filesystem::path file_;
};

/// The one of the user's home.
std::filesystem::path chatFile();

} // namespace mervo::desk
