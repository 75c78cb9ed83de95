#pragma once

#include <QDialog>
#include <QElapsedTimer>

namespace mervo {

/// One sentence and two buttons. Accepted means allow; everything else, closing and Escape too, is a no.
///
/// It comes up while a person may be typing or clicking elsewhere, so nothing is answered by accident: neither button
/// is a default that Return presses, the sentence has the keyboard at first, and for the first moment
/// (kSettling) the buttons and Escape do nothing.
class QuestionWindow final : public QDialog {
    Q_OBJECT

public:
    static constexpr int kSettling = 800; ///< milliseconds from when it is shown

    explicit QuestionWindow(const QString& sentence);

    /// Not before it has settled.
    void accept() override;
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    bool hasSettled() const { return shown_.isValid() && shown_.elapsed() >= kSettling; }

    QElapsedTimer shown_;
};

} // namespace mervo
