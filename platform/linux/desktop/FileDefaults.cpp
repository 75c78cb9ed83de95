#include "platform/linux/desktop/FileDefaults.h"

#include <QStandardPaths>

namespace mervo::platform {

namespace {

QString keyOf(std::string_view key)
{
    return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

} // namespace

FileDefaults::FileDefaults()
    : settings_(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/mervo/cockpit.ini",
        QSettings::IniFormat)
{
}

bool FileDefaults::boolean(std::string_view key) const
{
    return settings_.value(keyOf(key), false).toBool();
}

void FileDefaults::setBoolean(std::string_view key, bool value)
{
    settings_.setValue(keyOf(key), value);
}

} // namespace mervo::platform
