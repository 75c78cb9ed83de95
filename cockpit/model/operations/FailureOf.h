#pragma once

#include <exception>
#include <optional>
#include <string>

namespace mervo {

/// The sentence of what the work throws; nothing when it returns.
template <typename Work>
std::optional<std::string> failureOf(Work&& work)
{
    try {
        work();
        return std::nullopt;
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

} // namespace mervo
