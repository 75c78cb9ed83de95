#pragma once

#include "platform/applescript/values/Application.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace mervo::test {

/// A small application for tests: accounts with boxes with letters. It counts what it is asked, so that a test can
/// see that a bulk request was one request.
struct ToyLetter {
    std::int64_t id = 0;
    std::string subject;
    std::string sender;
    std::int64_t size = 0;
    applescript::Date received;
    bool isRead = false;
    std::string note; // empty: missing value
    std::vector<std::string> recipients;
};

struct ToyBox {
    std::string name;
    std::vector<ToyLetter> letters;
};

struct ToyAccount {
    std::string id;
    std::string name;
    std::vector<ToyBox> boxes;
};

struct ToyWorld {
    std::vector<ToyAccount> accounts;
    bool isRunning = false;
    bool refusesAccess = false;
    int made = 0; // times the application was made
    int launches = 0;
    int bulkRequests = 0;
    int singleRequests = 0;
    int listings = 0; // times elements were made
    int madeItems = 0; // of the column of sizes, which makes its items when they are asked for
    std::vector<std::string> commands;

    /// Two accounts, "Home" with INBOX (three letters) and Old, "Work" with INBOX (one letter).
    static ToyWorld sample();
    /// One account "Bulk" with a box INBOX of so many letters.
    static ToyWorld large(std::size_t letters);
};

/// Registers the application "Post" (also "Toy Post", com.example.post) over a world that outlives the registry.
void registerToyPost(applescript::ApplicationRegistry& registry, ToyWorld& world);

/// Runs a script text over the world; the display form of its result, or "error NUMBER: MESSAGE".
/// No processor time: unlimited.
std::string runOver(ToyWorld& world, const std::string& script, const std::vector<std::string>& arguments = {},
    std::chrono::nanoseconds processorTime = {});
/// The same without any application, within bounds (0 steps: unlimited).
std::string runAlone(const std::string& script, std::uint64_t steps = 0, std::size_t bytes = std::size_t(1) << 30);

} // namespace mervo::test
