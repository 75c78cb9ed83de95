pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T

/** A bar that shows where one is; the wheel and the keys do the scrolling. */
T.ScrollBar {
    id: root

    required property Theme theme

    implicitWidth: theme.unit
    padding: 2
    visible: size < 1
    policy: T.ScrollBar.AsNeeded
    minimumSize: 0.08

    contentItem: Rectangle {
        radius: width / 2
        color: root.theme.dim
        opacity: root.pressed || root.hovered ? 0.7 : 0.35
    }
}
