#include "cockpit/model/automations/AutomationListModel.h"

#include "cockpit/model/automations/AutomationPresentation.h"
#include "cockpit/model/shown/ShownText.h"

namespace mervo {

AutomationListModel::AutomationListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

int AutomationListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.all().size());
}

QVariant AutomationListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row& row = rows_.all()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case AutomationRole:
        return row.name;
    case NameRole:
    case Qt::DisplayRole:
        return row.shownName;
    case StateRole:
        return row.state;
    case SymbolRole:
        return row.symbol;
    case SymbolTintRole:
        return row.symbolTint;
    case SubtitleRole:
        return row.subtitle;
    case UpcomingRole:
        return row.upcoming;
    case IsRunningRole:
        return row.isRunning;
    case IsAgentRole:
        return row.isAgent;
    case IsPausedRole:
        return row.isPaused;
    default:
        return {};
    }
}

QHash<int, QByteArray> AutomationListModel::roleNames() const
{
    return {{AutomationRole, "automation"}, {NameRole, "name"}, {StateRole, "state"}, {SymbolRole, "symbol"},
        {SymbolTintRole, "symbolTint"}, {SubtitleRole, "subtitle"}, {UpcomingRole, "upcoming"},
        {IsRunningRole, "isRunning"}, {IsAgentRole, "isAgent"}, {IsPausedRole, "isPaused"}};
}

AutomationListModel::Row AutomationListModel::rowOf(
    const Automation& automation, Timestamps::Time now, const Upcoming& upcoming)
{
    const auto state = AutomationPresentation::state(automation);
    const auto look = AutomationPresentation::look(state);
    return {.name = QString::fromStdString(automation.name),
        .shownName = ShownText::line(automation.name),
        .state = QString::fromLatin1(look.name),
        .symbol = QString::fromLatin1(look.symbol),
        .symbolTint = QString::fromLatin1(look.tint),
        .subtitle = ShownText::line(AutomationPresentation::subtitle(automation, now)),
        .upcoming = QString::fromStdString(upcoming(automation)),
        .isRunning = automation.running,
        .isAgent = automation.kind == Automation::Kind::agent,
        .isPaused = !automation.enabled};
}

void AutomationListModel::show(std::span<const Automation> automations, Timestamps::Time now, const Upcoming& upcoming)
{
    std::vector<Row> wanted;
    for (const Automation& automation : automations)
        wanted.push_back(rowOf(automation, now, upcoming));
    rows_.show(*this, std::move(wanted), [this](int row) { Q_EMIT dataChanged(index(row), index(row)); });
}

} // namespace mervo
