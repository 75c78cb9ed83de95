pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** The two tabs. Tab reaches the one that is shown; the arrow keys change it. */
Item {
    id: root

    required property Theme theme
    required property string tab
    required property int waitingCount

    signal chosen(tab: string)

    implicitHeight: theme.unit * 5
    Accessible.role: Accessible.PageTabList
    Accessible.name: "Mervo"
    Keys.onLeftPressed: choose(approvals)
    Keys.onRightPressed: choose(automations)

    function choose(tab: CockpitTab) {
        chosen(tab.tab);
        tab.forceActiveFocus(Qt.ShortcutFocusReason);
    }

    Row {
        anchors.fill: parent

        CockpitTab {
            id: approvals

            width: root.width / 2
            height: root.height
            theme: root.theme
            tab: "approvals"
            text: "Approvals"
            count: root.waitingCount
            isCurrent: root.tab === tab
            onClicked: root.chosen(tab)
        }
        CockpitTab {
            id: automations

            width: root.width / 2
            height: root.height
            theme: root.theme
            tab: "automations"
            text: "Automations"
            isCurrent: root.tab === tab
            onClicked: root.chosen(tab)
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: root.theme.line
    }
    Rectangle {
        anchors.bottom: parent.bottom
        x: (root.tab === "approvals" ? 0 : root.width / 2) + root.theme.unit * 2
        width: root.width / 2 - root.theme.unit * 4
        height: 3
        radius: 1.5
        color: root.theme.ring

        Behavior on x {
            NumberAnimation {
                duration: root.theme.duration
                easing.type: Easing.OutCubic
            }
        }
    }
}
