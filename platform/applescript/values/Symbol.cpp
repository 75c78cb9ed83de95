#include "platform/applescript/values/Symbol.h"

#include "platform/unicode.h"

#include <deque>
#include <unordered_map>

namespace mervo::applescript {

namespace {

struct Names {
    std::deque<std::string> spellings{std::string()};
    std::unordered_map<std::string, std::uint32_t> numbers{{std::string(), 0}};
};

Names& names()
{
    static thread_local Names all;
    return all;
}

} // namespace

Symbol::Symbol(std::string_view spelling)
{
    Names& all = names();
    const auto [place, isNew] =
        all.numbers.try_emplace(platform::foldCase(spelling), static_cast<std::uint32_t>(all.spellings.size()));
    if (isNew)
        all.spellings.emplace_back(spelling);
    number_ = place->second;
}

const std::string& Symbol::spelling() const
{
    return names().spellings[number_];
}

} // namespace mervo::applescript
