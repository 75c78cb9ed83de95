#include "platform/modules.h"

#include "platform/programs.h"

#include <dlfcn.h>
#include <stdexcept>

namespace mervo::platform {

void* moduleEntry(const std::string& module, const char* entry)
{
    void* handle = dlopen(platformProgram(module).c_str(), RTLD_NOW | RTLD_LOCAL);
    void* found = handle == nullptr ? nullptr : dlsym(handle, entry);
    if (found == nullptr) {
        const char* reason = dlerror();
        throw std::runtime_error(reason == nullptr ? "there is no " + module : reason);
    }
    return found;
}

} // namespace mervo::platform
