#pragma once

#include "cockpit/model/ApprovalListModel.h"
#include "cockpit/model/AutomationListModel.h"
#include "cockpit/model/CockpitModel.h"
#include "cockpit/model/QuestionListModel.h"
#include "cockpit/model/StatusIconDriver.h"

#include <QtQml/qqmlregistration.h>

/// The model's types under their names in QML. The model itself knows no QML.
namespace mervo::qml {

struct CockpitModelType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitModel)
    QML_NAMED_ELEMENT(CockpitModel)
    QML_UNCREATABLE("The shell owns the model.")
};

struct ApprovalListModelType {
    Q_GADGET
    QML_FOREIGN(mervo::ApprovalListModel)
    QML_NAMED_ELEMENT(ApprovalListModel)
    QML_UNCREATABLE("The model owns it.")
};

struct QuestionListModelType {
    Q_GADGET
    QML_FOREIGN(mervo::QuestionListModel)
    QML_NAMED_ELEMENT(QuestionListModel)
    QML_UNCREATABLE("The model owns it.")
};

struct AutomationListModelType {
    Q_GADGET
    QML_FOREIGN(mervo::AutomationListModel)
    QML_NAMED_ELEMENT(AutomationListModel)
    QML_UNCREATABLE("The model owns it.")
};

struct StatusIconDriverType {
    Q_GADGET
    QML_FOREIGN(mervo::StatusIconDriver)
    QML_NAMED_ELEMENT(StatusIconDriver)
    QML_UNCREATABLE("The model owns it.")
};

} // namespace mervo::qml
