#pragma once

#include <string>

/// Parts of the bundle that are loaded when they are first needed, because loading the libraries behind them costs
/// more than most calls.
namespace mervo::platform {

/// A module in the bundle's folder Helpers/platform and the one function in it that the program calls.
template <typename Function>
struct Module {
    const char* file;
    const char* function;
};

/// The module of a function that a header declares, with C linkage, for its caller and for the module alike: name and
/// type are the declaration's, so the two sides cannot disagree. A macro, since only that makes a text of a name.
#define MERVO_MODULE(file, function)                                                                                   \
    ::mervo::platform::Module<decltype(function)>                                                                      \
    {                                                                                                                  \
        file, #function                                                                                                \
    }

/// The address of the function. Throws std::runtime_error with the system's words.
void* functionOf(const std::string& file, const char* function);

/// Loads the module, which stays for the life of the process, and gives its function. Throws std::runtime_error.
template <typename Function>
Function* load(const Module<Function>& module)
{
    return reinterpret_cast<Function*>(functionOf(module.file, module.function));
}

} // namespace mervo::platform
