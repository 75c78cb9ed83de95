#include "platform/desk/session/SessionModule.h"
#include "platform/desk/session/WindowClosing.h"
#include "platform/desk/session/WindowPlacing.h"
#include "platform/time_limit.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {
namespace {

constexpr std::chrono::milliseconds kBusPatience{10'000}; // the bus may have to start a file manager first
constexpr std::chrono::milliseconds kDisplayPatience{5'000};

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct FreeVariant {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
struct FreeMemory {
    void operator()(gpointer memory) const { g_free(memory); }
};
using Bus = std::unique_ptr<GDBusConnection, Unref>;
using Answer = std::unique_ptr<GVariant, FreeVariant>;
using Text = std::unique_ptr<char, FreeMemory>;

/// Takes over what a GLib function has put there.
class Failure {
public:
    GError** place() { return &error_; }
    std::string text() const { return error_ == nullptr ? "no reason given" : error_->message; }
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure() { g_clear_error(&error_); }

private:
    GError* error_ = nullptr;
};

/// GLib starts a bus of its own for a display where none runs; nobody would end that one.
bool hasBus()
{
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address != nullptr && *address != '\0')
        return true;
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    std::error_code error;
    return folder != nullptr && std::filesystem::exists(std::filesystem::path(folder) / "bus", error);
}

/// Null when there is none.
Bus connect(std::string& why)
{
    if (!hasBus()) {
        why = "there is no session bus";
        return nullptr;
    }
    Failure failure;
    Bus bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, failure.place()));
    if (bus) {
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    } else {
        why = failure.text();
    }
    return bus;
}

struct Method {
    const char* name;
    const char* path;
    const char* interface;
    const char* member;
};

/// Null with a reason when it fails. `arguments` is floating and taken over.
Answer call(const Bus& bus, const Method& method, GVariant* arguments, GDBusCallFlags flags, std::string& why)
{
    Failure failure;
    Answer answer(g_dbus_connection_call_sync(bus.get(), method.name, method.path, method.interface, method.member,
        arguments, nullptr, flags, static_cast<int>(kBusPatience.count()), nullptr, failure.place()));
    if (!answer)
        why = failure.text();
    return answer;
}

Answer askBus(const Bus& bus, const char* member, GVariant* arguments)
{
    std::string ignored;
    return call(bus, {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member}, arguments,
        G_DBUS_CALL_FLAGS_NONE, ignored);
}

/// The names that one of the processes owns ("org.gnome.Evolution"), without the bus's own numbers.
std::vector<std::string> namesOf(const Bus& bus, std::span<const pid_t> processes)
{
    std::vector<std::string> found;
    const Answer names = askBus(bus, "ListNames", nullptr);
    if (!names)
        return found;
    const Answer list(g_variant_get_child_value(names.get(), 0));
    for (gsize index = 0; index < g_variant_n_children(list.get()); ++index) {
        const Answer item(g_variant_get_child_value(list.get(), index));
        const char* name = g_variant_get_string(item.get(), nullptr);
        if (*name == ':' || std::string_view(name) == "org.freedesktop.DBus")
            continue;
        const Answer owner = askBus(bus, "GetConnectionUnixProcessID", g_variant_new("(s)", name));
        guint32 process = 0;
        if (owner)
            g_variant_get(owner.get(), "(u)", &process);
        if (std::ranges::find(processes, static_cast<pid_t>(process)) != processes.end())
            found.emplace_back(name);
    }
    return found;
}

/// Desktop Entry Specification, D-Bus activation: the object of an application by its name.
std::string objectPath(std::string name)
{
    std::ranges::replace(name, '.', '/');
    std::ranges::replace(name, '-', '_');
    return "/" + name;
}

/// Whether it has the action. One that does not list its actions gets the benefit of the doubt.
bool mayQuit(const Bus& bus, const std::string& name, const std::string& path)
{
    std::string ignored;
    const Answer actions = call(bus, {name.c_str(), path.c_str(), "org.gtk.Actions", "List"}, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, ignored);
    if (!actions || !g_variant_is_of_type(actions.get(), G_VARIANT_TYPE("(as)")))
        return true;
    const Answer list(g_variant_get_child_value(actions.get(), 0));
    gsize count = 0;
    const std::unique_ptr<const char*, FreeMemory> listed(g_variant_get_strv(list.get(), &count));
    return std::any_of(
        listed.get(), listed.get() + count, [](const char* action) { return std::string_view(action) == "quit"; });
}

bool quitAt(const Bus& bus, const std::string& name)
{
    const std::string path = objectPath(name);
    std::string ignored;
    return g_variant_is_object_path(path.c_str()) == TRUE && mayQuit(bus, name, path)
        && call(bus, {name.c_str(), path.c_str(), "org.freedesktop.Application", "ActivateAction"},
            g_variant_new("(sava{sv})", "quit", nullptr, nullptr), G_DBUS_CALL_FLAGS_NO_AUTO_START, ignored);
}

bool isMadeFor(GAppInfo* program, const std::string& contentType)
{
    const char* const* types = g_app_info_get_supported_types(program);
    if (types == nullptr || !g_strv_contains(types, contentType.c_str()))
        return false;
    const char* categories =
        G_IS_DESKTOP_APP_INFO(program) ? g_desktop_app_info_get_categories(G_DESKTOP_APP_INFO(program)) : nullptr;
    const std::string_view all = categories == nullptr ? "" : categories;
    return all.find("WebBrowser") == std::string_view::npos && all.find("TextEditor") == std::string_view::npos;
}

/// The program that a command line of a desktop entry starts.
std::string programOf(GAppInfo* info)
{
    constexpr std::string_view kInside = "--command=";
    const char* line = g_app_info_get_commandline(info);
    int count = 0;
    char** words = nullptr;
    if (line == nullptr || g_shell_parse_argv(line, &count, &words, nullptr) == FALSE)
        return {};
    const std::unique_ptr<char*, void (*)(char**)> held(words, g_strfreev);
    std::string program = words[0];
    if (std::filesystem::path(program).filename() != "flatpak")
        return program;
    for (int index = 1; index < count; ++index) {
        if (std::string_view(words[index]).starts_with(kInside))
            return words[index] + kInside.size();
    }
    return {};
}

/// Session::showItem and Session::askToQuit, as long as they take.
std::string show(const std::string& path)
{
    std::string why;
    const Bus bus = connect(why);
    if (!bus)
        return why;
    Failure failure;
    const Text address(g_filename_to_uri(path.c_str(), nullptr, failure.place()));
    if (!address)
        return failure.text();
    const char* const items[] = {address.get()};
    const Method method{
        "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", "ShowItems"};
    const Answer answer =
        call(bus, method, g_variant_new("(@ass)", g_variant_new_strv(items, 1), ""), G_DBUS_CALL_FLAGS_NONE, why);
    return answer ? std::string() : why;
}

std::string quit(std::span<const pid_t> processes)
{
    std::string why;
    const Bus bus = connect(why);
    if (!bus)
        return why;
    const auto names = namesOf(bus, processes);
    const bool isAsked = std::ranges::any_of(names, [&](const std::string& name) { return quitAt(bus, name); });
    return isAsked ? "" : "it offers no action “quit” on the session bus";
}

template <typename Work>
std::string withinBusLimit(Work work)
{
    return platform::withinLimit(kBusPatience, std::move(work)).value_or("the session bus does not answer within 10 s");
}

class GioSession final : public Session {
public:
    std::string showItem(const std::string& path) const override
    {
        return withinBusLimit([path] { return show(path); });
    }

    std::string defaultProgram(const std::string& contentType) const override
    {
        const std::unique_ptr<GAppInfo, Unref> info(g_app_info_get_default_for_type(contentType.c_str(), FALSE));
        return info && isMadeFor(info.get(), contentType) ? programOf(info.get()) : std::string();
    }

    std::string askToQuit(std::span<const pid_t> processes) const override
    {
        return withinBusLimit([all = std::vector(processes.begin(), processes.end())] { return quit(all); });
    }

    std::string closeWindows(std::span<const pid_t> processes) const override
    {
        const std::optional<int> closed = platform::withinLimit(
            kDisplayPatience, [all = std::vector(processes.begin(), processes.end())] { return closeWindowsOf(all); });
        if (!closed)
            return "the X display does not answer within 5 s";
        return *closed > 0 ? "" : "it has no window that can be closed from here";
    }

    bool placeWindow(std::uint32_t window, int left, int top, int width, int height) const override
    {
        return platform::withinLimit(kDisplayPatience, [=] {
            return desk::placeWindow(window, left, top, width, height);
        }).value_or(false);
    }
};

} // namespace

const Session* mervoSession()
{
    static const GioSession session;
    return &session;
}

} // namespace mervo::desk
