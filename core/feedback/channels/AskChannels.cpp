#include "core/feedback/channels/AskChannels.h"

#include "core/feedback/channels/CockpitAskChannel.h"
#include "core/feedback/channels/MailAskChannel.h"
#include "core/foundation/Text.h"

#include <algorithm>
#include <array>

namespace mervo::AskChannels {

std::span<const AskChannel* const> all()
{
    static const MailAskChannel mail;
    static const CockpitAskChannel cockpit;
    static const std::array<const AskChannel*, 2> channels{&mail, &cockpit};
    return channels;
}

const AskChannel& channel(std::string_view id)
{
    const auto found =
        std::ranges::find_if(all(), [&](const AskChannel* one) { return Text::equalsIgnoringCase(one->id, id); });
    return found == all().end() ? *all().front() : **found;
}

} // namespace mervo::AskChannels
