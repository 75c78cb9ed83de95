#include "platform/desk/vdir/StagedOperation.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace mervo::desk {
namespace {

using Kind = StagedOperation::Kind;
using std::filesystem::path;

[[noreturn]] void refuse(const path& file, int error)
{
    throw VdirError(fmt::format(
        "Nothing was changed: “{}” cannot be written ({}).", file.string(), std::generic_category().message(error)));
}

[[noreturn]] void refuseChanged(const path& file)
{
    throw VdirError(fmt::format(
        "Nothing was changed: another program has written “{}” in the meantime; try again.", file.string()));
}

bool rename(const path& from, const path& to, unsigned how)
{
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), how) == 0;
}

/// File systems without RENAME_NOREPLACE (some in user space) answer EINVAL.
bool moveToFreePlace(const path& from, const path& to)
{
    if (rename(from, to, RENAME_NOREPLACE))
        return true;
    if (errno != EINVAL)
        return false;
    struct stat found { };
    if (::lstat(to.c_str(), &found) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from.c_str(), to.c_str()) == 0;
}

bool holds(const path& file, const ExpectedBytes& expected)
{
    std::string why;
    const auto found = readItem(file, why);
    return found && found->bytes.size() == expected.size && itemFingerprint(found->bytes) == expected.print;
}

void create(const StagedOperation& operation)
{
    if (moveToFreePlace(operation.staged, operation.target))
        return;
    if (errno == EEXIST)
        refuseChanged(operation.target);
    refuse(operation.target, errno);
}

/// Without RENAME_EXCHANGE the place is empty for a moment.
void replaceInTwoSteps(const StagedOperation& operation, const ExpectedBytes& expected)
{
    const path old = operation.staged.string() + ".old";
    if (::rename(operation.target.c_str(), old.c_str()) != 0)
        refuse(operation.target, errno);
    if (!holds(old, expected) || !moveToFreePlace(operation.staged, operation.target)) {
        moveToFreePlace(old, operation.target);
        refuseChanged(operation.target);
    }
}

void replace(const StagedOperation& operation, const ExpectedBytes& expected)
{
    if (!rename(operation.staged, operation.target, RENAME_EXCHANGE)) {
        if (errno == ENOENT)
            refuseChanged(operation.target);
        if (errno != EINVAL)
            refuse(operation.target, errno);
        replaceInTwoSteps(operation, expected);
    } else if (!holds(operation.staged, expected)) {
        rename(operation.staged, operation.target, RENAME_EXCHANGE);
        refuseChanged(operation.target);
    }
}

void takeAway(const StagedOperation& operation)
{
    if (::rename(operation.target.c_str(), operation.staged.c_str()) == 0)
        return;
    if (errno == ENOENT)
        refuseChanged(operation.target);
    refuse(operation.target, errno);
}

void remove(const StagedOperation& operation, const ExpectedBytes& expected)
{
    takeAway(operation);
    if (!holds(operation.staged, expected)) {
        moveToFreePlace(operation.staged, operation.target);
        refuseChanged(operation.target);
    }
}

bool hasOnly(const path& folder, const std::map<std::string, ExpectedBytes>& contents)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        const auto known = contents.find(name);
        if (known == contents.end() ? !name.starts_with('.') : !holds(entry.path(), known->second))
            return false;
    }
    return !error;
}

void removeFolder(const StagedOperation& operation, const std::map<std::string, ExpectedBytes>& contents)
{
    takeAway(operation);
    if (!hasOnly(operation.staged, contents)) {
        moveToFreePlace(operation.staged, operation.target);
        refuseChanged(operation.target);
    }
}

bool isMade(const path& file, const StagedOperation& operation)
{
    const auto stamp = itemStamp(file);
    return stamp
        && (operation.kind == Kind::makeFolder ? stamp->inode == operation.made.inode : *stamp == operation.made);
}

bool putBack(const path& old, const path& target)
{
    return moveToFreePlace(old, target) || errno == EEXIST;
}

bool undoReplace(const StagedOperation& operation)
{
    const path aside = operation.staged.string() + ".old";
    const path old = itemStamp(aside) ? aside : operation.staged;
    if (!itemStamp(old) || (old == operation.staged && isMade(old, operation)))
        return true; // not begun
    if (isMade(operation.target, operation))
        return ::rename(old.c_str(), operation.target.c_str()) == 0;
    return putBack(old, operation.target);
}

bool undoFolder(const StagedOperation& operation)
{
    if (!isMade(operation.target, operation))
        return true;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(operation.target, error)) {
        const std::string name = entry.path().filename().string();
        if (name != "displayname" && name != "color")
            return true; // another program uses it by now
    }
    return moveToFreePlace(operation.target, operation.staged);
}

} // namespace

void apply(const StagedOperation& operation, const ExpectedBytes& expected,
    const std::map<std::string, ExpectedBytes>& contents)
{
    switch (operation.kind) {
    case Kind::create:
    case Kind::makeFolder:
        return create(operation);
    case Kind::replace:
        return replace(operation, expected);
    case Kind::remove:
        return remove(operation, expected);
    case Kind::removeFolder:
        return removeFolder(operation, contents);
    }
}

bool undo(const StagedOperation& operation) noexcept
{
    try {
        switch (operation.kind) {
        case Kind::create:
            return !isMade(operation.target, operation) || ::unlink(operation.target.c_str()) == 0;
        case Kind::makeFolder:
            return undoFolder(operation);
        case Kind::replace:
            return undoReplace(operation);
        case Kind::remove:
        case Kind::removeFolder:
            return !itemStamp(operation.staged) || putBack(operation.staged, operation.target);
        }
    } catch (const std::exception&) { // no memory for a path
    }
    return false;
}

} // namespace mervo::desk
