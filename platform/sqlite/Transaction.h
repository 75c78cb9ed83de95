#pragma once

namespace mervo::sqlite {

class Connection;

/// All or nothing: rolled back unless committed.
class Transaction {
public:
    enum class Lock {
        deferred, ///< taken by the first statement: what is read then belongs together
        immediate, ///< a writer's, from the beginning
    };
    Transaction(Connection& connection, Lock lock);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Connection& connection_;
    bool isOpen_ = true;
};

} // namespace mervo::sqlite
