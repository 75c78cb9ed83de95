pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** A line of text to type; the prompt is its name. */
T.TextField {
    id: root

    required property Theme theme

    implicitHeight: theme.controlHeight
    leftPadding: theme.unit
    rightPadding: theme.unit
    activeFocusOnTab: true
    verticalAlignment: TextInput.AlignVCenter
    renderType: Text.NativeRendering
    font.pixelSize: theme.textSize
    color: theme.text
    placeholderTextColor: theme.dim
    selectByMouse: true
    selectionColor: theme.selection
    selectedTextColor: theme.text
    Accessible.name: placeholderText

    background: Rectangle {
        radius: root.theme.unit / 2
        color: root.theme.field
        border.width: root.activeFocus ? 2 : 1
        border.color: root.activeFocus ? root.theme.ring : root.theme.fieldLine
    }

    PlainText {
        anchors.fill: parent
        anchors.leftMargin: root.leftPadding
        anchors.rightMargin: root.rightPadding
        visible: root.text === "" && root.preeditText === ""
        theme: root.theme
        text: root.placeholderText
        color: root.placeholderTextColor
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.ignored: true
    }
}
