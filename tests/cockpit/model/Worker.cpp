/// Another process on the same home: cockpit-worker <deed> [words].
#include "cockpit/model/CockpitModel.h"
#include "core/feedback/FeedbackStore.h"
#include "core/foundation/HarnessConfig.h"
#include "core/policy/RuleStore.h"

#include <QCoreApplication>

#include <fstream>
#include <iostream>
#include <string>

namespace {

using namespace mervo;

void queue(const std::string& id, const std::string& subject)
{
    PendingStore().save({id, "mail.draft", {{"subject", subject}, {"to", "a@example.org"}}, "mail.draft",
        "2026-03-01T08:15:42Z", std::nullopt});
}

void ask(const std::string& id, const std::string& text)
{
    FeedbackItem item;
    item.id = id;
    item.kind = FeedbackItem::Kind::question;
    item.text = text;
    item.automation = "morning";
    item.channel = "cockpit";
    item.createdAt = "2026-03-01T08:00:00Z";
    FeedbackStore::shared().add(item);
}

void lower()
{
    auto config = HarnessConfig::load();
    config.autonomyMode = AutonomyMode::panic;
    config.save();
}

void addRule(const std::string& id)
{
    PolicyRule rule;
    rule.id = id;
    rule.createdAt = "2026-03-01T08:00:00Z";
    RuleStore::shared().add(rule);
}

/// Says "held" once nobody else can even read, and keeps it so until the input ends.
void lock()
{
    MervoDB db;
    db.database().read([](Database& connection) {
        connection.execute("BEGIN EXCLUSIVE");
        std::cout << "held" << std::endl;
        std::string line;
        std::getline(std::cin, line);
        connection.execute("COMMIT");
    });
}

/// The Qt libraries that this program, which needs the cockpit's model, has in memory.
void libraries()
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (const auto at = line.find("libQt6"); at != std::string::npos)
            std::cout << line.substr(at) << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const auto word = [&](int at) { return at < argc ? std::string(argv[at]) : std::string(); };
    if (word(1) == "queue")
        queue(word(2), word(3));
    else if (word(1) == "ask")
        ask(word(2), word(3));
    else if (word(1) == "lower")
        lower();
    else if (word(1) == "rule")
        addRule(word(2));
    else if (word(1) == "lock")
        lock();
    else if (word(1) == "libraries")
        libraries();
    else
        return 2;
    return 0;
}
