#include "platform/desk/mail/MimeEngine.h"

#include "platform/desk/mail/MailError.h"
#include "platform/programs.h"

#include <dlfcn.h>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

const MimeEngine* load()
{
    const std::filesystem::path module = platform::platformProgram(kMimeModule);
    void* handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL); // stays for the life of the process
    void* entry = handle == nullptr ? nullptr : dlsym(handle, kMimeEntry);
    if (entry == nullptr)
        throw MailError(fmt::format("The message reader cannot be loaded: {}.", dlerror()));
    return reinterpret_cast<MimeEntry*>(entry)();
}

} // namespace

const MimeEngine& mimeEngine()
{
    static const MimeEngine* const engine = load();
    return *engine;
}

} // namespace mervo::desk
