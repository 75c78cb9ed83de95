pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** Plain text to read, scroll and copy, of any length in a bounded height. */
Rectangle {
    id: root

    required property Theme theme
    required property string label ///< what a screen reader calls it
    property string text
    property alias font: edit.font
    property real maximumHeight: theme.unit * 24

    /// One field can be selected as a whole, but its layout takes a second for each million characters.
    readonly property bool isHuge: text.length > 200000

    implicitWidth: theme.unit * 20
    implicitHeight: (isHuge ? maximumHeight : Math.min(edit.implicitHeight, maximumHeight)) + 2 * theme.unit
    radius: theme.unit / 2
    color: theme.field
    border.color: edit.activeFocus ? theme.ring : theme.line
    border.width: edit.activeFocus ? 2 : 1

    Flickable {
        id: view

        anchors.fill: parent
        anchors.margins: root.theme.unit
        visible: !root.isHuge
        contentHeight: edit.implicitHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: SlimScrollBar {
            theme: root.theme
        }

        TextEdit {
            id: edit

            function reveal(rectangle: rect) {
                if (rectangle.y < view.contentY)
                    view.contentY = rectangle.y;
                else if (rectangle.y + rectangle.height > view.contentY + view.height)
                    view.contentY = rectangle.y + rectangle.height - view.height;
            }

            width: view.width - root.theme.unit
            text: root.isHuge ? "" : root.text
            activeFocusOnTab: true
            readOnly: true
            selectByMouse: true
            selectByKeyboard: true
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            renderType: TextEdit.NativeRendering
            font.pixelSize: root.theme.textSize
            color: root.theme.text
            selectionColor: root.theme.selection
            selectedTextColor: root.theme.text
            Accessible.role: Accessible.EditableText
            Accessible.name: root.label
            Accessible.readOnly: true
            onCursorRectangleChanged: if (activeFocus) reveal(cursorRectangle)
        }
    }
    Repeater {
        model: root.isHuge ? 1 : 0
        delegate: PiecewiseText {
            anchors.fill: parent
            anchors.margins: root.theme.unit
            theme: root.theme
            text: root.text
            font: root.font
            Accessible.name: root.label
        }
    }
}
