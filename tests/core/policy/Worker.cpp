#include "core/foundation/HarnessConfig.h"
#include "core/policy/AuditLog.h"
#include "core/policy/HarnessRunner.h"

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <unistd.h>

/// What one process does in the tests of several at once: policy-worker <deed> <count> <name>, in the home directory of
/// the environment.
namespace {

using namespace mervo;

Tool toolFor(Effect effect)
{
    Tool tool;
    tool.id = "test.act";
    tool.effect = effect;
    tool.build = [](const Args&) { return Invocation{}; };
    tool.nativeRun = [](const Args&) { return std::string("done"); };
    return tool;
}

/// Every other call runs, the others wait.
void callGate(int count, const std::string& name)
{
    const Tool runs = toolFor(Effect::create);
    const Tool waits = toolFor(Effect::destructive);
    for (int i = 0; i < count; ++i) {
        const auto result =
            HarnessRunner::run(i % 2 == 0 ? runs : waits, {{"n", std::to_string(i)}}, name, std::getenv("MERVO_HOME"));
        if (std::holds_alternative<HarnessRunner::Error>(result))
            std::exit(1);
    }
}

void writeRows(int count, const std::string& name)
{
    for (int i = 0; i < count; ++i)
        AuditLog::shared().log(name, "row", std::nullopt, {{"n", std::to_string(i)}}, "executed", std::nullopt);
}

void saveConfig(int count, const std::string& name)
{
    for (int i = 0; i < count; ++i) {
        HarnessConfig config;
        config.dailyMutationCap = i;
        config.notifyEmail = std::string(100'000, name.front());
        if (!config.save())
            std::exit(1);
    }
}

/// One more for the cap each time: what an update of another process overwrote would be missing in the end.
void countUp(int count, const std::string&)
{
    for (int i = 0; i < count; ++i) {
        if (!HarnessConfig::update([](HarnessConfig& config) { ++config.dailyMutationCap; }).failure.empty())
            std::exit(1);
    }
}

/// Says "held" once it has the home's lock, and keeps it until its input ends.
void holdHome(int, const std::string&)
{
    (void)HarnessConfig::update([](HarnessConfig&) {
        std::cout << "held" << std::endl;
        std::string line;
        std::getline(std::cin, line);
    });
}

} // namespace

int main(int argc, char** argv)
{
    const std::map<std::string, std::function<void(int, const std::string&)>> deeds{
        {"gate", callGate}, {"rows", writeRows}, {"config", saveConfig}, {"count", countUp}, {"home", holdHome}};
    if (argc != 4 || deeds.count(argv[1]) == 0)
        return 2;
    deeds.at(argv[1])(std::atoi(argv[2]), argv[3]);
    return 0;
}
