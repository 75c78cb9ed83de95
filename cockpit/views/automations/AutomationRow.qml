pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** One automation: how it stands, and what can be done with it. */
FocusScope {
    id: root

    required property Theme theme
    required property CockpitAutomations automations

    required property int index
    required property string automation ///< what it is called in its file
    required property string name ///< the same as it can be shown
    required property string symbol
    required property string symbolTint
    required property string subtitle
    required property string upcoming ///< "next in 2 h", or empty
    required property bool isRunning
    required property bool isAgent

    readonly property string details: upcoming === "" ? subtitle : subtitle + " · " + upcoming

    signal previewRequested

    implicitHeight: Math.max(row.implicitHeight, theme.unit * 6)
    onActiveFocusChanged: if (activeFocus) ListView.view.currentIndex = index

    Rectangle {
        anchors.fill: parent
        radius: root.theme.radius
        color: hover.hovered || root.activeFocus ? root.theme.hover : "transparent"
        border.color: root.theme.ring
        border.width: activeFocus ? 2 : 0
        focus: true
        activeFocusOnTab: true
        Accessible.role: Accessible.ListItem
        Accessible.name: root.name + ", " + root.details
        Accessible.focusable: true

        RowLayout {
            id: row

            anchors.fill: parent
            anchors.leftMargin: root.theme.unit
            anchors.rightMargin: root.theme.unit / 2
            spacing: root.theme.unit * 1.25

            Item {
                implicitWidth: root.theme.unit * 2.5
                implicitHeight: implicitWidth

                Symbol {
                    anchors.fill: parent
                    visible: !root.isRunning
                    name: root.symbol
                    color: root.theme.ink(root.symbolTint === "" ? "dim" : root.symbolTint)
                    size: parent.implicitWidth
                }
                Repeater {
                    model: root.isRunning ? 1 : 0
                    delegate: Spinner {
                        anchors.fill: parent
                        theme: root.theme
                        size: root.theme.unit * 2.5
                    }
                }
            }
            ColumnLayout {
                Layout.fillWidth: true
                Layout.topMargin: root.theme.unit
                Layout.bottomMargin: root.theme.unit
                spacing: 1

                PlainText {
                    Layout.fillWidth: true
                    theme: root.theme
                    text: root.name
                    font.weight: Font.Medium
                    elide: Text.ElideMiddle
                }
                PlainText {
                    Layout.fillWidth: true
                    theme: root.theme
                    text: root.details
                    color: root.theme.dim
                    font.pixelSize: root.theme.smallSize
                    elide: Text.ElideRight
                }
            }
            RowLayout {
                // Never quite 0: what has no opacity does not exist for a screen reader.
                opacity: hover.hovered || root.activeFocus ? 1 : 0.01
                spacing: 0

                IconButton {
                    visible: root.isRunning && root.isAgent
                    theme: root.theme
                    symbol: "terminal"
                    text: "Open live run in Terminal"
                    onClicked: root.automations.openLive(root.automation)
                }
                IconButton {
                    visible: root.isRunning
                    theme: root.theme
                    symbol: "stop.circle"
                    text: "Stop run"
                    onClicked: root.automations.stop(root.automation)
                }
                IconButton {
                    visible: !root.isRunning
                    theme: root.theme
                    symbol: "play.circle"
                    text: "Run now"
                    onClicked: root.automations.run(root.automation)
                }
                IconButton {
                    visible: root.isAgent
                    theme: root.theme
                    symbol: "doc.text.magnifyingglass"
                    text: "Preview prompt"
                    onClicked: root.previewRequested()
                }
            }
        }

        HoverHandler {
            id: hover
        }
    }
}
