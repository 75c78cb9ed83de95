#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Changes to the text of a JSON object that leave the rest as it stands, to the byte: blanks, order, the spelling of
/// numbers, names that mean something to others. Nesting of any depth costs no stack.
///
/// The text must be JSON, as a parser has found before; of any other, the result means nothing.
namespace mervo::JsonText {

/// The text of a member's value; of several with one name the last one's, as a parser has it. Nothing without one.
std::optional<std::string_view> value(std::string_view object, std::string_view name);

/// The object with a JSON value for every member of this name. Without one a member is added behind the last, spaced
/// like it.
std::string with(std::string_view object, std::string_view name, std::string_view value);

/// The object without any member of this name.
std::string without(std::string_view object, std::string_view name);

/// The texts of an array's elements.
std::vector<std::string_view> elements(std::string_view array);

} // namespace mervo::JsonText
