#pragma once

#include "cockpit/model/operations/Operations.h"
#include "cockpit/model/questions/QuestionListModel.h"

#include <QObject>
#include <QString>

#include <set>
#include <string>
#include <vector>

namespace mervo {

/// The questions that runs of automations have put to the person, and the answers. Main thread only.
class CockpitQuestions final : public QObject {
    Q_OBJECT
    Q_PROPERTY(mervo::QuestionListModel* list READ list CONSTANT)

public:
    explicit CockpitQuestions(Operations& operations, QObject* parent = nullptr);

    QuestionListModel* list() { return &list_; }
    /// Open questions, without those whose answer is being written.
    const std::vector<FeedbackItem>& open() const { return open_; }

    /// Takes over what the database says.
    void show(std::vector<FeedbackItem> questions);

    /// A blank text answers nothing.
    Q_INVOKABLE void answer(const QString& questionId, const QString& text);

Q_SIGNALS:
    /// `open` changed by an answer.
    void openChanged();
    void reloadRequested();

private:
    Operations& operations_;
    QuestionListModel list_;
    std::vector<FeedbackItem> open_;
    std::set<std::string> answering_; ///< ids of questions whose answer is being written
};

} // namespace mervo
