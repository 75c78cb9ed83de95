#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// Owns texts that are kept together and freed together. A view that it gave stays good while the store lives,
/// wherever the store is moved to.
class TextStore {
public:
    std::string_view keep(std::string_view text);
    /// Takes over everything that the other one owns.
    void take(TextStore&& other);

private:
    std::vector<std::string> blocks_; // each on the heap, never grown past its capacity
};

} // namespace mervo::desk
