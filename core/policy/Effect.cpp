#include "core/policy/Effect.h"

namespace mervo {

std::string_view rawValue(Effect effect)
{
    switch (effect) {
    case Effect::read:
        return "read";
    case Effect::create:
        return "create";
    case Effect::destructive:
        return "destructive";
    }
    return {};
}

} // namespace mervo
