pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** The name, and how much the agents may do. */
RowLayout {
    id: root

    required property Theme theme
    required property string mode

    signal refreshRequested

    readonly property color ink: theme.ink(({ "panic": "red", "copilote": "green", "yolo": "blue" })[mode] ?? "dim")

    spacing: theme.unit * 1.5

    Symbol {
        Layout.margins: root.theme.unit * 1.5
        Layout.rightMargin: 0
        name: "shield.lefthalf.filled"
        color: root.ink
        size: root.theme.unit * 4
    }
    Column {
        Layout.fillWidth: true
        spacing: root.theme.unit / 4

        PlainText {
            theme: root.theme
            text: "Mervo"
            font.pixelSize: root.theme.titleSize
            font.weight: Font.DemiBold
        }
        Badge {
            theme: root.theme
            text: ({ "panic": "Panic", "copilote": "Copilote", "yolo": "YOLO" })[root.mode] ?? ""
            ink: root.ink
            color: Qt.alpha(root.ink, 0.14)
        }
    }
    IconButton {
        Layout.rightMargin: root.theme.unit
        theme: root.theme
        symbol: "arrow.clockwise"
        text: "Refresh"
        onClicked: root.refreshRequested()
    }
}
