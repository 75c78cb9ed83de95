#include "platform/sqlite/Blob.h"

#include "platform/sqlite/Connection.h"

#include <sqlite3.h>

namespace mervo::sqlite {

Blob::Blob(const Connection& connection, const char* table, const char* column, std::int64_t row)
    : connection_(connection)
{
    connection.check(sqlite3_blob_open(connection.handle_, "main", table, column, row, 0, &blob_));
}

Blob::~Blob()
{
    sqlite3_blob_close(blob_);
}

std::size_t Blob::size() const
{
    return static_cast<std::size_t>(sqlite3_blob_bytes(blob_));
}

void Blob::read(char* place) const
{
    connection_.check(sqlite3_blob_read(blob_, place, sqlite3_blob_bytes(blob_), 0));
}

} // namespace mervo::sqlite
