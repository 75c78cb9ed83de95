#include "frontends/mcp/Protocol.h"

#include <algorithm>
#include <array>

namespace mervo::mcp::Protocol {

namespace {

constexpr std::string_view kStateless = "2026-07-28";
constexpr std::array<std::string_view, 4> kWithSession{"2025-11-25", "2025-06-18", "2025-03-26", "2024-11-05"};
constexpr std::size_t kLongestEcho = 64; // no revision has a longer name

bool hasSession(std::string_view version)
{
    return std::find(kWithSession.begin(), kWithSession.end(), version) != kWithSession.end();
}

} // namespace

bool isSupported(std::string_view version)
{
    return version == kStateless || hasSession(version);
}

std::string_view negotiate(std::string_view wanted)
{
    return hasSession(wanted) ? wanted : kWithSession.front();
}

const json::Value& statedVersion(const json::Value& params)
{
    return params["_meta"]["io.modelcontextprotocol/protocolVersion"];
}

std::string versionData(const json::Value& requested)
{
    std::string data = R"({"supported":)";
    data += kSupportedList;
    if (requested.is(json::Value::Kind::text) && requested.text.size() <= kLongestEcho)
        data += R"(,"requested":)" + json::quoted(requested.text);
    return data + "}";
}

std::string identity()
{
    return R"({"name":"mervo","title":"Mervo","version":")" MERVO_VERSION
           R"(","description":"The owner's mail, calendar, reminders, notes and messages, under the owner's approval."})";
}

std::string resultOpening(Era era, std::string_view meta)
{
    const bool stateless = era == Era::stateless;
    std::string opening = stateless ? R"("resultType":"complete",)" : "";
    if (!stateless && meta.empty())
        return opening;
    opening += R"("_meta":{)";
    if (stateless) {
        opening += R"("io.modelcontextprotocol/serverInfo":)" + identity();
        opening += meta.empty() ? "" : ",";
    }
    return opening.append(meta).append("},");
}

} // namespace mervo::mcp::Protocol
