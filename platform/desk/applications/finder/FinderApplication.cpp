#include "platform/desk/applications/finder/FinderApplication.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/desk/applications/finder/Reveal.h"
#include "platform/folders.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using applescript::ClassTerm;
using applescript::Designation;
using applescript::Kind;
using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

enum Class : TermId { item = 1, file, folder, disk, finderWindow };
enum Property : TermId { selection = 1, home, desktop };
enum Command : TermId { revealItem = 1, open };

bool isThere(const fs::path& path)
{
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

TermId classOf(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(path, error) ? folder : file;
}

/// What a folder holds, by name; what begins with a full stop is hidden, as in a file manager.
std::vector<fs::path> contentsOf(const fs::path& path)
{
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        if (!entry->path().filename().string().starts_with('.'))
            found.push_back(entry->path());
    }
    std::ranges::sort(found);
    return found;
}

/// Finder itself, whose items are those of the desktop, or one file or folder by its path.
class FinderObject final : public applescript::Object {
public:
    explicit FinderObject(FinderApplication& finder)
        : finder_(finder)
        , class_(CommonTerm::applicationClass)
    {
    }
    FinderObject(FinderApplication& finder, fs::path path)
        : finder_(finder)
        , class_(classOf(path))
        , path_(std::move(path))
    {
    }

    applescript::Application& application() const override { return finder_; }
    const ClassTerm& objectClass() const override { return *finderDictionary().findClass(class_); }
    const fs::path& path() const { return path_; }

    Designation designation() const override
    {
        if (class_ == CommonTerm::applicationClass)
            return {};
        return {Designation::Form::name, objectClass().name, Value::text(path_.string()), {}};
    }

    Value get(TermId property) override
    {
        switch (property) {
        case home:
            return at(platform::userHome());
        case desktop:
            return at(platform::userHome() / "Desktop");
        case selection: // of a window that is not there
            return Value::list(std::vector<Value>());
        default:
            return Value::text(path_.has_filename() ? path_.filename().string() : path_.string());
        }
    }

    Value every(TermId elementClass) override
    {
        std::vector<Value> found;
        if (elementClass == disk)
            found.push_back(at("/"));
        if (elementClass == disk || elementClass == finderWindow)
            return Value::list(std::move(found));
        for (const fs::path& each : contentsOf(place())) {
            if (elementClass == item || classOf(each) == elementClass)
                found.push_back(at(each));
        }
        return Value::list(std::move(found));
    }

    Value named(TermId elementClass, std::string_view name) override
    {
        if (elementClass == disk || elementClass == finderWindow)
            return Object::named(elementClass, name);
        const fs::path wanted = place() / name; // an absolute name stands for itself
        return isThere(wanted) && (elementClass == item || classOf(wanted) == elementClass) ? at(wanted) : Value();
    }

    bool exists() override { return class_ == CommonTerm::applicationClass || isThere(path_); }

    Value coerced(Kind kind) override
    {
        if (kind == Kind::file)
            return Value::file(path_.string());
        return kind == Kind::text ? Value::text(path_.string()) : Value();
    }

private:
    using Object::at;
    Value at(const fs::path& path) const { return Value::object(makeRef<FinderObject>(finder_, path)); }
    fs::path place() const { return class_ == CommonTerm::applicationClass ? platform::userHome() / "Desktop" : path_; }

    FinderApplication& finder_;
    TermId class_;
    fs::path path_;
};

std::vector<ClassTerm> classes()
{
    const applescript::PropertyTerm name{CommonTerm::name, "name"};
    return {
        {CommonTerm::applicationClass, "application", "applications",
            {{selection, "selection"}, {home, "home"}, {desktop, "desktop"}}, {item, file, folder, disk, finderWindow}},
        {item, "item", "items", {name}},
        {file, "file", "files", {}, {}, item},
        {folder, "folder", "folders", {}, {item, file, folder}, item},
        {disk, "disk", "disks", {}, {item, file, folder}, item},
        {finderWindow, "Finder window", "Finder windows", {name}},
    };
}

/// The absolute path of what a command is for. -43 when it is not there.
fs::path pathOf(const Value& what)
{
    const auto* object = what.is(Kind::object) ? dynamic_cast<const FinderObject*>(&what.asObject()) : nullptr;
    std::error_code error;
    const fs::path path = fs::absolute(object != nullptr ? object->path() : fs::path(applescript::toPath(what)), error);
    if (error || path.empty() || !isThere(path))
        throw ScriptError(applescript::ErrorNumber::fileNotFound, fmt::format("File {} wasn’t found.", path.string()));
    return path;
}

void forEach(const Value& what, void (*work)(const fs::path&))
{
    if (what.is(Kind::list)) {
        for (const Value& each : what.asList().items())
            forEach(each, work);
        return;
    }
    try {
        work(pathOf(what));
    } catch (const FinderError& error) {
        throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
}

} // namespace

const applescript::Dictionary& finderDictionary()
{
    static const applescript::Dictionary dictionary("Finder", classes(), {{revealItem, "reveal"}, {open, "open"}});
    return dictionary;
}

const applescript::Dictionary& FinderApplication::dictionary() const
{
    return finderDictionary();
}

Ref<applescript::Object> FinderApplication::root()
{
    return makeRef<FinderObject>(*this);
}

Value FinderApplication::perform(const applescript::CommandCall& call)
{
    forEach(call.direct, call.command == open ? openItem : reveal);
    return Value();
}

void registerFinder(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"Finder"}, "com.apple.finder", finderDictionary,
        [sections] { return std::make_unique<FinderApplication>(sections); });
}

} // namespace mervo::desk
