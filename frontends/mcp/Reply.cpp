#include "frontends/mcp/Reply.h"

#include "platform/unicode.h"

#include <fmt/format.h>

#include <algorithm>

namespace mervo::mcp::Reply {

namespace {

constexpr std::size_t kEnvelope = 1024; // what stands around an answer's id and contents, and the note about a cut
constexpr std::size_t kLeastRoom = 4096; // for a text beside an id that is as long as a line
constexpr std::size_t kLongestEcho = 128;

/// What a byte of valid UTF-8 takes inside a JSON string.
std::size_t escapedLength(char byte)
{
    if (byte == '"' || byte == '\\' || byte == '\b' || byte == '\f' || byte == '\n' || byte == '\r' || byte == '\t')
        return 2;
    return static_cast<unsigned char>(byte) < 0x20 ? 6 : 1;
}

std::size_t characterStart(std::string_view text, std::size_t at)
{
    while (at > 0 && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80)
        --at;
    return at;
}

/// The text, or as much of it as takes `room` bytes inside a JSON string, with a note behind it.
std::string bounded(std::string_view text, std::size_t room)
{
    if (text.size() * 6 <= room)
        return std::string(text);
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t length = escapedLength(text[at]);
        if (length > room) {
            const std::size_t kept = characterStart(text, at);
            return fmt::format("{}\n[cut here: {} of {} bytes are left out; an answer holds at most 10 MiB]",
                text.substr(0, kept), text.size() - kept, text.size());
        }
        room -= length;
    }
    return std::string(text);
}

void appendList(std::string& meta, std::string_view key, const std::vector<std::string>& sentences)
{
    if (sentences.empty())
        return;
    meta.append(meta.empty() ? "" : ",").append(json::quoted(key)).append(":[");
    for (const std::string& sentence : sentences)
        meta.append(json::quoted(sentence)).append(",");
    meta.back() = ']';
}

std::string metaOf(const Notices& notices)
{
    std::string meta;
    appendList(meta, "org.mervolabs/remarks", notices.remarks);
    appendList(meta, "org.mervolabs/warnings", notices.warnings);
    return meta;
}

void appendText(std::string& content, std::string_view validText)
{
    content.append(R"({"type":"text","text":)");
    json::appendQuoted(content, validText);
    content.append("}");
}

/// One paragraph for the model, a line for each sentence.
std::string paragraph(const Notices& notices)
{
    std::string text;
    for (const std::string& remark : notices.remarks)
        text.append("note: ").append(remark).append("\n");
    for (const std::string& warning : notices.warnings)
        text.append("warning: ").append(warning).append("\n");
    text.pop_back();
    return bounded(platform::withValidUtf8(text), kLongestLine / 4);
}

/// `isError` is the member that says so.
std::string toolAnswer(
    const RequestId& id, std::string_view text, std::string_view isError, Era era, const Notices& notices)
{
    std::string content = "{";
    content.append(Protocol::resultOpening(era, metaOf(notices)));
    content.append(R"("content":[)");
    std::string end;
    if (!notices.empty()) {
        end.append(",");
        appendText(end, paragraph(notices));
    }
    end.append("],").append(isError).append("}");
    const std::size_t taken = id.size() + content.size() + end.size() + kEnvelope;
    const std::size_t room = taken + kLeastRoom < kLongestLine ? kLongestLine - taken : kLeastRoom;
    // Repaired before it is measured: a replacement character is longer than the byte that it stands for.
    appendText(
        content, platform::isValidUtf8(text) ? bounded(text, room) : bounded(platform::withValidUtf8(text), room));
    content.append(end);
    return Reply::result(id, content);
}

} // namespace

std::string result(const RequestId& id, std::string_view result)
{
    std::string line;
    line.reserve(id.size() + result.size() + 40);
    line.append(R"({"jsonrpc":"2.0","id":)").append(id).append(R"(,"result":)").append(result).append("}\n");
    return line;
}

std::string emptyResult(const RequestId& id, Era era)
{
    std::string members = Protocol::resultOpening(era);
    if (!members.empty())
        members.pop_back(); // the comma
    return result(id, "{" + members + "}");
}

std::string error(const RequestId& id, int code, std::string_view text, std::string_view data)
{
    std::string line = R"({"jsonrpc":"2.0",)";
    if (!id.empty())
        line.append(R"("id":)").append(id).append(",");
    line.append(R"("error":{"code":)").append(std::to_string(code));
    line.append(R"(,"message":)").append(json::quoted(text));
    if (!data.empty())
        line.append(R"(,"data":)").append(data);
    return line.append("}}\n");
}

std::string toolResult(const RequestId& id, std::string_view text, Era era, const Notices& notices)
{
    return toolAnswer(id, text, R"("isError":false)", era, notices);
}

std::string toolError(const RequestId& id, std::string_view text, Era era, const Notices& notices)
{
    return toolAnswer(id, text, R"("isError":true)", era, notices);
}

std::string_view echo(std::string_view word)
{
    return word.substr(0, characterStart(word, std::min(word.size(), kLongestEcho)));
}

} // namespace mervo::mcp::Reply
