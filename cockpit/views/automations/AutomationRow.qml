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
    required property bool isPaused
    required property bool isUnsettled ///< it may have come under the mouse just now

    readonly property string details: upcoming === "" ? subtitle : subtitle + " · " + upcoming

    property string popup ///< what is open over it: "menu", "alert" or nothing
    readonly property bool isInHand: hover.hovered || activeFocus || popup !== ""

    signal previewRequested
    signal moved
    signal decided

    function closePopup() {
        popup = "";
        more.forceActiveFocus(Qt.PopupFocusReason);
    }

    implicitHeight: Math.max(row.implicitHeight, theme.unit * 6)
    onActiveFocusChanged: if (activeFocus) ListView.view.currentIndex = index
    onIsRunningChanged: moved() // other buttons come where these were
    onYChanged: moved()
    // The list only leaves a row out of the picture that it keeps for later; a screen reader would go on showing it.
    ListView.onPooled: {
        popup = "";
        visible = false;
    }
    ListView.onReused: visible = true
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier);
        if (event.accepted)
            popup = "menu";
    }

    Rectangle {
        anchors.fill: parent
        radius: root.theme.radius
        color: root.isInHand ? root.theme.hover : "transparent"
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
                Layout.rightMargin: root.isInHand ? buttons.width : 0
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
        }
        RowLayout {
            id: buttons

            anchors.right: parent.right
            anchors.rightMargin: root.theme.unit / 2
            anchors.verticalCenter: parent.verticalCenter
            // Never quite 0: what has no opacity does not exist for a screen reader.
            opacity: root.isInHand ? 1 : 0.01
            spacing: 0

            IconButton {
                visible: root.isRunning && root.isAgent
                theme: root.theme
                symbol: "terminal"
                text: "Open live run in Terminal"
                isUnsettled: root.isUnsettled
                onChosen: root.automations.openLive(root.automation)
            }
            IconButton {
                visible: root.isRunning
                theme: root.theme
                symbol: "stop.circle"
                text: "Stop run"
                isUnsettled: root.isUnsettled
                onChosen: root.automations.stop(root.automation)
            }
            IconButton {
                visible: !root.isRunning
                theme: root.theme
                symbol: "play.circle"
                text: "Run now"
                isUnsettled: root.isUnsettled
                onChosen: {
                    root.moved(); // a second click is none for another run
                    root.automations.run(root.automation);
                }
            }
            IconButton {
                visible: root.isAgent
                theme: root.theme
                symbol: "doc.text.magnifyingglass"
                text: "Preview prompt"
                onClicked: root.previewRequested()
            }
            IconButton {
                id: more

                theme: root.theme
                symbol: "ellipsis"
                text: "More actions for " + root.name
                isUnsettled: root.isUnsettled
                onChosen: root.popup = "menu"

                Repeater {
                    model: root.popup === "menu" ? 1 : 0
                    delegate: Item {
                        anchors.fill: parent

                        AutomationMenu {
                            theme: root.theme
                            automations: root.automations
                            automation: root.automation
                            isPaused: root.isPaused
                            visible: true
                            onDeletionRequested: root.popup = "alert"
                            onClosed: if (root.popup === "menu") root.closePopup()
                        }
                    }
                }
            }
        }
        Repeater {
            model: root.popup === "alert" ? 1 : 0
            delegate: Item {
                DeleteAlert {
                    theme: root.theme
                    name: root.name
                    visible: true
                    onClosed: root.closePopup()
                    onConfirmed: {
                        root.decided();
                        root.automations.remove(root.automation);
                    }
                }
            }
        }
        HoverHandler {
            id: hover
        }
        TapHandler {
            acceptedButtons: Qt.RightButton
            onTapped: root.popup = "menu"
        }
    }
}
