/// The cockpit's model on a home whose folder MERVO_HOME and HOME must name too, and whose database bench-gate has
/// filled:
///
///     bench-cockpit FOLDER ACTIONS AUTOMATIONS ROUNDS   makes what is missing, takes samples of one tick each and
///                                                       prints them as bench-pairs does
///
/// Nothing changes between the ticks. The floor asks for the stamp of every file that a tick must know of, through the
/// system alone.
#include "bench/Measure.h"
#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/automations/EngineAutomations.h"
#include "core/automations/model/AutomationName.h"

#include <QCoreApplication>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <thread>

namespace mervo::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kSettling(4); ///< until a file that was just written is no longer read again and again

struct Silence final : platform::Notifier, platform::Workspace, platform::LoginItem, ArchiveAccounts {
    void post(const platform::Notification&) override { }
    void remove(const std::string&) override { }
    bool openFile(const fs::path&) override { return false; }
    bool openUrl(const std::string&) override { return false; }
    bool revealFile(const fs::path&) override { return false; }
    void setBadge(const std::string&) override { }
    bool isEnabled() const override { return false; }
    void setEnabled(bool) override { }
    void storePassword(const std::string&, const platform::Secret&) override { }
    void removePassword(const std::string&) override { }
    std::vector<GmailAccount> gmail() override { return {}; }
};

void write(const fs::path& file, const std::string& text)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

void prepare(const fs::path& home, int actions, int automations)
{
    for (int i = 0; i < actions; ++i) {
        PendingStore().save({fmt::format("{:08X}", i), "mail.send",
            {{"to", "person@mail.example.org"}, {"subject", fmt::format("Topic {}", i)},
                {"body", std::string(2000, 'b')}},
            fmt::format("mail.send subject=Topic {}", i), "2026-01-01T08:00:00Z", std::nullopt});
    }
    for (int i = 0; i < automations; ++i) {
        const std::string name = fmt::format("loop-{:03}", i);
        constexpr std::array<const char*, 3> kSchedules{R"({"type":"interval","everyMinutes":60})",
            R"({"type":"calendar","hour":7,"minute":30})", R"({"type":"hours","hours":[8,12,18],"minute":0})"};
        write(home / "automations" / name / "loop.json",
            fmt::format(R"({{"name":"{}","schedule":{}}})", name, kSchedules.at(i % kSchedules.size())));
        write(home / "Library/LaunchAgents" / (AutomationName::jobLabel(name) + ".plist"), "<plist/>"); // it is loaded
        write(home / "automations" / name / "AGENT.md", std::string(3000, 'p'));
        write(home / ".runtime/state" / (name + ".json"), R"({"lastRun":"2026-01-01T08:00:00Z","lastExit":0})");
    }
    std::this_thread::sleep_for(kSettling);
}

std::int64_t stampsOf(const fs::path& home)
{
    std::vector<std::string> files;
    for (const char* folder : {"pending", "automations", ".runtime", "Library"}) {
        for (const auto& entry : fs::recursive_directory_iterator(home / folder))
            files.push_back(entry.path());
    }
    return timed([&] {
        for (const auto& file : files) {
            struct stat found { };
            ::stat(file.c_str(), &found);
        }
    });
}

int measure(const fs::path& home, int actions, int automations, int rounds)
{
    prepare(home, actions, automations);
    Silence desktop;
    EngineAutomations listed;
    CockpitModel model({desktop, desktop, desktop, listed, desktop, {}});
    if (model.waitingCount() < actions || model.automations()->list()->rowCount() != automations)
        throw std::runtime_error("the model does not show what was prepared");
    std::vector<std::int64_t> walls, cpus, floor;
    model.reload();
    for (int round = 0; round < rounds; ++round) {
        const std::int64_t before = ownCpu();
        walls.push_back(timed([&] { model.reload(); }));
        cpus.push_back(ownCpu() - before);
        floor.push_back(stampsOf(home));
    }
    const nlohmann::json notes = nlohmann::json::object();
    std::puts(nlohmann::json{{"tick", {{"wall", walls}, {"cpu", cpus}, {"notes", notes}}},
        {"stamps", {{"wall", floor}, {"cpu", nlohmann::json::array()}, {"notes", notes}}}}
                  .dump()
                  .c_str());
    return 0;
}

} // namespace
} // namespace mervo::bench

int main(int argc, char** argv)
{
    if (argc != 5)
        return 2;
    const QCoreApplication application(argc, argv);
    try {
        return mervo::bench::measure(argv[1], std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench-cockpit: %s\n", failure.what());
        return 1;
    }
}
