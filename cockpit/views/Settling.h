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

/// Whether what is under the mouse may have come there just now, so that a press of it was aimed at something else: for
/// the desktop's time of a double click and a little more after cards have moved or one was decided, and, where the
/// mouse has decided one, for as long as it stands there. What a slow double click meets is the next card, unread.
/// Fingers are bound by the time alone, and the keyboard by neither; but a Return or Space that is held is one press,
/// wherever in the window the keyboard goes meanwhile.
class Settling : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool isUnsettled READ isUnsettled NOTIFY isUnsettledChanged)

public:
    explicit Settling(QQuickItem* parent = nullptr);
    ~Settling() override;

    bool isUnsettled() const { return isUnsettled_; }
    Q_INVOKABLE void restart(); ///< cards have moved
    Q_INVOKABLE void decide(); ///< a card was decided, by whatever the person used last

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
    bool isMouse_ = false; ///< what the person used last
    QPointF mouse_;
    int released_ = 0; ///< the key that came up last
    quint64 releasedAt_ = 0;
    std::optional<QPointF> decidedAt_; ///< where the mouse has decided a card and still stands
    bool isUnsettled_ = false;
};

} // namespace mervo
