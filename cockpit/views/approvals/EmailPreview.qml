pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** The message that an action would write, as its reader would see it. */
Rectangle {
    id: root

    required property Theme theme
    required property color tint
    required property string to
    required property string subject
    required property string bodyText
    required property bool canOpenInMail

    signal openRequested

    implicitHeight: column.implicitHeight + theme.unit * 2
    radius: theme.unit / 2
    color: Qt.alpha(tint, theme.dark ? 0.16 : 0.08)

    ColumnLayout {
        id: column

        x: root.theme.unit
        y: root.theme.unit
        width: parent.width - root.theme.unit * 2
        spacing: root.theme.unit * 0.75

        RowLayout {
            spacing: root.theme.unit

            Symbol {
                Layout.alignment: Qt.AlignTop
                name: "envelope.fill"
                color: root.theme.dim
                size: root.theme.symbolSize
            }
            GridLayout {
                columns: 2
                columnSpacing: root.theme.unit
                rowSpacing: root.theme.unit / 4

                PlainText {
                    Layout.alignment: Qt.AlignTop
                    theme: root.theme
                    text: "To"
                    color: root.theme.dim
                }
                PlainText {
                    Layout.fillWidth: true
                    theme: root.theme
                    text: root.to
                    wrapMode: Text.Wrap
                }
                PlainText {
                    Layout.alignment: Qt.AlignTop
                    theme: root.theme
                    text: "Subject"
                    color: root.theme.dim
                }
                PlainText {
                    Layout.fillWidth: true
                    theme: root.theme
                    text: root.subject
                    font.weight: Font.DemiBold
                    wrapMode: Text.Wrap
                }
            }
        }
        LongText {
            Layout.fillWidth: true
            theme: root.theme
            label: "Message"
            text: root.bodyText
        }
        ActionButton {
            Layout.alignment: Qt.AlignRight
            visible: root.canOpenInMail
            theme: root.theme
            symbol: "arrow.up.forward.app"
            text: "Open in Mail"
            onClicked: root.openRequested()
        }
    }
}
