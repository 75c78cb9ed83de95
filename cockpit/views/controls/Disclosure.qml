pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** A line that opens and closes what stands below it. */
Pressable {
    id: root

    property bool isOpen: false

    implicitHeight: theme.unit * 3.5
    rightPadding: theme.unit
    Accessible.description: isOpen ? "open" : "closed"

    background: Rectangle {
        radius: root.theme.unit / 2
        color: root.down ? root.theme.press : root.hovered ? root.theme.hover : "transparent"
    }
    contentItem: Row {
        spacing: root.theme.unit / 2

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: root.isOpen ? "chevron.down" : "chevron.right"
            color: root.theme.dim
            size: root.theme.symbolSize
        }
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            theme: root.theme
            text: root.text
            color: root.theme.dim
            Accessible.ignored: true
        }
    }
}
