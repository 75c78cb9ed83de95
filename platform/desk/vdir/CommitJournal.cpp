#include "platform/desk/vdir/CommitJournal.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

using Kind = StagedOperation::Kind;

constexpr std::string_view kHeader = "mervo-commit 1", kEnd = "end";
constexpr std::pair<Kind, std::string_view> kKinds[] = {{Kind::create, "create"}, {Kind::replace, "replace"},
    {Kind::remove, "remove"}, {Kind::makeFolder, "make-folder"}, {Kind::removeFolder, "remove-folder"}};

class Fields {
public:
    explicit Fields(std::string_view bytes)
        : rest_(bytes)
    {
    }
    /// The next field; nothing behind the last one.
    std::optional<std::string_view> take()
    {
        const std::size_t end = rest_.find('\0');
        if (end == std::string_view::npos)
            return std::nullopt;
        const std::string_view field = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return field;
    }
    template <typename Number>
    bool take(Number& number)
    {
        const auto field = take();
        return field && std::from_chars(field->data(), field->data() + field->size(), number).ec == std::errc();
    }

private:
    std::string_view rest_;
};

bool staysInside(const std::filesystem::path& relative)
{
    return relative.is_relative() && std::ranges::find(relative, "..") == relative.end();
}

bool takeOperation(Fields& fields, std::string_view word, const std::filesystem::path& root,
    const std::filesystem::path& stage, StagedOperation& operation)
{
    const auto kind = std::ranges::find(kKinds, word, &std::pair<Kind, std::string_view>::second);
    const auto target = fields.take(), staged = fields.take();
    if (kind == std::end(kKinds) || !target || !staged || !staysInside(*target) || !staysInside(*staged))
        return false;
    operation.kind = kind->first;
    operation.target = root / *target;
    operation.staged = stage / *staged;
    return fields.take(operation.made.inode) && fields.take(operation.made.bytes)
        && fields.take(operation.made.modified);
}

} // namespace

std::string writeJournal(const std::filesystem::path& root, const std::vector<StagedOperation>& operations)
{
    std::string text(kHeader);
    text += '\0';
    for (const StagedOperation& operation : operations) {
        const auto kind = std::ranges::find(kKinds, operation.kind, &std::pair<Kind, std::string_view>::first);
        for (const std::string& field : {std::string(kind->second), operation.target.lexically_relative(root).string(),
                 operation.staged.filename().string(), fmt::to_string(operation.made.inode),
                 fmt::to_string(operation.made.bytes), fmt::to_string(operation.made.modified)})
            text.append(field) += '\0';
    }
    return text.append(kEnd) + '\0';
}

std::optional<std::vector<StagedOperation>> readJournal(
    const std::filesystem::path& root, const std::filesystem::path& stage, std::string_view bytes)
{
    Fields fields(bytes);
    if (fields.take() != kHeader)
        return std::nullopt;
    std::vector<StagedOperation> operations;
    for (auto word = fields.take(); word; word = fields.take()) {
        if (*word == kEnd)
            return operations;
        if (!takeOperation(fields, *word, root, stage, operations.emplace_back()))
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace mervo::desk
