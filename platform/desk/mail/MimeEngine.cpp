#include "platform/desk/mail/MimeEngine.h"

#include "platform/desk/mail/MailError.h"

#include <fmt/format.h>
#include <stdexcept>

namespace mervo::desk {
namespace {

const MimeEngine* load()
{
    try {
        return platform::load(kMimeModule)();
    } catch (const std::runtime_error& error) {
        throw MailError(fmt::format("The message reader cannot be loaded: {}.", error.what()));
    }
}

} // namespace

const MimeEngine& mimeEngine()
{
    static const MimeEngine* const engine = load();
    return *engine;
}

} // namespace mervo::desk
