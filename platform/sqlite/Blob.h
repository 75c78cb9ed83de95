#pragma once

#include <cstddef>
#include <cstdint>

struct sqlite3_blob;

namespace mervo::sqlite {

class Connection;

/// One stored value of bytes, read straight to its place: a column's value would be put together in memory first.
class Blob {
public:
    Blob(const Connection& connection, const char* table, const char* column, std::int64_t row);
    ~Blob();
    Blob(const Blob&) = delete;
    Blob& operator=(const Blob&) = delete;

    std::size_t size() const;
    void read(char* place) const; ///< all of it

private:
    const Connection& connection_;
    sqlite3_blob* blob_ = nullptr;
};

} // namespace mervo::sqlite
