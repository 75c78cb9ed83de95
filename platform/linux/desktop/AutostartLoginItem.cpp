#include "platform/linux/desktop/AutostartLoginItem.h"

#include "platform/desktop_entry.h"
#include "platform/files.h"

#include <QStandardPaths>

#include <stdexcept>
#include <string_view>

namespace mervo::platform {

namespace {

constexpr std::string_view kBlank = " \t";

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(kBlank);
    return first == text.npos ? std::string_view{} : text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

} // namespace

AutostartLoginItem::AutostartLoginItem(std::filesystem::path program)
    : program_(std::move(program))
    , file_(std::filesystem::path(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString())
          / "autostart/mervo.desktop")
{
}

bool AutostartLoginItem::isEnabled() const
{
    const auto text = readFile(file_);
    if (!text)
        return false;
    bool isOurs = false;
    bool isEntry = false;
    for (std::string_view rest = *text; !rest.empty();) {
        const std::string_view line = trimmed(rest.substr(0, rest.find('\n')));
        rest.remove_prefix(std::min(rest.size(), rest.find('\n') == rest.npos ? rest.size() : rest.find('\n') + 1));
        if (line.starts_with('['))
            isOurs = line == "[Desktop Entry]";
        const auto equals = line.find('=');
        if (!isOurs || equals == line.npos)
            continue;
        const std::string_view key = trimmed(line.substr(0, equals));
        const std::string_view value = trimmed(line.substr(equals + 1));
        if ((key == "Hidden" && value == "true") || (key == "X-GNOME-Autostart-enabled" && value == "false"))
            return false;
        isEntry |= key == "Exec" && !value.empty();
    }
    return isEntry;
}

void AutostartLoginItem::setEnabled(bool enabled)
{
    std::error_code failure;
    if (enabled) {
        failure = createPrivateFolder(file_.parent_path());
        if (!failure)
            failure = replaceFile(file_, entry());
    } else {
        std::filesystem::remove(file_, failure);
    }
    if (failure) {
        throw std::runtime_error(
            (enabled ? "Could not write " : "Could not remove ") + file_.string() + ": " + failure.message() + ".");
    }
}

std::string AutostartLoginItem::entry() const
{
    return "[Desktop Entry]\nType=Application\nName=Mervo\nComment=What your agents may do, and what waits for you\n"
           "Exec="
        + desktopExecWord(program_.string())
        + " --hidden\nIcon=mervo\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
}

} // namespace mervo::platform
