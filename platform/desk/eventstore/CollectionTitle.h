#pragma once

#include <string>

namespace mervo::desk {

/// A name for a collection's folder that no system refuses and no program takes for a hidden one, of 100 bytes at most.
std::string folderName(const std::string& title);

/// The title as it is stored: one line without control characters and blanks around it. Throws EventStoreError when
/// nothing is left of it.
std::string oneLine(const std::string& title);

} // namespace mervo::desk
