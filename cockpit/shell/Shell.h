#pragma once

#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/archive/MailArchiveAccounts.h"
#include "cockpit/model/automations/EngineAutomations.h"
#include "cockpit/shell/Popover.h"
#include "cockpit/shell/StatusItem.h"
#include "platform/desktop/Desktop.h"

#include <QObject>

#include <filesystem>
#include <memory>
#include <thread>

class QMessageBox;

namespace mervo {

/// The application: shows the icon, then starts the model, and ties both to the popover.
class Shell final : public QObject {
    Q_OBJECT

public:
    /// The icon stands when this returns. `program` is what a log-in starts.
    explicit Shell(const std::filesystem::path& program);
    ~Shell() override;
    Q_DISABLE_COPY_MOVE(Shell)

    /// Brings the stores in order and starts the model.
    void start();
    void open();

private:
    void applyAppearance();
    void updateSummary();
    void openSettings();

    platform::Desktop desktop_;
    EngineAutomations automations_;
    MailArchiveAccounts accounts_;
    StatusItem item_;
    std::unique_ptr<CockpitModel> model_;
    std::unique_ptr<Popover> popover_;
    std::unique_ptr<QMessageBox> settings_;
    std::jthread starting_;
};

} // namespace mervo
