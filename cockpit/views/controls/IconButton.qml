pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** A button with a symbol alone; its text is its name, and its tip under the mouse. */
Pressable {
    id: root

    required property string symbol

    implicitWidth: theme.controlHeight

    background: Rectangle {
        radius: root.theme.unit / 2
        color: root.down ? root.theme.press : root.hovered ? root.theme.hover : "transparent"
    }
    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            color: root.hovered || root.visualFocus ? root.theme.text : root.theme.dim
            size: root.theme.symbolSize
        }
    }

    Repeater {
        model: root.hovered || root.visualFocus ? 1 : 0
        delegate: Item {
            anchors.fill: parent

            Tip {
                theme: root.theme
                text: root.text
            }
        }
    }
}
