#pragma once

#include <QKeyEvent>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace mervo {

/// Whether what is under the mouse may have just come there, so that a click was aimed at something else: for slightly
/// longer than the desktop's double-click time after cards have moved or one was decided; and after the mouse has
/// decided one, until it moves away (a slow double click would hit the next card, unread). Touch is bound by the time
/// alone, the keyboard by neither; but a held Return or Space is a single press, even if the focus moves meanwhile.
class Settling : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool isUnsettled READ isUnsettled NOTIFY isUnsettledChanged)

public:
    explicit Settling(QQuickItem* parent = nullptr);
    ~Settling() override;
    Q_DISABLE_COPY_MOVE(Settling)

    bool isUnsettled() const { return isUnsettled_; }
    Q_INVOKABLE void restart(); ///< cards have moved
    Q_INVOKABLE void decide(); ///< a card was decided, by the input device used last

Q_SIGNALS:
    void isUnsettledChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isHeld(const QKeyEvent& press) const;
    void mouseAt(QPointF place);
    void update();

    QPointer<QQuickWindow> watched_;
    QTimer timer_;
    bool isMouse_ = false; ///< was the input device used last
    QPointF mouse_;
    int released_ = 0; ///< the key that came up last
    quint64 releasedAt_ = 0;
    std::optional<QPointF> decidedAt_; ///< where the mouse decided a card and still is
    bool isUnsettled_ = false;
};

} // namespace mervo
