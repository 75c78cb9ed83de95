#include "platform/desk/eventstore/DeskEventStore.h"

#include "platform/desk/eventstore/ItemEdits.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/vdir/VdirCommit.h"
#include "tests/support/Files.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace mervo::desk {
namespace {

using platform::Entity;
using platform::Event;
using platform::EventStoreError;
using platform::Reminder;
using std::filesystem::path;
using test::readFile;
using test::TempDir;
using test::writeFile;
using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr std::int64_t kNow = 1'800'000'000; // 2027-01-15 08:00:00 UTC
constexpr platform::TimeSpan kYear{1'767'225'600, 1'798'761'600}; // 2026 UTC

std::string calendar(const std::string& items)
{
    std::string text = "BEGIN:VCALENDAR\nVERSION:2.0\n" + items + "END:VCALENDAR\n";
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2))
        text.replace(at, 1, "\r\n");
    return text;
}

/// A home whose clock is UTC.
class EventStoreTest : public testing::Test {
protected:
    EventStoreTest() { ::setenv("TZ", "UTC", 1); }
    DeskEventStore store(const path& cache = {}) const { return storeOver(root(), cache); }
    DeskEventStore storeOver(const path& root, const path& cache = {}) const
    {
        return DeskEventStore({root, "Home", false}, {root, "Reminders", false}, cache,
            Consent(
                ConsentRecord(home_ / "consent.json"), [] { return WhenUndecided::allow; },
                [](const std::string&) { return Answer::nobody; }));
    }
    path root() const { return home_ / "cal"; }
    void write(const std::string& name, const std::string& items) const { writeFile(root() / name, calendar(items)); }
    static void makeOld(const path& file)
    {
        const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
        std::filesystem::last_write_time(file, old);
    }
    static Event only(DeskEventStore& store)
    {
        const auto found = store.events(kYear);
        EXPECT_EQ(found.size(), 1U);
        return found.at(0);
    }
    static std::vector<Reminder> reminders(DeskEventStore& store)
    {
        return store.reminders(store.collections(Entity::reminders));
    }

    TempDir home_;
};

