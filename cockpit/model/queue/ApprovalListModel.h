#pragma once

#include "cockpit/model/shown/Rows.h"
#include "core/foundation/Timestamps.h"
#include "core/policy/PendingStore.h"

#include <QAbstractListModel>
#include <QString>
#include <QVariantList>

#include <optional>
#include <span>
#include <vector>

namespace mervo {

/// The cards of the waiting actions, oldest first. Every text is safe to show. What a card shows is made on demand.
class ApprovalListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        KeyRole = Qt::UserRole + 1, ///< the id and a digest of the action, so that it stands for this content
        ActionIdRole,
        ToolRole,
        SymbolRole,
        TintRole, ///< "red", "purple", "blue", "teal" or "orange"
        AgeRole, ///< "5 minutes ago"; empty when the time cannot be read
        SummaryRole,
        DetailRole, ///< may be empty
        PreviewRole, ///< empty: none
        ArgumentsRole, ///< a list of {name, shown, whole, cutBy, hasNoEffect, remark}; the remark is a sentence or
                       ///< empty
        RemarksRole, ///< all remarks on the arguments, a line each; may be empty
        HasEmailRole,
        EmailToRole,
        EmailSubjectRole,
        EmailBodyRole,
        CanOpenInMailRole,
    };
    Q_ENUM(Role)

    explicit ApprovalListModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Shows these actions; rows with the same content stay.
    void show(std::span<const PendingAction> actions, Timestamps::Time now);
    /// Updates the ages.
    void showAges(Timestamps::Time now);
    /// The action that a card shows, null when there is no such card.
    const PendingAction* action(const QString& key) const;

private:
    struct Row {
        PendingAction shown;
        QString key;
        QString age;
        mutable std::optional<QVariantList> arguments = {}; ///< made on first use: a value may be long

        const QString& identity() const { return key; }
        bool operator==(const Row& other) const { return key == other.key && age == other.age; }
    };
    friend class Rows<ApprovalListModel, Row>;

    QVariant emailData(const PendingAction& action, int role) const;

    Rows<ApprovalListModel, Row> rows_;
};

} // namespace mervo
