#pragma once

#include "core/doctor/Doctor.h"

/// The single checks behind `examine`. They may throw; the reason then becomes their finding.
namespace mervo::Doctor {

Check home();
Check settings();
Check database();
Check queue();
Check acts();
Check scriptHost();
Check guides();
Check tools();
Check archive();
Check agents();

} // namespace mervo::Doctor
