pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** The name of a control beside it, a moment after the mouse has come to rest. */
T.ToolTip {
    id: root

    required property Theme theme

    x: parent ? (parent.width - width) / 2 : 0
    y: -height - 4
    margins: theme.unit / 2
    padding: theme.unit * 0.75
    delay: 600
    visible: true
    implicitWidth: contentItem.implicitWidth + 2 * padding
    implicitHeight: contentItem.implicitHeight + 2 * padding
    closePolicy: T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: PlainText {
        theme: root.theme
        text: root.text
        font.pixelSize: root.theme.smallSize
        color: root.theme.window
    }
    background: Rectangle {
        radius: root.theme.unit / 2
        color: root.theme.text
    }
}
