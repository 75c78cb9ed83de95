#pragma once

#include "frontends/mcp/Json.h"

#include <optional>
#include <string>
#include <string_view>

/// The revisions of the protocol, and what they ask of every answer.
///
/// The older revisions open a session by `initialize` and agree there on a revision. The newest one has no session:
/// each request names its revision under "_meta", and each result says of itself what it is.
namespace mervo::mcp {

enum class Era { session, stateless };

namespace Protocol {

/// Newest first, as JSON.
inline constexpr std::string_view kSupportedList =
    R"(["2026-07-28","2025-11-25","2025-06-18","2025-03-26","2024-11-05"])";

/// How long a client of the stateless era may keep what we say of ourselves: an hour, and for itself only, since the
/// names of the tools depend on the client.
inline constexpr std::string_view kCacheHints = R"("ttlMs":3600000,"cacheScope":"private",)";

bool isSupported(std::string_view version);

/// What `initialize` answers: the client's revision where we know it as one with sessions, else our newest such.
std::string_view negotiate(std::string_view wanted);

/// The revision that a request names for itself; an absent value in a session.
const json::Value& statedVersion(const json::Value& params);

/// "data" of an error about a revision: what we support, and what was asked for when that can be said.
std::string versionData(const json::Value& requested);

/// Who we are, as JSON.
std::string identity();

/// The members that open each result of an era, with a comma behind them; nothing in a session without `meta`, the
/// members that a result's `_meta` has of its own.
std::string resultOpening(Era era, std::string_view meta = {});

} // namespace Protocol

} // namespace mervo::mcp
