pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** What a tab shows when it has nothing to show. */
Column {
    id: root

    required property Theme theme
    required property string symbol
    required property string title
    required property string text
    property color ink: theme.dim

    spacing: theme.unit

    Symbol {
        anchors.horizontalCenter: parent.horizontalCenter
        name: root.symbol
        color: root.ink
        size: root.theme.unit * 6
    }
    PlainText {
        width: parent.width
        theme: root.theme
        text: root.title
        font.pixelSize: root.theme.titleSize
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
    }
    PlainText {
        width: parent.width
        theme: root.theme
        text: root.text
        color: root.theme.dim
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        lineHeight: 1.2
    }
}
