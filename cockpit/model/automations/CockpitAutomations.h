#pragma once

#include "cockpit/model/automations/AutomationListModel.h"
#include "cockpit/model/automations/AutomationOperations.h"
#include "cockpit/model/operations/Clock.h"
#include "cockpit/model/operations/Operations.h"
#include "platform/desktop/Workspace.h"

#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>
#include <string>
#include <vector>

namespace mervo {

/// The automations that the person sees, and what the person does with them. Main thread only; the operations
/// themselves run off it.
class CockpitAutomations final : public QObject {
    Q_OBJECT
    Q_PROPERTY(mervo::AutomationListModel* list READ list CONSTANT)

public:
    /// Everything outlives the object.
    struct Needs {
        Operations& operations;
        AutomationOperations& automations;
        platform::Workspace& workspace;
        const Clock& clock;
    };
    explicit CockpitAutomations(const Needs& needs, QObject* parent = nullptr);

    AutomationListModel* list() { return &list_; }
    bool isWorking() const; ///< one runs, or is being started from here
    bool hasFailed() const; ///< the last run of one that is not paused

    void refresh();

    Q_INVOKABLE void run(const QString& name);
    Q_INVOKABLE void stop(const QString& name);
    Q_INVOKABLE void pause(const QString& name);
    Q_INVOKABLE void resume(const QString& name);
    Q_INVOKABLE void remove(const QString& name);
    Q_INVOKABLE void openLive(const QString& name);
    Q_INVOKABLE void openLog(const QString& name);
    Q_INVOKABLE void openFolder(const QString& name);
    /// The prompt as a list of {kind: "heading"|"bullet"|"paragraph"|"code", level, text}.
    Q_INVOKABLE QVariantList promptBlocks(const QString& name) const;

Q_SIGNALS:
    /// `isWorking` changed by an operation.
    void workingChanged();
    void reloadRequested();

private:
    using Operation = void (AutomationOperations::*)(const std::string& name);
    /// Runs it off the main thread; a failure is the last result. `then` is called in any case.
    void start(Operation operation, const std::string& name, std::function<void()> then);
    const Automation* automation(const QString& name) const;

    Needs outside_;
    AutomationListModel list_;
    std::vector<Automation> listed_;
    int starting_ = 0; ///< runs that do not show in the files yet
};

} // namespace mervo
