#include "core/foundation/StoreFailures.h"

#include "core/foundation/DatabaseFailure.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <utility>

namespace mervo::StoreFailures {

namespace {

thread_local Scope* innermost = nullptr;

/// For whoever looks after the machine: SQLite's own words as well.
std::string logged(const std::string& sentence, const std::exception& reason)
{
    const auto* database = dynamic_cast<const sqlite::Error*>(&reason);
    return database == nullptr ? sentence
                               : fmt::format("{} [SQLite {}: {}]", sentence, database->code(), reason.what());
}

} // namespace

Scope::Scope() noexcept
    : outer_(std::exchange(innermost, this))
{
}

Scope::~Scope()
{
    innermost = outer_;
}

void Scope::hear(const std::string& sentence)
{
    if (std::find(sentences_.begin(), sentences_.end(), sentence) == sentences_.end())
        sentences_.push_back(sentence);
}

void report(std::string_view what, const std::exception& reason) noexcept
{
    try {
        const std::string sentence = fmt::format("{}: {}", what, inWords(reason));
        platform::logError("Store", logged(sentence, reason));
        for (Scope* scope = innermost; scope != nullptr; scope = scope->outer_)
            scope->hear(sentence);
    } catch (const std::exception&) {
        platform::logError("Store", what); // no memory for more
    }
}

std::string inWords(const std::exception& reason)
{
    if (const auto* database = dynamic_cast<const sqlite::Error*>(&reason))
        return DatabaseFailure::sentence(*database);
    if (const auto* file = dynamic_cast<const std::filesystem::filesystem_error*>(&reason)) {
        return fmt::format("\"{}\" cannot be created or used ({}); make it and the folder above it yours and writable",
            file->path1().string(), file->code().message());
    }
    return reason.what();
}

} // namespace mervo::StoreFailures
