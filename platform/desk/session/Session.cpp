#include "platform/desk/session/Session.h"

#include "platform/desk/session/SessionModule.h"

#include <stdexcept>

namespace mervo::desk {

const Session& session()
{
    static const Session* const loaded = [] {
        try {
            return platform::load(kSessionModule)();
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(std::string("The desktop session cannot be asked: ") + error.what() + ".");
        }
    }();
    return *loaded;
}

} // namespace mervo::desk
