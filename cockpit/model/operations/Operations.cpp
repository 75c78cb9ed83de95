#include "cockpit/model/operations/Operations.h"

#include <utility>

namespace mervo {

void Operations::write(const std::string& task, std::function<void(CockpitStores::Open&)> job)
{
    stores.write(std::move(job), [this, task](const std::string& why) {
        Work::come(
            lastResult, [this, text = task + " - " + why] { lastResult.show(StatusMessage::Kind::Failed, text); });
    });
}

void Operations::finish()
{
    work.finish();
    stores.finish();
}

} // namespace mervo
