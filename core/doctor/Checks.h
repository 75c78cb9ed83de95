#pragma once

#include "core/doctor/Doctor.h"

/// The single checks behind `examine`, which names them: id and label are left empty. One that throws is a finding with
/// the reason.
namespace mervo::Doctor {

Finding home();
Finding settings();
Finding database();
Finding queue();
Finding acts();
Finding scriptHost();
Finding guides();
Finding archive();
Finding asking();
Finding automations();
Finding shell();
Finding agents();

} // namespace mervo::Doctor
