#include "core/permissions/PermissionBootstrap.h"
#include "tests/support/Files.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <map>

namespace mervo {
namespace {

using platform::Authorization;
using platform::Entity;
using platform::automation::AskUser;
using platform::automation::Status;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Status kClosed = platform::automation::kNotRunning;
const std::vector<std::string> kBundleIds{"com.apple.mail", "com.apple.iCal", "com.apple.reminders",
    "com.apple.AddressBook", "com.apple.Notes", "com.apple.MobileSMS", "com.apple.finder", "com.apple.systemevents"};
const std::string kRefusal = "denied - allow in System Settings → Privacy & Security → Automation";

/// A system of the test's own; it writes down what it is asked, with a clock that only `sleep` moves.
class PermissionBootstrapTest : public testing::Test {
protected:
    PermissionBootstrapTest()
    {
        ::setenv("MERVO_HOME", home.c_str(), 1);
        for (const std::string& bundleId : kBundleIds)
            silent[bundleId] = asked[bundleId] = 0;
    }
    ~PermissionBootstrapTest() override { ::unsetenv("MERVO_HOME"); }

    PermissionSystem system()
    {
        return {
            .permission =
                [this](const std::string& bundleId, AskUser ask) {
                    if (ask == AskUser::yes)
                        log.push_back("ask " + bundleId);
                    const auto opened = launched.find(bundleId);
                    if (opened != launched.end() && now < opened->second + startTime)
                        return kClosed;
                    if (ask == AskUser::no && opened == launched.end())
                        return silent[bundleId];
                    return asked[bundleId];
                },
            .launch =
                [this](const std::string& bundleId) {
                    log.push_back("launch " + bundleId);
                    launched[bundleId] = now;
                },
            .terminate =
                [this](const std::string& bundleId) {
                    log.push_back("quit " + bundleId);
                    fileAtQuit = std::filesystem::exists(file);
                },
            .authorization = [this](Entity entity) { return entity == Entity::events ? calendars : reminders; },
            .requestFullAccess =
                [this](Entity entity) {
                    log.push_back(entity == Entity::events ? "ask calendar" : "ask reminders");
                    (entity == Entity::events ? calendars : reminders) = Authorization::fullAccess;
                },
            .now = [this] { return now; },
            .sleep =
                [this](std::chrono::milliseconds duration) {
                    EXPECT_EQ(duration, std::chrono::milliseconds(150));
                    now += duration;
                    ++naps;
                },
        };
    }
    PermissionBootstrap bootstrap() { return PermissionBootstrap(system()); }
    std::string grants() { return std::filesystem::exists(file) ? test::readFile(file) : "none"; }

