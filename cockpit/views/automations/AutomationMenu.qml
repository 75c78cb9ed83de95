pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import Mervo.Cockpit

/** What else can be done with an automation. Opens below its parent, or above where the window ends. */
T.Menu {
    id: root

    required property Theme theme
    required property CockpitAutomations automations
    required property string automation
    required property bool isPaused

    signal deletionRequested

    margins: theme.unit / 2
    padding: theme.unit / 2
    implicitWidth: {
        let widest = 0;
        for (let number = 0; number < count; ++number)
            widest = Math.max(widest, itemAt(number).implicitWidth);
        return widest + leftPadding + rightPadding;
    }
    implicitHeight: contentHeight + topPadding + bottomPadding
    x: parent.width - width
    y: parent.mapToItem(null, 0, parent.height + height + margins).y > parent.Window.height ? -height : parent.height
    onAboutToShow: currentIndex = 0

    MenuEntry {
        theme: root.theme
        symbol: root.isPaused ? "play.fill" : "pause.fill"
        text: root.isPaused ? "Resume" : "Pause"
        onTriggered: root.isPaused ? root.automations.resume(root.automation) : root.automations.pause(root.automation)
    }
    MenuEntry {
        theme: root.theme
        symbol: "doc.text"
        text: "Open log"
        onTriggered: root.automations.openLog(root.automation)
    }
    MenuEntry {
        theme: root.theme
        symbol: "folder"
        text: "Open folder"
        onTriggered: root.automations.openFolder(root.automation)
    }
    MenuEntry {
        theme: root.theme
        symbol: "trash"
        text: "Delete"
        ink: root.theme.ink("red")
        onTriggered: root.deletionRequested()
    }

    contentItem: ListView {
        implicitHeight: contentHeight
        model: root.contentModel
        currentIndex: root.currentIndex
        interactive: false
    }
    background: Rectangle {
        radius: root.theme.radius
        color: root.theme.card
        border.width: 1
        border.color: root.theme.fieldLine
    }
}
