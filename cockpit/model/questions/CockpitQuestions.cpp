#include "cockpit/model/questions/CockpitQuestions.h"

#include "core/foundation/Text.h"

#include <utility>

namespace mervo {

namespace {

constexpr std::size_t kAnswerLimit = 120; ///< characters of an answer in the trail

} // namespace

CockpitQuestions::CockpitQuestions(Operations& operations, QObject* parent)
    : QObject(parent)
    , operations_(operations)
{
}

void CockpitQuestions::show(std::vector<FeedbackItem> questions)
{
    std::erase_if(questions, [this](const FeedbackItem& item) { return answering_.contains(item.id); });
    if (questions == open_)
        return;
    open_ = std::move(questions);
    list_.show(open_);
}

void CockpitQuestions::answer(const QString& questionId, const QString& text)
{
    const std::string id = questionId.toStdString(), whole = text.toStdString(), answer(Text::trimmed(whole));
    if (answer.empty() || !answering_.insert(id).second)
        return;
    std::erase_if(open_, [&](const FeedbackItem& item) { return item.id == id; });
    list_.show(open_);
    Q_EMIT openChanged();
    operations_.write("answering", [this, id, answer](CockpitStores::Open& open) {
        open.asks.answer(id, answer);
        open.logHuman("ask_answer", {{"id", id}, {"answer", std::string(Text::firstCharacters(answer, kAnswerLimit))}});
        Work::come(*this, [this, id] {
            answering_.erase(id);
            Q_EMIT reloadRequested();
        });
    });
}

} // namespace mervo
