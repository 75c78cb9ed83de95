#include "core/tools/guides/GuideTools.h"

#include "core/tools/Arguments.h"
#include "core/tools/guides/MervoGuides.h"

#include <array>

namespace mervo::Tools {

const Tool& howItWorks()
{
    static const Tool tool{
        .id = "how_it_works",
        .summary = "Read the Mervo operating manual: the policy model (autonomy slider + rules), effect classes, the "
                   "human-only approval queue, the tool catalog by domain, and the scheduled-automation completion "
                   "contract. Call this once before acting if you're unsure how Mervo gates your actions.",
        .effect = Effect::read,
        .arguments = {},
        .build = Arguments::acceptAll(),
        .nativeRun = [](const Args&) { return MervoGuides::llm(); },
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::GuideTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::howItWorks()};
    return tools;
}

} // namespace mervo::GuideTools
