pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Mervo.Cockpit

/** The prompt of an automation as a small document. */
FocusScope {
    id: root

    required property Theme theme
    required property string title
    required property var blocks ///< of { kind: "heading", "bullet", "paragraph" or "code"; level; text }

    signal closeRequested

    Keys.onEscapePressed: closeRequested()
    Component.onCompleted: close.forceActiveFocus(Qt.OtherFocusReason)

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.margins: root.theme.unit
            Layout.leftMargin: root.theme.unit * 2
            spacing: root.theme.unit

            Symbol {
                name: "doc.text.magnifyingglass"
                color: root.theme.dim
                size: root.theme.symbolSize
            }
            PlainText {
                Layout.fillWidth: true
                theme: root.theme
                text: root.title
                font.weight: Font.DemiBold
                elide: Text.ElideMiddle
                Accessible.role: Accessible.Heading
                Accessible.name: root.title
            }
            IconButton {
                id: close

                theme: root.theme
                symbol: "xmark"
                text: "Close"
                onClicked: root.closeRequested()
            }
        }
        ListView {
            id: list

            Layout.fillWidth: true
            Layout.fillHeight: true
            leftMargin: root.theme.unit * 2
            rightMargin: root.theme.unit * 2
            bottomMargin: root.theme.unit * 2
            clip: true
            activeFocusOnTab: true
            spacing: root.theme.unit
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.Document
            Accessible.name: root.title
            Keys.onDownPressed: flick(0, -600)
            Keys.onUpPressed: flick(0, 600)
            T.ScrollBar.vertical: SlimScrollBar {
                theme: root.theme
            }

            model: root.blocks
            delegate: PromptBlock {
                width: list.width - list.leftMargin - list.rightMargin
                theme: root.theme
            }
        }
    }
}
