#pragma once

#include "cockpit/model/shown/Rows.h"
#include "core/feedback/FeedbackItem.h"

#include <QAbstractListModel>
#include <QString>

#include <span>

namespace mervo {

/// Open questions of automation runs to the owner, oldest first. Every text is safe to show.
class QuestionListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        QuestionIdRole = Qt::UserRole + 1,
        AutomationRole, ///< empty: none
        TextRole,
    };
    Q_ENUM(Role)

    explicit QuestionListModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    void show(std::span<const FeedbackItem> questions);

private:
    struct Row {
        QString id, automation, text;

        const QString& identity() const { return id; }
        bool operator==(const Row&) const = default;
    };
    friend class Rows<QuestionListModel, Row>;

    Rows<QuestionListModel, Row> rows_;
};

} // namespace mervo
