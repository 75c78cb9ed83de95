#pragma once

#include "core/automations/supervisor/Workload.h"

/// Tells the owner of a script that has failed, by the tool mail.notify.
namespace mervo::FailureMail {

/// Starts `mervo run mail.notify` with the end of the log and waits for it; what becomes of it is not looked at. The
/// call passes the gate like any other.
void send(const RunContext& run, int code);

} // namespace mervo::FailureMail
