#include "bench/Measure.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <sqlite3.h>
#include <stdexcept>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace mervo::bench {
namespace {

/// One SQLite connection and one prepared statement, with nothing around them.
class Bare {
public:
    Bare(const std::string& file, int flags, const char* schema, const std::string& statement)
    {
        check(sqlite3_open_v2(file.c_str(), &connection_, flags, nullptr));
        check(sqlite3_exec(connection_, schema, nullptr, nullptr, nullptr));
        check(sqlite3_prepare_v2(connection_, statement.c_str(), -1, &statement_, nullptr));
    }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;
    ~Bare()
    {
        sqlite3_finalize(statement_);
        sqlite3_close(connection_);
    }

    void bindAll(const std::string& text)
    {
        for (int i = 1; i <= sqlite3_bind_parameter_count(statement_); ++i)
            check(sqlite3_bind_text(statement_, i, text.c_str(), -1, SQLITE_STATIC));
    }

    /// Steps to the end and looks at every value of every row.
    std::int64_t run()
    {
        std::int64_t rows = 0;
        int code = 0;
        for (; (code = sqlite3_step(statement_)) == SQLITE_ROW; ++rows) {
            for (int i = 0; i < sqlite3_column_count(statement_); ++i)
                sqlite3_column_text(statement_, i);
        }
        if (code != SQLITE_DONE)
            check(code);
        check(sqlite3_reset(statement_));
        return rows;
    }

private:
    void check(int code) const
    {
        if (code != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection_));
    }

    sqlite3* connection_ = nullptr;
    sqlite3_stmt* statement_ = nullptr;
};

/// SQLite's defaults: rollback journal, full synchronisation, as the home's database.
class Insert final : public Measure {
public:
    explicit Insert(const std::string& file)
        : bare_(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
            "CREATE TABLE IF NOT EXISTS audit (id INTEGER PRIMARY KEY AUTOINCREMENT, timestamp TEXT NOT NULL,"
            " actor TEXT NOT NULL, action TEXT NOT NULL, account_id TEXT, outcome TEXT NOT NULL, reason TEXT,"
            " details TEXT NOT NULL);"
            "CREATE INDEX IF NOT EXISTS idx_audit_time ON audit (timestamp);"
            "CREATE INDEX IF NOT EXISTS idx_audit_action_outcome_time ON audit (action, outcome, timestamp);",
            "INSERT INTO audit (timestamp, actor, action, account_id, outcome, reason, details)\n"
            "VALUES ('2026-03-01T08:15:42Z', 'cli', 'how_it_works', NULL, 'executed', 'read', ?);")
    {
        bare_.bindAll(details_);
    }

    Sample sample() override
    {
        const std::int64_t before = ownCpu();
        Sample sample{.wall = timed([&] { bare_.run(); })};
        sample.cpu = ownCpu() - before;
        return sample;
    }

private:
    std::string details_ = R"({"result":")" + std::string(500, 'x') + R"("})"; ///< as long as a real row's
    Bare bare_;
};

class Scan final : public Measure {
public:
    Scan(const std::string& file, const std::string& statement, const std::string& text)
        : text_(text)
        , bare_(file, SQLITE_OPEN_READONLY, "", statement)
    {
        bare_.bindAll(text_);
    }

    Sample sample() override
    {
        return {.wall = timed([&] { rows_ = bare_.run(); })};
    }

    std::map<std::string, std::int64_t> notes() override { return {{"rows", rows_}}; }

private:
    std::string text_;
    Bare bare_;
    std::int64_t rows_ = 0;
};

class Rename final : public Measure {
public:
    Rename(const std::string& preparation, const std::string& list)
        : preparation_(preparation)
    {
        std::ifstream lines(list);
        for (std::string from, to; std::getline(lines, from) && std::getline(lines, to);)
            pairs_.emplace_back(from, to);
    }

    Sample sample() override
    {
        if (std::system(preparation_.c_str()) != 0)
            throw std::runtime_error(preparation_ + " failed");
        const std::int64_t before = ownCpu();
        Sample sample{.wall = timed([&] {
            for (const auto& [from, to] : pairs_) {
                if (std::rename(from.c_str(), to.c_str()) != 0)
                    throw std::runtime_error(from + ": " + std::strerror(errno));
            }
        })};
        sample.cpu = ownCpu() - before;
        return sample;
    }

    std::map<std::string, std::int64_t> notes() override
    {
        return {{"files", static_cast<std::int64_t>(pairs_.size())}};
    }

private:
    std::string preparation_;
    std::vector<std::pair<std::string, std::string>> pairs_;
};

/// Goes to every file below a folder.
class Walk final : public Measure {
public:
    /// What is done with each, by its name in an open folder. Gives -1 when that failed.
    using Look = ssize_t (*)(int folder, const char* name);

    Walk(const std::string& folder, Look look)
        : folder_(folder)
        , look_(look)
    {
    }

    Sample sample() override
    {
        files_ = 0;
        return {.wall = timed([&] { enter(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); })};
    }

    std::map<std::string, std::int64_t> notes() override { return {{"files", files_}}; }

private:
    void enter(int descriptor)
    {
        DIR* folder = descriptor < 0 ? nullptr : fdopendir(descriptor);
        if (folder == nullptr)
            throw std::runtime_error(folder_ + ": " + std::strerror(errno));
        while (const dirent* entry = readdir(folder)) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            if (entry->d_type == DT_DIR) {
                enter(openat(descriptor, entry->d_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            } else if (look_(descriptor, entry->d_name) < 0) {
                throw std::runtime_error(folder_ + ": " + std::strerror(errno));
            } else {
                ++files_;
            }
        }
        closedir(folder);
    }

    std::string folder_;
    Look look_;
    std::int64_t files_ = 0;
};

/// As little as a program can read that must look into every message: 4 KiB hold the headers.
ssize_t readStart(int folder, const char* name)
{
    std::array<char, 4096> block;
    const int file = openat(folder, name, O_RDONLY | O_CLOEXEC);
    const ssize_t count = file < 0 ? -1 : read(file, block.data(), block.size());
    if (file >= 0)
        close(file);
    return count;
}

/// As little as a program can ask that must see whether a file was written in place.
ssize_t stamp(int folder, const char* name)
{
    struct stat found { };
    return fstatat(folder, name, &found, 0);
}

} // namespace

std::int64_t ownCpu()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

std::unique_ptr<Measure> makeInsert(const Words& words)
{
    return std::make_unique<Insert>(words.at(0));
}
std::unique_ptr<Measure> makeWalk(const Words& words)
{
    return std::make_unique<Walk>(words.at(0), readStart);
}
std::unique_ptr<Measure> makeStamps(const Words& words)
{
    return std::make_unique<Walk>(words.at(0), stamp);
}
std::unique_ptr<Measure> makeRename(const Words& words)
{
    return std::make_unique<Rename>(words.at(0), words.at(1));
}

std::unique_ptr<Measure> makeScan(const Words& words)
{
    return std::make_unique<Scan>(words.at(0), words.at(1), words.at(2));
}

} // namespace mervo::bench