    test::TempDir dir;
    std::filesystem::path home = dir / "home", file = home / "autonomy-grants.json";
    std::map<std::string, Status> silent, asked; // what is answered without and with a question, or once launched
    std::map<std::string, PermissionSystem::Clock::time_point> launched;
    std::optional<Authorization> calendars = Authorization::fullAccess, reminders = Authorization::fullAccess;
    std::chrono::milliseconds startTime{0};
    PermissionSystem::Clock::time_point now{};
    int naps = 0;
    bool fileAtQuit = false;
    std::vector<std::string> log;
};

TEST_F(PermissionBootstrapTest, tellsEachAnswerOfTheSystem)
{
    struct Case {
        Status status;
        const char* file; // what was recorded; null: nothing
        std::optional<bool> granted;
        std::string detail;
    };
    const Case cases[] = {
        {0, nullptr, true, "allowed"},
        {0, R"({"com.apple.mail":false})", true, "allowed"},
        {-1743, R"({"com.apple.mail":true})", false, kRefusal},
        {-1744, R"({"com.apple.mail":true})", std::nullopt, "not yet granted"},
        {-600, nullptr, std::nullopt, "not set up yet - run Set up access"},
        {-600, R"({"com.apple.Notes":true})", std::nullopt, "not set up yet - run Set up access"},
        {-600, R"({"com.apple.mail":true})", true, "allowed (granted at setup; app closed)"},
        {-600, R"({"com.apple.mail":false,"com.apple.Notes":7})", false, kRefusal},
        {-600, R"({"com.apple.mail":"true"})", std::nullopt, "not set up yet - run Set up access"},
        {-600, R"({"com.apple.mail":true)", std::nullopt, "not set up yet - run Set up access"},
        {-600, "[true]", std::nullopt, "not set up yet - run Set up access"},
        {-10000, R"({"com.apple.mail":true})", std::nullopt, "unavailable (status -10000)"},
        {7, nullptr, std::nullopt, "unavailable (status 7)"},
    };
    for (const Case& each : cases) {
        std::filesystem::remove_all(home);
        if (each.file != nullptr)
            test::writeFile(file, each.file);
        silent["com.apple.mail"] = each.status;
        const auto row = bootstrap().status().front();
        EXPECT_EQ(row.granted, each.granted) << each.status;
        EXPECT_EQ(row.detail, each.detail) << each.status;
        EXPECT_EQ(grants(), each.file == nullptr ? "none" : each.file);
    }
    EXPECT_THAT(log, IsEmpty()) << "a status asks nobody";
}

TEST_F(PermissionBootstrapTest, tellsEachStateOfEventKit)
{
    const std::tuple<std::optional<Authorization>, std::optional<bool>, const char*> cases[] = {
        {Authorization::notDetermined, std::nullopt, "not yet granted"},
        {Authorization::restricted, false, "restricted by system policy"},
        {Authorization::denied, false, "denied - allow in System Settings → Privacy & Security"},
        {Authorization::fullAccess, true, "allowed"},
        {Authorization::writeOnly, false,
            "write-only - set Full Access in System Settings → Privacy & Security → Calendars"},
        {std::nullopt, false, "unknown status"},
    };
    for (const auto& [status, granted, detail] : cases) {
        calendars = status;
        const auto results = bootstrap().status();
        EXPECT_EQ(results.at(8).granted, granted) << detail;
        EXPECT_EQ(results.at(8).detail, detail);
        EXPECT_EQ(results.at(9).detail, "allowed");
        reminders = std::exchange(calendars, Authorization::fullAccess);
        EXPECT_EQ(bootstrap().status().at(9).detail, detail);
        EXPECT_EQ(bootstrap().probe().at(9).granted, granted.value_or(true)) << "asked where nothing is decided";
        reminders = Authorization::fullAccess;
    }
    EXPECT_EQ(std::ranges::count(log, "ask reminders"), 1);
    EXPECT_EQ(std::ranges::count(log, "ask calendar"), 0);
}

TEST_F(PermissionBootstrapTest, asksForAllInOrderAndEndsOnlyWhatItStarted)
{
    test::writeFile(file, R"({"com.apple.mail":true,"com.apple.Notes":true,"org.example":false,"damaged":3})");
    silent["com.apple.iCal"] = silent["com.apple.Notes"] = kClosed;
    startTime = std::chrono::milliseconds(400);
    asked["com.apple.mail"] = -1743;
    asked["com.apple.Notes"] = -1744;
    calendars = Authorization::notDetermined;
    const auto results = bootstrap().probe();
    EXPECT_THAT(log,
        ElementsAre("launch com.apple.iCal", "launch com.apple.Notes", "ask com.apple.mail", "ask com.apple.iCal",
            "ask com.apple.reminders", "ask com.apple.AddressBook", "ask com.apple.Notes", "ask com.apple.MobileSMS",
            "ask com.apple.finder", "ask com.apple.systemevents", "ask calendar", "quit com.apple.iCal",
            "quit com.apple.Notes"));
    EXPECT_EQ(naps, 3) << "0.45 s for the first, and by then the second is there";
    EXPECT_EQ(results.at(4).detail, "not yet granted");
    EXPECT_EQ(results.at(8).detail, "allowed");
    EXPECT_TRUE(fileAtQuit);
    EXPECT_EQ(grants(),
        R"({"com.apple.AddressBook":true,"com.apple.MobileSMS":true,"com.apple.Notes":true,"com.apple.finder":true,)"
        R"("com.apple.iCal":true,"com.apple.mail":false,"com.apple.reminders":true,"com.apple.systemevents":true,)"
        R"("org.example":false})");
}

TEST_F(PermissionBootstrapTest, waitsSixSecondsForEachThatDoesNotCome)
{
    silent["com.apple.iCal"] = silent["com.apple.Notes"] = kClosed;
    startTime = std::chrono::hours(1);
    const auto results = bootstrap().probe();
    EXPECT_EQ(naps, 80);
    EXPECT_EQ(now.time_since_epoch(), std::chrono::seconds(12));
    EXPECT_EQ(results.at(1).detail, "not set up yet - run Set up access");
    EXPECT_THAT(grants(), testing::Not(testing::HasSubstr("iCal")));
    EXPECT_EQ(log.back(), "quit com.apple.Notes");
}

TEST_F(PermissionBootstrapTest, givesItsResultsWhereTheFileCannotBeWritten)
{
    test::writeFile(home, "a file in the way");
    EXPECT_EQ(bootstrap().probe().size(), 10U);
    std::filesystem::remove(home);
    std::filesystem::create_directories(file);
    EXPECT_EQ(bootstrap().probe().front().detail, "allowed");
}

TEST_F(PermissionBootstrapTest, printsItsResults)
{
    const PermissionBootstrap::Results results{{"automation:com.apple.mail", "Mail (control)", true, "allowed"},
        {"calendar", "Calendar (events)", false, "write-only → \"set\""}, {"reminders", "Reminders", std::nullopt, "x"},
        {"a", "System Events (control)", true, "b"}};
    EXPECT_EQ(PermissionBootstrap::renderText(results),
        "✅ Mail (control)         allowed\n⛔ Calendar (events)      write-only → \"set\"\n❓ Reminders              x\n"
        "✅ System Events (control) b");
    EXPECT_EQ(PermissionBootstrap::renderJSON(results),
        R"json([{"id":"automation:com.apple.mail","label":"Mail (control)","granted":true,"detail":"allowed"},)json"
        R"json({"id":"calendar","label":"Calendar (events)","granted":false,"detail":"write-only → \"set\""},)json"
        R"json({"id":"reminders","label":"Reminders","detail":"x"},)json"
        R"json({"id":"a","label":"System Events (control)","granted":true,"detail":"b"}])json");
}

} // namespace
} // namespace mervo
