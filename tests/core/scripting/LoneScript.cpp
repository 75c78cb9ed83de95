#include "core/scripting/OSAScript.h"

#include <iostream>

/// Copied into a bundle without a script host, it tells what running a script comes to there.
int main()
{
    const auto result = mervo::OSAScript::run("return 1", {});
    std::cout << result.ok << ' ' << result.code << ' ' << result.error;
}
