pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** What runs by itself, and how the last run went. */
FocusScope {
    id: root

    required property Theme theme
    required property CockpitAutomations automations

    property string previewed ///< the automation whose prompt is shown; empty: none
    property string previewedName ///< as it can be shown

    Settling {
        id: settling
    }
    ListView {
        id: list

        anchors.fill: parent
        leftMargin: root.theme.unit
        rightMargin: root.theme.unit
        topMargin: root.theme.unit
        bottomMargin: root.theme.unit
        visible: count > 0 && root.previewed === ""
        clip: true
        focus: true
        reuseItems: true
        cacheBuffer: root.theme.unit * 80
        boundsBehavior: Flickable.StopAtBounds
        highlightFollowsCurrentItem: false
        Accessible.role: Accessible.List
        Accessible.name: "Automations"
        onContentYChanged: settling.restart()
        Keys.onDownPressed: {
            incrementCurrentIndex();
            positionViewAtIndex(currentIndex, ListView.Contain);
        }
        Keys.onUpPressed: {
            decrementCurrentIndex();
            positionViewAtIndex(currentIndex, ListView.Contain);
        }
        T.ScrollBar.vertical: SlimScrollBar {
            theme: root.theme
        }

        model: root.automations.list
        delegate: AutomationRow {
            width: ListView.view.width - ListView.view.leftMargin - ListView.view.rightMargin
            theme: root.theme
            automations: root.automations
            isUnsettled: settling.isUnsettled
            onMoved: settling.restart()
            onDecided: settling.decide()
            onPreviewRequested: {
                root.previewedName = name;
                root.previewed = automation;
            }
        }
    }
    Repeater {
        model: root.previewed !== "" ? 1 : 0
        delegate: PromptPreview {
            anchors.fill: parent
            theme: root.theme
            title: root.previewedName
            blocks: root.automations.promptBlocks(root.previewed)
            onCloseRequested: {
                root.previewed = "";
                list.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }
    EmptyState {
        anchors.centerIn: parent
        width: parent.width - root.theme.unit * 8
        visible: list.count === 0 && root.previewed === ""
        theme: root.theme
        symbol: "clock.arrow.2.circlepath"
        title: "No automations"
        text: "Schedule agents, scripts or tools -\nthey run via launchd, even with Mervo closed."
    }
}
