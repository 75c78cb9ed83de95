pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** What is not about one action: settings, help, the way out. */
Item {
    id: root

    required property Theme theme
    required property bool isAutomations

    signal settingsRequested(section: string)
    signal supportRequested
    signal quitRequested

    implicitHeight: theme.unit * 5.5

    Rectangle {
        width: parent.width
        height: 1
        color: root.theme.line
    }
    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: root.theme.unit
        anchors.rightMargin: root.theme.unit
        spacing: root.theme.unit / 2

        ActionButton {
            theme: root.theme
            isFlat: true
            leftPadding: root.theme.unit
            rightPadding: root.theme.unit
            symbol: "gearshape"
            text: root.isAutomations ? "Automation settings" : "Settings"
            onClicked: root.settingsRequested(root.isAutomations ? "Automations" : "General")
        }
        Item {
            Layout.fillWidth: true
        }
        ActionButton {
            theme: root.theme
            isFlat: true
            leftPadding: root.theme.unit
            rightPadding: root.theme.unit
            symbol: "lifepreserver"
            text: "Support"
            onClicked: root.supportRequested()
        }
        ActionButton {
            theme: root.theme
            isFlat: true
            leftPadding: root.theme.unit
            rightPadding: root.theme.unit
            symbol: "power"
            text: "Quit Mervo"
            onClicked: root.quitRequested()
        }
    }
}
