#pragma once

#include "platform/desktop/LoginItem.h"

#include <filesystem>
#include <string>

namespace mervo::platform {

/// An entry of the XDG autostart folder, `$XDG_CONFIG_HOME/autostart/mervo.desktop`. Desktops switch such an entry off
/// in place (`Hidden`, `X-GNOME-Autostart-enabled`), and that counts.
class AutostartLoginItem final : public LoginItem {
public:
    /// `program` is started with the one argument "--hidden".
    explicit AutostartLoginItem(std::filesystem::path program);

    bool isEnabled() const override;
    void setEnabled(bool enabled) override;

private:
    std::string entry() const;

    std::filesystem::path program_, file_;
};

} // namespace mervo::platform
