#pragma once

#include "platform/desktop/Defaults.h"

#include <QSettings>

namespace mervo::platform {

/// `$XDG_CONFIG_HOME/mervo/cockpit.ini`.
class FileDefaults final : public Defaults {
public:
    FileDefaults();
    bool boolean(std::string_view key) const override;
    void setBoolean(std::string_view key, bool value) override;

private:
    QSettings settings_;
};

} // namespace mervo::platform
