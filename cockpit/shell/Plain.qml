import QtQuick

Rectangle {
    id: root
    required property var model
    property bool dark
    property bool isAnimated
    signal closeRequested
    signal settingsRequested(section: string)
    signal quitRequested
    implicitWidth: 400
    implicitHeight: 640
    color: dark ? "#222" : "#eee"
    focus: true
    Keys.onEscapePressed: closeRequested()
    Text { anchors.centerIn: parent; text: root.model.waitingCount }
}
