#pragma once

#include "cockpit/model/shown/Rows.h"
#include "core/automations/model/Automation.h"

#include <QAbstractListModel>
#include <QString>

#include <functional>
#include <span>
#include <string>

namespace mervo {

/// The automations that the owner sees, by name. Every text but one is safe to show.
class AutomationListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        AutomationRole = Qt::UserRole + 1, ///< its name, for calls; not safe to show
        NameRole,
        StateRole, ///< "running", "paused", "failed", "stopped", "ok" or "never"
        SymbolRole, ///< empty while it runs: views show a progress indicator
        SymbolTintRole, ///< "red", "green" or ""
        SubtitleRole,
        UpcomingRole, ///< the next run, or one that was missed; empty when there is nothing to say
        IsRunningRole,
        IsAgentRole,
        IsPausedRole, ///< also while it runs
    };
    Q_ENUM(Role)

    explicit AutomationListModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Gives the text of UpcomingRole.
    using Upcoming = std::function<std::string(const Automation&)>;
    void show(std::span<const Automation> automations, Timestamps::Time now, const Upcoming& upcoming);

private:
    struct Row {
        QString name, shownName, state, symbol, symbolTint, subtitle, upcoming;
        bool isRunning = false, isAgent = false, isPaused = false;

        const QString& identity() const { return name; }
        bool operator==(const Row&) const = default;
    };
    friend class Rows<AutomationListModel, Row>;

    static Row rowOf(const Automation& automation, Timestamps::Time now, const Upcoming& upcoming);

    Rows<AutomationListModel, Row> rows_;
};

} // namespace mervo
