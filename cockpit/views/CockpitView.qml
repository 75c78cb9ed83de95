pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** The popover. Shows the model and calls its operations; what is not the model's it asks of the shell. */
ReadingOrder {
    id: root

    required property CockpitModel model
    property bool dark: false
    property bool isAnimated: true
    property string tab: "approvals" ///< or "automations"

    property bool automationsWereShown: false

    signal closeRequested
    signal settingsRequested(section: string) ///< "General" or "Automations"
    signal quitRequested

    readonly property Theme theme: Theme {
        dark: root.dark
        isAnimated: root.isAnimated
    }

    implicitWidth: theme.unit * 52
    implicitHeight: theme.unit * 80
    focus: true
    onTabChanged: if (tab === "automations") automationsWereShown = true
    Keys.onEscapePressed: closeRequested()

    Rectangle {
        anchors.fill: parent
        color: root.theme.window
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Header {
            Layout.fillWidth: true
            theme: root.theme
            mode: root.model.settings.autonomyMode
            onRefreshRequested: root.model.reload()
        }
        CockpitTabs {
            Layout.fillWidth: true
            theme: root.theme
            tab: root.tab
            waitingCount: root.model.waitingCount
            onChosen: tab => root.tab = tab
        }
        ApprovalsTabView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: root.tab === "approvals"
            theme: root.theme
            queue: root.model.queue
            questions: root.model.questions
            waitingCount: root.model.waitingCount
            isBlind: root.model.trouble.kind === StatusMessage.Failed
        }
        // None or one: made when it is first shown. (A Loader does not take a bound component in Qt 6.4.)
        Repeater {
            model: root.automationsWereShown ? 1 : 0
            delegate: AutomationsTabView {
                Layout.fillWidth: true
                Layout.fillHeight: true
                visible: root.tab === "automations"
                theme: root.theme
                automations: root.model.automations
            }
        }
        StatusLine {
            Layout.fillWidth: true
            theme: root.theme
            message: root.model.trouble
        }
        StatusLine {
            Layout.fillWidth: true
            theme: root.theme
            message: root.model.lastResult
        }
        Footer {
            Layout.fillWidth: true
            theme: root.theme
            isAutomations: root.tab === "automations"
            onSettingsRequested: section => root.settingsRequested(section)
            onSupportRequested: root.model.openSupport()
            onQuitRequested: root.quitRequested()
        }
    }
}
