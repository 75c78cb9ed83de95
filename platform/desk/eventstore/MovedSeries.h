#pragma once

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/recurrence/DateValue.h"

namespace mervo::desk {

/// A repeating event or task whose start has been moved: what names its dates moves as far on the clock, and is written
/// as the start is. These are EXDATE and RDATE, the UNTIL of a rule, and the RECURRENCE-ID of changed occurrences; one
/// that stands at its own date moves along, one that was moved itself stays where it is. A rule that names the days (by
/// BYDAY, for one) keeps them: then the time of day alone counts. A line that cannot be read is left as it is.
void moveDates(ContentDocument& document, ContentDocument::Node item, const DateValue& before, const DateValue& after);

} // namespace mervo::desk
