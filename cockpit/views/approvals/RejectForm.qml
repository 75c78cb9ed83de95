pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** Why not: a reason that later runs will read, or none. */
ColumnLayout {
    id: root

    required property Theme theme
    required property string reason
    required property bool isUnsettled

    signal edited(text: string)
    signal cancelled
    signal confirmed

    /// For who has just asked for it: a form that is scrolled into sight takes no keyboard away.
    function begin() {
        field.forceActiveFocus(Qt.OtherFocusReason);
    }

    spacing: theme.unit

    Field {
        id: field

        Layout.fillWidth: true
        theme: root.theme
        placeholderText: "Reason (optional)"
        text: root.reason
        onTextEdited: root.edited(text)
        onAccepted: root.confirmed()
    }
    RowLayout {
        spacing: root.theme.unit

        Item {
            Layout.fillWidth: true
        }
        ActionButton {
            theme: root.theme
            text: "Cancel"
            onClicked: root.cancelled()
        }
        ActionButton {
            theme: root.theme
            symbol: "xmark.circle.fill"
            text: "Confirm"
            isUnsettled: root.isUnsettled
            onChosen: root.confirmed()
        }
    }
}
