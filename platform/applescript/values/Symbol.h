#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mervo::applescript {

/// A name of the language, of a dictionary or of a script: two spellings that differ in letter case only are one
/// symbol. Comparing is comparing two numbers. The spelling shown is the one seen first.
class Symbol {
public:
    Symbol() noexcept = default;
    explicit Symbol(std::string_view spelling);

    const std::string& spelling() const;
    bool isEmpty() const noexcept { return number_ == 0; }
    std::uint32_t number() const noexcept { return number_; }
    friend bool operator==(Symbol, Symbol) noexcept = default;

private:
    std::uint32_t number_ = 0;
};

} // namespace mervo::applescript
