// Everything that a client can send, from the bytes of the stream to the answers; the calls stop before the gate.

#include "frontends/mcp/Dispatcher.h"
#include "frontends/mcp/LineReader.h"
#include "frontends/mcp/Reply.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace mervo::mcp;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// What must hold of every line that leaves the server.
void checkLine(std::string_view line)
{
    require(line.size() <= Reply::kLongestLine);
    require(!line.empty() && line.find('\n') == line.size() - 1);
    const auto message = nlohmann::json::parse(line, nullptr, false);
    require(message.is_object() && message["jsonrpc"] == "2.0");
    require(message.contains("result") != message.contains("error"));
    require(!message.contains("result") || message["id"].is_string() || message["id"].is_number());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Dispatcher dispatcher(std::nullopt, "Instructions.",
        {.send = checkLine,
            .submit =
                [](const ToolCall& call) {
                    require(call.tool != nullptr && !call.id.empty() && call.actor.rfind("mcp:", 0) == 0);
                    return CallPool::Submission{call.args.size() % 3 == 0 ? CallPool::Submission::accepted
                            : call.args.size() % 3 == 1                   ? CallPool::Submission::duplicate
                                                                          : CallPool::Submission::full};
                },
            .cancel = [](std::string_view) { return true; }});
    LineReader lines({.line = [&](std::string_view line) { dispatcher.handleLine(line); },
                         .tooLong = [&] { dispatcher.handleTooLongLine(); }},
        4096);
    const std::size_t cut = size > 0 ? data[0] % (size + 1) : 0; // the stream arrives in two pieces
    lines.feed(bytes.substr(0, cut));
    lines.feed(bytes.substr(cut));
    lines.finish();
    return 0;
}
