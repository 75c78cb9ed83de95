#include "cockpit/model/operations/CockpitStores.h"

#include "core/foundation/ConfigDir.h"
#include "core/foundation/StoreFailures.h"
#include "core/foundation/Text.h"
#include "platform/unified_log.h"

#include <exception>
#include <utility>

namespace mervo {

namespace {

using namespace std::chrono_literals;

constexpr auto kReadWait = 50ms;
constexpr auto kWriteWait = 90s; ///< a minute's lock must not cost a row of the trail
constexpr std::int64_t kShownRows = 25;
constexpr auto kChannel = "cockpit";
constexpr auto kActor = "cockpit";

std::int64_t firstNumber(Database& database, const char* sql)
{
    auto query = database.prepare(sql);
    return query.step() ? query.integer(0) : 0;
}

/// One view of the database for several reads.
class Snapshot {
public:
    explicit Snapshot(Database& database)
        : database_(database)
    {
        database_.execute("BEGIN");
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot()
    {
        try {
            database_.execute("ROLLBACK"); // nothing was written
        } catch (const std::exception& failure) {
            platform::logError("Cockpit", failure.what());
        }
    }

private:
    Database& database_;
};

} // namespace

CockpitStores::Open::Open(std::shared_ptr<MervoDB> database)
    : db(std::move(database))
    , audit(db)
    , rules(db)
    , feedback(db)
    , asks(feedback)
{
}

void CockpitStores::Open::logHuman(const char* action, const AuditLog::Details& details, const char* reason)
{
    audit.log(kActor, action, std::nullopt, details, "executed", reason);
}

void CockpitStores::finish()
{
    writes_.waitForDone();
}

bool CockpitStores::Connection::isCurrent() const
{
    const auto now = platform::fileStamp(ConfigDir::databaseURL());
    return stores != nullptr && file && now && now->isSameFile(*file);
}

CockpitStores::Connection CockpitStores::connected(std::shared_ptr<MervoDB> db)
{
    return {std::make_shared<Open>(std::move(db)), platform::fileStamp(ConfigDir::databaseURL())};
}

std::optional<CockpitStores::Reading> CockpitStores::read(std::string& why)
{
    const StoreFailures::Scope failures;
    why.clear();
    try {
        auto reading = readNow();
        if (failures.sentences().empty())
            return reading;
        why = Text::join(failures.sentences(), "; ");
    } catch (const std::exception& failure) {
        why = "the audit trail and the rules could not be read: " + StoreFailures::inWords(failure);
    }
    readVersion_ = -1; // the next tick asks for everything again
    return std::nullopt;
}

std::optional<CockpitStores::Reading> CockpitStores::readNow()
{
    if (!reader_.isCurrent()) {
        reader_ = connected(MervoDB::existing(kReadWait));
        readVersion_ = -1;
    }
    if (reader_.stores->db == nullptr)
        return Reading{std::vector<AuditEntry>{}, std::vector<PolicyRule>{}, {}};
    return reader_.stores->db->database().read(
        [this](Database& database) { return readSnapshot(database, *reader_.stores); });
}

std::optional<CockpitStores::Reading> CockpitStores::readSnapshot(Database& database, Open& stores)
{
    const Snapshot snapshot(database);
    firstNumber(database, "SELECT COUNT(*) FROM sqlite_master"); // takes the lock for the reads that follow, or throws
    const std::int64_t version = firstNumber(database, "PRAGMA data_version");
    Reading reading;
    if (version != readVersion_) {
        reading.audit = stores.audit.recent(kShownRows);
        reading.rules = stores.rules.all();
    }
    reading.questions = stores.feedback.openQuestions(kChannel);
    readVersion_ = version;
    return reading;
}

std::shared_ptr<CockpitStores::Open> CockpitStores::writing()
{
    const std::scoped_lock guard(writerMutex_);
    if (writer_.stores == nullptr || writer_.stores->db == nullptr || !writer_.isCurrent()) {
        std::shared_ptr<MervoDB> db;
        try {
            ConfigDir::ensureExists();
            db = std::make_shared<MervoDB>(ConfigDir::url(), kWriteWait);
        } catch (const std::exception& failure) {
            StoreFailures::report("the database could not be opened", failure);
        }
        writer_ = connected(std::move(db));
    }
    return writer_.stores;
}

void CockpitStores::write(std::function<void(Open&)> work, std::function<void(const std::string& why)> failed)
{
    writes_.setMaxThreadCount(1);
    writes_.start([this, job = std::move(work), tell = std::move(failed)] {
        const StoreFailures::Scope failures;
        job(*writing());
        if (!failures.sentences().empty())
            tell(Text::join(failures.sentences(), "; "));
    });
}

} // namespace mervo
