#pragma once

#include <filesystem>
#include <stdexcept>

namespace mervo::desk {

/// What was to be shown cannot be; what() is one sentence for a person.
class FinderError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Shows a file or folder, selected, in the folder that it lies in: by the file manager on the session bus, else by
/// opening that folder with the desktop's program for folders. It must be there. Throws FinderError.
void reveal(const std::filesystem::path& item);

/// Hands a file or folder to the desktop's program for it. It must be there. Throws FinderError.
void openItem(const std::filesystem::path& item);

} // namespace mervo::desk
