#include "platform/sqlite/Transaction.h"

#include "platform/sqlite/Connection.h"
#include "platform/sqlite/Error.h"

namespace mervo::sqlite {

Transaction::Transaction(Connection& connection, Lock lock)
    : connection_(connection)
{
    connection_.execute(lock == Lock::immediate ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction()
{
    if (!isOpen_ || !connection_.isInTransaction()) // some failures have rolled back already
        return;
    try {
        connection_.execute("ROLLBACK");
    } catch (const Error&) {
        return; // SQLite rolls back when the file is next opened
    }
}

void Transaction::commit()
{
    connection_.execute("COMMIT");
    isOpen_ = false;
}

} // namespace mervo::sqlite
