#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

/// The members of a JSON object, each nothing when it is absent or of another type. What is no object has none.
namespace mervo::JsonMembers {

std::optional<std::string> text(const nlohmann::json& object, const char* key);
std::optional<bool> flag(const nlohmann::json& object, const char* key);
/// A whole number that 64 bits hold, however it is written (100, 100.0, 1e2).
std::optional<std::int64_t> wholeNumber(const nlohmann::json& object, const char* key);
/// The whole numbers of an array, other elements left out; none for what is no array.
std::vector<std::int64_t> wholeNumbers(const nlohmann::json& object, const char* key);

} // namespace mervo::JsonMembers
