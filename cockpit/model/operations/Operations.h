#pragma once

#include "cockpit/model/operations/CockpitStores.h"
#include "cockpit/model/operations/StatusMessage.h"
#include "cockpit/model/operations/Work.h"

#include <functional>
#include <string>

namespace mervo {

/// What all parts of the model share to carry out a person's operations: the stores, the threads, and the message that
/// says how the last operation ended. Main thread, except where a member says otherwise.
class Operations {
public:
    CockpitStores stores;
    Work work;
    StatusMessage lastResult;

    /// Runs the work on the thread of writes. If a store fails in it, `lastResult` says so: "answering - <why>".
    void write(const std::string& task, std::function<void(CockpitStores::Open&)> work);

    /// Ends all work: waits for what has begun, and for all writes. Every object that started work must still live.
    void finish();
};

} // namespace mervo
