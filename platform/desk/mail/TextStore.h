#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// Owns texts that are freed together. Its views stay valid while the store lives, also when it is moved.
class TextStore {
public:
    std::string_view keep(std::string_view text);
    /// Takes over everything that the other one owns.
    void take(TextStore&& other);

private:
    std::vector<std::string> blocks_; // each on the heap, never grown past its capacity
};

} // namespace mervo::desk
