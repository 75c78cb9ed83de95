#include "cockpit/model/questions/QuestionListModel.h"

#include "cockpit/model/shown/ShownText.h"

namespace mervo {

QuestionListModel::QuestionListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

int QuestionListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.all().size());
}

QVariant QuestionListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row& row = rows_.all()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case QuestionIdRole:
        return row.id;
    case AutomationRole:
        return row.automation;
    case TextRole:
    case Qt::DisplayRole:
        return row.text;
    default:
        return {};
    }
}

QHash<int, QByteArray> QuestionListModel::roleNames() const
{
    return {{QuestionIdRole, "questionId"}, {AutomationRole, "automation"}, {TextRole, "text"}};
}

void QuestionListModel::show(std::span<const FeedbackItem> questions)
{
    std::vector<Row> wanted;
    for (const FeedbackItem& item : questions) {
        wanted.push_back({QString::fromStdString(item.id), ShownText::line(item.automation.value_or("")),
            ShownText::block(item.text)});
    }
    rows_.show(*this, std::move(wanted), [this](int row) { Q_EMIT dataChanged(index(row), index(row)); });
}

} // namespace mervo
