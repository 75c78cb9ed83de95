#pragma once

#include <filesystem>
#include <vector>

/// Where jobs lie. Computed from the user's home alone, so that every process of a user finds the same runner, whatever
/// session it belongs to. Nothing is created.
namespace mervo::jobs {

/// ~/Library/LaunchAgents: the property lists that are loaded at log-in.
std::filesystem::path agentsFolder();
/// The property lists in it, sorted.
std::vector<std::filesystem::path> propertyLists();

// What the own runner and launchctl tell each other: files below agentsFolder()/.launchd.

/// Held by the runner while it lives.
std::filesystem::path lockFile();
/// A link to its property list for each job that the runner looks after, named after the job.
std::filesystem::path loadedFolder();
/// A file for each job that shall start now, named after it. The runner removes it.
std::filesystem::path requestsFolder();
/// The last run of each job (RunRecord), named after it.
std::filesystem::path runsFolder();

} // namespace mervo::jobs
