pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** The title over a group of cards. */
Row {
    id: root

    required property Theme theme
    required property string symbol
    required property string title
    property int count: 0

    spacing: theme.unit * 0.75

    Symbol {
        anchors.verticalCenter: parent.verticalCenter
        name: root.symbol
        color: root.theme.dim
        size: root.theme.symbolSize
    }
    PlainText {
        anchors.verticalCenter: parent.verticalCenter
        theme: root.theme
        text: root.title
        color: root.theme.dim
        font.pixelSize: root.theme.smallSize
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
        Accessible.name: root.title
    }
    PlainText {
        anchors.verticalCenter: parent.verticalCenter
        visible: root.count > 0
        theme: root.theme
        text: root.count
        color: root.theme.dim
        font.pixelSize: root.theme.smallSize
    }
}