/// What a rewrite must leave alone stands between what it changes.
TEST_F(EventStoreTest, rewritesTheLinesThatItMust)
{
    const std::string before = calendar("BEGIN:VTIMEZONE\nTZID:Own\nEND:VTIMEZONE\nX-WR-CALNAME:Late\nBEGIN:VEVENT\n"
                                        "SUMMARY;LANGUAGE=de:Tee\nUID:u\nX-FOO;X=\"a,b\":kept\n  folded\nno line\n"
                                        "DTSTAMP:20200101T000000Z\nBEGIN:VALARM\nTRIGGER:-PT5M\nEND:VALARM\n"
                                        "DTSTART;X-A=1;TZID=Europe/Paris:20260105T090000\nDURATION:PT1H\nEND:VEVENT\n");
    ContentDocument document(before);
    desk::change(document, {"u", {}},
        {.title = "Tea", .location = "Kitchen, left", .start = 1'767'607'200 /* 10:00 UTC */}, kNow);
    std::string expected = before;
    const auto replace = [&](const std::string& old, const std::string& by) {
        ASSERT_NE(expected.find(old), std::string::npos) << old;
        expected.replace(expected.find(old), old.size(), by);
    };
    replace("LANGUAGE=de:Tee", "LANGUAGE=de:Tea");
    replace("DTSTAMP:20200101T000000Z\r\n", // new lines come before the alarm
        "DTSTAMP:20270115T080000Z\r\nLOCATION:Kitchen\\, left\r\nLAST-MODIFIED:20270115T080000Z\r\nSEQUENCE:1\r\n");
    replace("DTSTART;X-A=1;TZID=Europe/Paris:20260105T090000", "DTSTART;TZID=Europe/Paris;X-A=1:20260105T110000");
    const std::string after = document.text();
    const std::size_t zone = after.find("BEGIN:VTIMEZONE\r\nTZID:Europe/Paris");
    ASSERT_NE(zone, std::string::npos) << "the zone that a time now names";
    const std::string end = "END:VTIMEZONE\r\n";
    EXPECT_EQ(after.substr(0, zone) + after.substr(after.find(end, zone) + end.size()), expected);
}

TEST_F(EventStoreTest, changesAndDeletesOneOccurrenceAlone)
{
    write("a/r.ics",
        "BEGIN:VEVENT\nUID:r\nSUMMARY:Daily\nDTSTART:20260105T090000Z\nDTEND:20260105T093000Z\n"
        "RRULE:FREQ=DAILY;COUNT=4\nX-KEEP:1\nEND:VEVENT\n");
    auto store = this->store();
    auto found = store.events(kYear);
    ASSERT_EQ(found.size(), 4U);
    store.change(found[1], {.title = "Moved", .start = found[1].start + 3600});
    store.remove(found[2]);
    EXPECT_EQ(store.events(kYear).size(), 4U) << "nothing is real before the commit";
    store.commit();
    found = store.events(kYear);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[1].title + "/" + found[2].title, "Moved/Daily");
    EXPECT_EQ(found[1].end - found[1].start, 1800);
    EXPECT_EQ(found[1].start, 1'767'690'000 + 3600);
    const std::string text = readFile(root() / "a/r.ics");
    EXPECT_THAT(text, HasSubstr("EXDATE:20260107T090000Z"));
    EXPECT_THAT(text, HasSubstr("RECURRENCE-ID:20260106T090000Z"));
    store.change(found[1], {.title = "Again"});
    store.commit();
    EXPECT_EQ(store.events(kYear).size(), 3U) << "its own component is changed, none is added";
    store.remove(store.events(kYear)[1]);
    store.commit();
    EXPECT_THAT(readFile(root() / "a/r.ics"), testing::Not(HasSubstr("RECURRENCE-ID")));
    EXPECT_EQ(store.events(kYear).size(), 2U);
}

/// What names the dates of a series stays on them when its start moves.
TEST_F(EventStoreTest, movesAWholeSeries)
{
    const struct {
        std::string before;
        platform::EventChange change;
        std::string after;
    } cases[] = {
        {"DTSTART;TZID=Europe/Paris:20260302T090000\nRRULE:FREQ=WEEKLY;UNTIL=20260420T070000Z;WKST=MO\n"
         "EXDATE:20260309T080000Z\nEXDATE;TZID=Europe/"
         "Paris:20260330T090000,20260406T090000\nEXDATE;VALUE=DATE:20260413\n",
            {.start = 1'772'530'200 /* 2026-03-03 09:30 UTC */},
            "DTSTART;TZID=Europe/Paris:20260303T103000\nRRULE:FREQ=WEEKLY;UNTIL=20260421T083000Z;WKST=MO\n"
            "EXDATE;TZID=Europe/Paris:20260310T103000\nEXDATE;TZID=Europe/Paris:20260331T103000,20260407T103000\n"
            "EXDATE;VALUE=DATE:20260414\n"},
        {"DTSTART:20260302T090000Z\nRRULE:FREQ=WEEKLY;BYDAY=MO\nEXDATE:20260309T090000Z\n"
         "RDATE;VALUE=PERIOD:20260311T090000Z/PT3H\n",
            {.start = 1'772'532'000 /* 2026-03-03 10:00 */},
            "DTSTART:20260303T100000Z\nRRULE:FREQ=WEEKLY;BYDAY=MO\nEXDATE:20260309T100000Z\n"
            "RDATE;VALUE=PERIOD:20260311T100000Z/PT3H\n"},
        {"DTSTART:20260302T090000Z\nRRULE:FREQ=DAILY;UNTIL=20260310T090000Z\nEXDATE:20260305T090000Z,no date\n"
         "EXDATE:20260306T090000Z\n",
            {.start = 1'772'409'600 /* 2026-03-02 */, .isAllDay = true},
            "DTSTART;VALUE=DATE:20260302\nRRULE:FREQ=DAILY;UNTIL=20260310\nEXDATE:20260305T090000Z,no date\n"
            "EXDATE;VALUE=DATE:20260306\nDTEND;VALUE=DATE:20260303\n"},
    };
    for (const auto& [before, moved, after] : cases) {
        ContentDocument document(calendar("BEGIN:VEVENT\nUID:u\n" + before + "END:VEVENT\n"));
        desk::change(document, {"u", {}}, moved, kNow);
        std::string lines;
        const auto event = itemsOf(document, "VEVENT").at(0);
        for (const auto line : document.lines(event)) {
            const std::string text = unfolded(document.bytes(line));
            if (text.find("DATE") < 3 || text.find("RULE") == 1 || text.starts_with("DTSTART")
                || text.starts_with("DTEND"))
                lines += text + "\n";
        }
        EXPECT_EQ(lines, after);
    }
}

TEST_F(EventStoreTest, movesARepeatingTask)
{
    ContentDocument document(calendar("BEGIN:VTODO\nUID:u\nDUE;TZID=Europe/Paris:20260302T090000\nRRULE:FREQ=WEEKLY\n"
                                      "EXDATE:20260309T080000Z\nEND:VTODO\n"));
    const platform::DateComponents due{2026, 3, 3, platform::TimeOfDay{10, 30, 0}};
    desk::change(document, "u", platform::ReminderChange{.due = due}, kNow);
    EXPECT_THAT(document.text(), HasSubstr("DUE;TZID=Europe/Paris:20260303T113000"));
    EXPECT_THAT(document.text(), HasSubstr("EXDATE;TZID=Europe/Paris:20260310T113000"));
}

TEST_F(EventStoreTest, movesAWholeSeriesWithItsChangedOccurrences)
{
    write("a/r.ics",
        "BEGIN:VEVENT\nUID:r\nSUMMARY:Daily\nDTSTART;TZID=Europe/Paris:20260105T090000\nDURATION:PT1H\n"
        "RRULE:FREQ=DAILY;COUNT=4\nEND:VEVENT\nBEGIN:VEVENT\nUID:r\nSUMMARY:Other\nDURATION:PT1H\n"
        "RECURRENCE-ID:20260106T080000Z\nDTSTART:20260106T080000Z\nEND:VEVENT\nBEGIN:VEVENT\nUID:r\nSUMMARY:Moved\n"
        "RECURRENCE-ID:20260107T080000Z\nDTSTART:20260120T080000Z\nEND:VEVENT\n");
    auto store = this->store();
    const Event series = store.allEvents(store.collections(Entity::events).at(0)).at(0);
    store.change(series, {.start = series.start + 86'400 + 1800});
    store.commit();
    std::string shown;
    for (const Event& event : store.events(kYear))
        shown += fmt::format("{}{} ", event.title, (event.start - 1'767'571'200) / 1800); // half hours of 2026-01-05
    EXPECT_EQ(shown, "Daily65 Other113 Daily209 Moved736 ");
}

TEST_F(EventStoreTest, makesTheDefaultCollectionWithTheFirstItem)
{
    auto store = this->store();
    const auto home = store.defaultCollection(Entity::events);
    EXPECT_EQ(home.title, "Home");
    EXPECT_EQ(store.collections(Entity::events).size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(root())) << "a look makes nothing";
    store.add(home, platform::EventChange{.title = "New", .start = kYear.start});
    store.add(store.defaultCollection(Entity::reminders),
        platform::ReminderChange{.title = "Do", .due = platform::DateComponents{2026, 2, 3}});
    store.commit();
    const Event event = only(store);
    EXPECT_EQ(event.calendar.title + "/" + event.title, "Home/New");
    EXPECT_EQ(event.end - event.start, 3600);
    const auto tasks = reminders(store);
    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks[0].list.title, "Reminders");
    EXPECT_TRUE(tasks[0].due && tasks[0].due->month == 2 && !tasks[0].due->time);
    EXPECT_EQ(store.defaultCollection(Entity::reminders).id, tasks[0].list.id);
}

TEST_F(EventStoreTest, completesAndReopensAndGoesOn)
{
    write("t/1.ics", "BEGIN:VTODO\nUID:1\nSUMMARY:Once\nX-KEEP:1\nEND:VTODO\n");
    write("t/2.ics",
        "BEGIN:VTODO\nUID:2\nSUMMARY:Weekly\nDUE;VALUE=DATE:20260105\nDTSTART;VALUE=DATE:20260105\n"
        "RRULE:FREQ=WEEKLY;COUNT=2\nBEGIN:VALARM\nTRIGGER;VALUE=DATE-TIME:20260104T080000Z\nEND:VALARM\n"
        "END:VTODO\n");
    auto store = this->store();
    for (const Reminder& task : reminders(store))
        store.change(task, {.isCompleted = true});
    store.commit();
    auto tasks = reminders(store);
    EXPECT_TRUE(tasks[0].isCompleted && tasks[0].completed);
    EXPECT_FALSE(tasks[1].isCompleted);
    EXPECT_EQ(tasks[1].due->day, 12);
    EXPECT_EQ(tasks[1].absoluteAlarms.at(0), 1'768'118'400) << "a week later, like the date";
    store.change(tasks[0], {.isCompleted = false});
    store.change(tasks[1], {.isCompleted = true});
    store.commit();
    tasks = reminders(store);
    EXPECT_FALSE(tasks[0].isCompleted || tasks[0].completed);
    EXPECT_TRUE(tasks[1].isCompleted) << "that was the last date";
}

TEST_F(EventStoreTest, neverOverwritesWhatAnotherProgramWrote)
{
    write("a/1.ics", "BEGIN:VEVENT\nUID:1\nSUMMARY:Ours\nDTSTART:20260105T090000Z\nEND:VEVENT\n");
    auto store = this->store();
    const Event event = only(store);
    const std::string theirs = calendar("BEGIN:VEVENT\nUID:1\nSUMMARY:Theirs\nDTSTART:20260105T090000Z\nEND:VEVENT\n");
    for (const bool beforeChange : {true, false}) {
        write("a/1.ics", "BEGIN:VEVENT\nUID:1\nSUMMARY:Ours\nDTSTART:20260105T090000Z\nEND:VEVENT\n");
        const Event seen = only(store);
        if (beforeChange)
            writeFile(root() / "a/1.ics", theirs);
        EXPECT_THAT(
            [&] {
                store.change(seen, {.title = "x"});
                writeFile(root() / "a/1.ics", theirs);
                store.commit();
            },
            ThrowsMessage<EventStoreError>(HasSubstr("another program has written")));
        EXPECT_EQ(readFile(root() / "a/1.ics"), theirs);
    }
}

TEST_F(EventStoreTest, deletesAListAndLeavesItsCalendar)
{
    write("both/e.ics", "BEGIN:VEVENT\nUID:e\nDTSTART:20260105T090000Z\nEND:VEVENT\n");
    write("both/t.ics", "BEGIN:VTODO\nUID:t\nEND:VTODO\n");
    write("both/two.ics", "BEGIN:VTODO\nUID:a\nEND:VTODO\nBEGIN:VTODO\nUID:b\nEND:VTODO\n");
    write("tasks/t.ics", "BEGIN:VTODO\nUID:t\nEND:VTODO\n");
    write("odd/broken.ics", "BEGIN:VTODO\nUID:x\n");
    auto store = this->store();
    EXPECT_EQ(store.collections(Entity::events).size(), 2U);
    for (const Reminder& task : reminders(store)) {
        if (task.uid == "a")
            store.remove(task);
    }
    store.commit();
    EXPECT_THAT(readFile(root() / "both/two.ics"), HasSubstr("UID:b"));
    for (const auto& list : store.collections(Entity::reminders)) {
        if (list.title != "odd")
            store.remove(list, Entity::reminders);
    }
    store.commit();
    EXPECT_EQ(test::tree(root() / "both"), (std::set<std::string>{"e.ics"}));
    EXPECT_FALSE(std::filesystem::exists(root() / "tasks"));
    EXPECT_TRUE(std::filesystem::exists(root() / "odd/broken.ics")) << "what cannot be read is nobody's to delete";
}

TEST_F(EventStoreTest, boundsEndlessRulesOfAllItemsTogether)
{
    for (int i = 0; i < 30; ++i) {
        write(fmt::format("a/{}.ics", i),
            fmt::format("BEGIN:VEVENT\nUID:{}\nDTSTART:20260101T000000Z\nRRULE:FREQ={}\nEND:VEVENT\n", i,
                i < 29 ? "SECONDLY" : "DAILY"));
    }
    auto store = this->store();
    std::map<std::string, int> dates;
    const auto found = store.events(kYear);
    for (const Event& event : found)
        ++dates[event.uid];
    EXPECT_EQ(dates.size(), 30U) << "each shows some";
    EXPECT_EQ(dates["29"], 365);
    EXPECT_LT(found.size(), 70'000U);
}

/// Another process gives all events of two folders the same new title in each commit.
TEST_F(EventStoreTest, readsNoPartOfACommit)
{
    constexpr int kItems = 20, kReads = 300;
    const TempDir folder(test::memory());
    const path root = folder / "cal";
    const auto title = [](int version) {
        return calendar(
            fmt::format("BEGIN:VEVENT\nUID:1\nSUMMARY:{}\nDTSTART:20260105T090000Z\nEND:VEVENT\n", version));
    };
    const auto file = [&](int i) { return root / (i % 2 == 0 ? "a" : "b") / fmt::format("{}.ics", i); };
    for (int i = 0; i < kItems; ++i)
        writeFile(file(i), title(0));
    const pid_t writer = ::fork();
    for (int version = 1; writer == 0 && version < 2000; ++version) {
        VdirCommit commit(root);
        for (int i = 0; i < kItems; ++i)
            commit.replace(file(i), title(version - 1), title(version));
        commit.commit();
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    if (writer == 0)
        ::_exit(0);
    std::set<std::string> seen;
    int mixed = 0;
    for (int read = 0; read < kReads; ++read) {
        std::set<std::string> titles;
        auto store = storeOver(root);
        for (const Event& event : store.events(kYear))
            titles.insert(event.title);
        mixed += titles.size() != 1 ? 1 : 0;
        seen.merge(titles);
    }
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(seen.size(), 5U) << "the other one committed meanwhile";
}

/// A cache that is cut, of another kind or from another time shows what the files hold.
TEST_F(EventStoreTest, trustsNoCacheOverTheFiles)
{
    const path cache = home_ / "cache/items";
    const std::string shown = "BEGIN:VEVENT\nUID:1\nSUMMARY:One\nDTSTART:20260105T090000Z\nEND:VEVENT\n";
    write("a/1.ics", shown);
    write("a/2.ics", "BEGIN:VTODO\nUID:2\nEND:VTODO\n");
    makeOld(root() / "a/1.ics");
    const auto look = [&] {
        auto store = this->store(cache);
        return only(store).title;
    };
    writeFile(home_ / "cache/items.sqlite", "of an earlier version");
    EXPECT_EQ(look(), "One");
    EXPECT_EQ(test::tree(home_ / "cache").size(), 2U) << "the new one alone";
    const path file = std::filesystem::directory_iterator(cache)->path();
    const std::string good = readFile(file);
    for (std::size_t at = 0; at < good.size(); at += 16) {
        std::string bad = good;
        std::fill_n(bad.begin() + static_cast<std::ptrdiff_t>(at), std::min<std::size_t>(16, bad.size() - at), '\xA5');
        writeFile(file, bad);
        EXPECT_EQ(look(), "One") << at;
        writeFile(file, good.substr(0, at));
        EXPECT_EQ(look(), "One") << "cut at " << at;
    }
    write("a/1.ics", "BEGIN:VEVENT\nUID:1\nSUMMARY:Two\nDTSTART:20260105T090000Z\nEND:VEVENT\n");
    EXPECT_EQ(look(), "Two") << "as long as before";
    std::filesystem::remove(root() / "a/2.ics");
    std::filesystem::remove_all(cache);
    writeFile(cache, "no folder"); // nothing can be written there
    EXPECT_EQ(look(), "Two");
}

/// Once the folder's own stamp is old enough, it is not listed again. What happens to its items is seen all the same.
TEST_F(EventStoreTest, seesEveryChangeInAFolderThatIsNotListedAgain)
{
    const auto item = [](const std::string& uid, const std::string& title) {
        return "BEGIN:VEVENT\nUID:" + uid + "\nSUMMARY:" + title + "\nDTSTART:20260105T090000Z\nEND:VEVENT\n";
    };
    write("a/1.ics", item("1", "One"));
    write("a/2.ics", item("2", "Two"));
    write("b/late.ics", item("3", "Late"));
    for (const char* name : {"a/1.ics", "a/2.ics", "b/late.ics"})
        makeOld(root() / name);
    std::this_thread::sleep_for(std::chrono::milliseconds(3100)); // nobody can set a folder's change time back
    const auto titles = [&] {
        auto store = this->store(home_ / "cache");
        std::set<std::string> found;
        for (const Event& event : store.events(kYear))
            found.insert(event.title);
        return found;
    };
    using Titles = std::set<std::string>;
    EXPECT_EQ(titles(), (Titles{"One", "Two", "Late"}));
    writeFile(root() / "a/1.ics", calendar(item("1", "Uno"))); // in place, and as long
    EXPECT_EQ(titles(), (Titles{"Uno", "Two", "Late"}));
    write("a/new.ics", item("4", "New"));
    std::filesystem::remove(root() / "a/2.ics");
    EXPECT_EQ(titles(), (Titles{"Uno", "New", "Late"}));
    writeFile(root() / "tmp", calendar(item("3", "Over")));
    std::filesystem::rename(root() / "tmp", root() / "b/late.ics");
    EXPECT_EQ(titles(), (Titles{"Uno", "New", "Over"}));
    std::filesystem::create_directory(root() / "b/inner");
    EXPECT_EQ(titles(), (Titles{"Uno", "New", "Over"}));
    write("b/inner/x.ics", item("5", "Inner"));
    EXPECT_EQ(titles(), (Titles{"Uno", "New", "Over", "Inner"}));
}

} // namespace
} // namespace mervo::desk
