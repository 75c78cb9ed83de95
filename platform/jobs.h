#pragma once

/// The jobs that run at their times while nobody waits for them.
namespace mervo::platform {

/// Lets jobs that are loaded run again, should whatever starts them be gone. Waits until it is there, some
/// milliseconds; a failure goes to the log.
void resumeJobs() noexcept;

} // namespace mervo::platform
