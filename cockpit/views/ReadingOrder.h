#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

namespace mervo {

/// An item in which Tab and Shift-Tab go through the controls in the order in which they are read: as they stand in
/// their parents, and in a list from top to bottom (Qt's own order in a list is that of creation, which changes as the
/// list is scrolled). Goes round at the ends. A control takes part when it is visible, enabled and has
/// `activeFocusOnTab`. Whatever gets the focus without the mouse is scrolled into view.
class ReadingOrder : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    using QQuickItem::QQuickItem;
    ~ReadingOrder() override;

    /// The controls in their order.
    QList<QQuickItem*> controls() const;
    /// Gives the focus to the control after (or before) the one that has it. False when there is none.
    Q_INVOKABLE bool move(bool forward);

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
