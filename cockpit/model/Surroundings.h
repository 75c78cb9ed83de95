#pragma once

#include "cockpit/model/archive/ArchiveAccounts.h"
#include "cockpit/model/automations/AutomationOperations.h"
#include "cockpit/model/operations/Clock.h"
#include "platform/desktop/LoginItem.h"
#include "platform/desktop/Notifier.h"
#include "platform/desktop/Workspace.h"

namespace mervo {

/// Everything that the model needs from outside. All of it outlives the model.
struct Surroundings {
    platform::Notifier& notifier;
    platform::Workspace& workspace;
    platform::LoginItem& loginItem;
    AutomationOperations& automations;
    ArchiveAccounts& archive;
    Clock clock = {};
};

} // namespace mervo
