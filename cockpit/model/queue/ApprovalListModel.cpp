#include "cockpit/model/queue/ApprovalListModel.h"

#include "cockpit/model/queue/ActionPresentation.h"
#include "cockpit/model/shown/RelativeTime.h"
#include "cockpit/model/shown/ShownText.h"

#include <algorithm>
#include <map>

namespace mervo {

namespace {

QString text(std::string_view ascii)
{
    return QString::fromUtf8(ascii.data(), static_cast<qsizetype>(ascii.size()));
}

QVariantList argumentsOf(const PendingAction& action)
{
    const auto remarks = ActionPresentation::remarks(action);
    QVariantList list;
    for (const auto& [name, value] : action.args) {
        const auto cut = ShownText::cut(value, ShownText::kArgumentLimit);
        const auto remark = std::ranges::find(remarks, name, &Remark::argument);
        const bool isRemarked = remark != remarks.end();
        list.append(QVariantMap{{"name", ShownText::line(name)}, {"shown", cut.shown},
            {"whole", cut.leftOut == 0 ? cut.shown : ShownText::whole(value)}, {"cutBy", static_cast<int>(cut.leftOut)},
            {"hasNoEffect", isRemarked && remark->noEffect},
            {"remark", isRemarked ? ShownText::line(remark->sentence) : QString()}});
    }
    return list;
}

QString remarksOf(const PendingAction& action)
{
    QStringList lines;
    for (const Remark& remark : ActionPresentation::remarks(action))
        lines.append(ShownText::line(remark.sentence));
    return lines.join('\n');
}

QString ageOf(const PendingAction& action, Timestamps::Time now)
{
    return QString::fromStdString(RelativeTime::text(action.createdAt, now));
}

} // namespace

ApprovalListModel::ApprovalListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

int ApprovalListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.all().size());
}

QVariant ApprovalListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row& row = rows_.all()[static_cast<std::size_t>(index.row())];
    const PendingAction& action = row.shown;
    switch (role) {
    case KeyRole:
        return row.key;
    case ActionIdRole:
        return ShownText::line(action.id);
    case ToolRole:
    case Qt::DisplayRole:
        return ShownText::line(action.tool);
    case SymbolRole:
        return text(ActionPresentation::symbol(action.tool));
    case TintRole:
        return text(ActionPresentation::tint(action.tool));
    case AgeRole:
        return row.age;
    case SummaryRole:
        return ShownText::line(action.summary);
    case DetailRole:
        return ShownText::line(ActionPresentation::detailLine(action.args));
    case PreviewRole:
        return ShownText::block(action.preview.value_or(""), ShownText::kArgumentLimit);
    case ArgumentsRole:
        if (!row.arguments)
            row.arguments = argumentsOf(action);
        return *row.arguments;
    case RemarksRole:
        return remarksOf(action);
    default:
        return emailData(action, role);
    }
}

QVariant ApprovalListModel::emailData(const PendingAction& action, int role) const
{
    const auto email = ActionPresentation::email(action);
    const auto field = email.value_or(ActionPresentation::Email{});
    switch (role) {
    case HasEmailRole:
        return email.has_value();
    case EmailToRole:
        return ShownText::line(field.to);
    case EmailSubjectRole:
        return ShownText::line(field.subject);
    case EmailBodyRole:
        return ShownText::block(field.body);
    case CanOpenInMailRole:
        return email && field.canOpenInMail;
    default:
        return {};
    }
}

QHash<int, QByteArray> ApprovalListModel::roleNames() const
{
    return {{KeyRole, "key"}, {ActionIdRole, "actionId"}, {ToolRole, "tool"}, {SymbolRole, "symbol"},
        {TintRole, "tint"}, {AgeRole, "age"}, {SummaryRole, "summary"}, {DetailRole, "detail"},
        {PreviewRole, "preview"}, {ArgumentsRole, "arguments"}, {RemarksRole, "remarks"}, {HasEmailRole, "hasEmail"},
        {EmailToRole, "emailTo"}, {EmailSubjectRole, "emailSubject"}, {EmailBodyRole, "emailBody"},
        {CanOpenInMailRole, "canOpenInMail"}};
}

void ApprovalListModel::show(std::span<const PendingAction> actions, Timestamps::Time now)
{
    std::map<std::string_view, const Row*> known;
    for (const Row& row : rows_.all())
        known.emplace(row.shown.id, &row);
    std::vector<Row> wanted;
    wanted.reserve(actions.size());
    for (const PendingAction& action : actions) {
        const auto found = known.find(action.id);
        if (found != known.end() && found->second->shown == action) {
            wanted.push_back(*found->second);
        } else {
            wanted.push_back(
                {action, QString::fromStdString(action.id + "-" + ActionPresentation::digest(action)), {}});
        }
        wanted.back().age = ageOf(action, now);
    }
    rows_.show(*this, std::move(wanted), [this](int row) { Q_EMIT dataChanged(index(row), index(row), {AgeRole}); });
}

void ApprovalListModel::showAges(Timestamps::Time now)
{
    int number = 0;
    for (Row& row : rows_.all()) {
        if (QString age = ageOf(row.shown, now); age != row.age) {
            row.age = std::move(age);
            Q_EMIT dataChanged(index(number), index(number), {AgeRole});
        }
        ++number;
    }
}

const PendingAction* ApprovalListModel::action(const QString& key) const
{
    for (const Row& row : rows_.all()) {
        if (row.key == key)
            return &row.shown;
    }
    return nullptr;
}

} // namespace mervo
