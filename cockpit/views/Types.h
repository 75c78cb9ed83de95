#pragma once

#include "cockpit/model/CockpitModel.h"

#include <QtQml/qqmlregistration.h>

/// The model's types under their names in QML. The model itself knows no QML.
namespace mervo::qml {

struct CockpitModelType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitModel)
    QML_NAMED_ELEMENT(CockpitModel)
    QML_UNCREATABLE("The shell owns the model.")
};

struct CockpitQueueType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitQueue)
    QML_NAMED_ELEMENT(CockpitQueue)
    QML_UNCREATABLE("The model owns it.")
};

struct ApprovalListModelType {
    Q_GADGET
    QML_FOREIGN(mervo::ApprovalListModel)
    QML_NAMED_ELEMENT(ApprovalListModel)
    QML_UNCREATABLE("The model owns it.")
};

struct CockpitQuestionsType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitQuestions)
    QML_NAMED_ELEMENT(CockpitQuestions)
    QML_UNCREATABLE("The model owns it.")
};

struct QuestionListModelType {
    Q_GADGET
    QML_FOREIGN(mervo::QuestionListModel)
    QML_NAMED_ELEMENT(QuestionListModel)
    QML_UNCREATABLE("The model owns it.")
};

struct CockpitAutomationsType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitAutomations)
    QML_NAMED_ELEMENT(CockpitAutomations)
    QML_UNCREATABLE("The model owns it.")
};

struct AutomationListModelType {
    Q_GADGET
    QML_FOREIGN(mervo::AutomationListModel)
    QML_NAMED_ELEMENT(AutomationListModel)
    QML_UNCREATABLE("The model owns it.")
};

struct CockpitSettingsType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitSettings)
    QML_NAMED_ELEMENT(CockpitSettings)
    QML_UNCREATABLE("The model owns it.")
};

struct CockpitArchiveType {
    Q_GADGET
    QML_FOREIGN(mervo::CockpitArchive)
    QML_NAMED_ELEMENT(CockpitArchive)
    QML_UNCREATABLE("The model owns it.")
};

struct StatusMessageType {
    Q_GADGET
    QML_FOREIGN(mervo::StatusMessage)
    QML_NAMED_ELEMENT(StatusMessage)
    QML_UNCREATABLE("The model owns it.")
};

struct StatusIconDriverType {
    Q_GADGET
    QML_FOREIGN(mervo::StatusIconDriver)
    QML_NAMED_ELEMENT(StatusIconDriver)
    QML_UNCREATABLE("The model owns it.")
};

} // namespace mervo::qml
