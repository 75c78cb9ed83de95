#pragma once

#include <QIcon>
#include <QWidget>

class QLabel;

namespace mervo {

/// Replaces the icon on a desktop without a tray: a small window that says how many actions wait and opens the cockpit.
/// Closing it ends the cockpit, which would otherwise run on invisibly.
class FallbackWindow final : public QWidget {
    Q_OBJECT

public:
    FallbackWindow();

    void setIcon(const QIcon& icon);
    void setSummary(const QString& summary);

Q_SIGNALS:
    void openRequested();
    void quitRequested();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QLabel* icon_;
    QLabel* summary_;
};

} // namespace mervo
