#pragma once

#include <exception>
#include <optional>
#include <string>

namespace mervo {

/// The sentence of whatever `work` throws, nothing when it returns; `unnamed` stands for what is no std::exception.
template <typename Work>
std::optional<std::string> failureOf(Work&& work, const char* unnamed = "it failed without saying why")
{
    try {
        work();
        return std::nullopt;
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return unnamed;
    }
}

} // namespace mervo
