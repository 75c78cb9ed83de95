#pragma once

#include "core/policy/Tool.h"

#include <span>

namespace mervo::Tools {

const Tool& reminderLists();
const Tool& reminderFind();
const Tool& reminderAdd();
const Tool& reminderAddList();
const Tool& reminderRenameList();
const Tool& reminderUpdate();
const Tool& reminderComplete();
const Tool& reminderDelete();
const Tool& reminderDeleteList();
const Tool& reminderClearCompleted();

} // namespace mervo::Tools

namespace mervo::ReminderTools {

/// The tools of this family.
std::span<const Tool* const> all();

} // namespace mervo::ReminderTools
