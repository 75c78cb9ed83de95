#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

namespace mervo {

/// An item in which Tab and Shift-Tab visit the controls in reading order: the order of their parents' children, and in
/// a list from top to bottom (Qt uses the order of creation there, which changes as the list is scrolled). Wraps at the
/// ends. A control takes part if it is visible, enabled and has `activeFocusOnTab`. A control that gets the focus by
/// anything but the mouse is scrolled into view. While a menu or a dialog over it has the focus, Tab is theirs.
class ReadingOrder : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    using QQuickItem::QQuickItem;
    ~ReadingOrder() override;
    Q_DISABLE_COPY_MOVE(ReadingOrder)

    /// The controls, in reading order.
    QList<QQuickItem*> controls() const;
    enum class Direction { forward, backward };
    /// Gives the focus to the next control in this direction. False when there is none.
    bool move(Direction direction);

protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void noteFocus();
    void followFocus();

    QPointer<QQuickWindow> watched_;
    QElapsedTimer sinceFocus_;
};

} // namespace mervo
