#include "platform/modules.h"

#include "platform/programs.h"

#include <dlfcn.h>
#include <stdexcept>

namespace mervo::platform {

void* functionOf(const std::string& file, const char* function)
{
    void* handle = dlopen(platformProgram(file).c_str(), RTLD_NOW | RTLD_LOCAL);
    void* found = handle == nullptr ? nullptr : dlsym(handle, function);
    if (found == nullptr) {
        const char* reason = dlerror();
        throw std::runtime_error(reason == nullptr ? "there is no " + file : reason);
    }
    return found;
}

} // namespace mervo::platform
