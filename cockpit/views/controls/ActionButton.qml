pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** A button with words. One of a card is prominent: what it is there for. */
Pressable {
    id: root

    property string symbol
    property bool isProminent: false
    property bool isDestructive: false ///< what it does cannot be taken back
    property bool isFlat: false ///< without a frame until the mouse is over it

    readonly property color ink: isProminent ? theme.accentText : isDestructive ? theme.ink("red") : theme.text

    leftPadding: theme.unit * 1.5
    rightPadding: theme.unit * 1.5
    opacity: enabled ? 1 : 0.5

    background: Rectangle {
        radius: root.theme.unit / 2
        color: root.isProminent ? (root.hovered || root.down ? root.theme.accentHover : root.theme.accent)
            : root.down ? root.theme.press : root.hovered ? root.theme.hover : "transparent"
        border.width: root.isProminent || root.isFlat ? 0 : 1
        border.color: root.theme.fieldLine
    }
    contentItem: Row {
        spacing: root.theme.unit * 0.75

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            visible: name !== ""
            name: root.symbol
            color: root.ink
            size: root.theme.symbolSize
        }
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            theme: root.theme
            text: root.text
            color: root.ink
            font.weight: root.isProminent ? Font.DemiBold : Font.Normal
            Accessible.ignored: true
        }
    }
}
