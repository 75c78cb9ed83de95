pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Mervo.Cockpit

/** Asks before an automation is deleted. Whoever only presses Enter deletes nothing. */
T.Dialog {
    id: root

    required property Theme theme
    required property string name ///< as it can be shown

    signal confirmed

    title: "Delete automation “" + name + "”?"
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: parent ? Math.min(parent.width - 2 * margins, theme.unit * 44) : 0
    implicitHeight: contentHeight + topPadding + bottomPadding
    margins: theme.unit * 2
    padding: theme.unit * 2
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape

    contentItem: ColumnLayout {
        spacing: root.theme.unit * 1.5

        PlainText {
            Layout.fillWidth: true
            theme: root.theme
            text: root.title
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        PlainText {
            Layout.fillWidth: true
            theme: root.theme
            text: "Removes its launchd agent and its ~/mervo/automations folder (config, instructions, journal) + runtime state. The log file is kept."
            color: root.theme.dim
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: root.theme.unit

            ActionButton {
                theme: root.theme
                text: "Cancel"
                focus: true
                onActiveFocusChanged: if (activeFocus) focusReason = Qt.TabFocusReason // which shows the ring
                onClicked: root.close()
            }
            ActionButton {
                theme: root.theme
                isDestructive: true
                text: "Delete"
                onClicked: {
                    root.confirmed(); // before it closes, which ends it
                    root.close();
                }
            }
        }
    }
    background: Rectangle {
        radius: root.theme.radius
        color: root.theme.card
        border.width: 1
        border.color: root.theme.line
    }
    T.Overlay.modal: Rectangle {
        color: root.theme.shade
    }
}
