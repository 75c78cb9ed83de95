pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** What came of the last operation, in the colour of its first sign; opens to the whole text. */
Item {
    id: root

    required property Theme theme
    required property string result

    /// The signs that results begin with, as symbols: fonts often lack them.
    readonly property var looks: ({
            "✅": ["checkmark.circle.fill", "green"],
            "❌": ["exclamationmark.circle.fill", "red"],
            "⏳": ["hourglass", "blue"],
            "🚫": ["nosign", "orange"],
            "▶": ["play.circle", "blue"],
            "■": ["stop.circle.fill", "dim"],
            "↗": ["arrow.up.forward.app", "blue"]
        })
    readonly property string sign: result.slice(0, result.indexOf(" "))
    readonly property var look: looks[sign]
    readonly property string words: look ? result.slice(sign.length + 1) : result
    readonly property color ink: theme.ink(look ? look[1] : "text")
    property bool isOpen: false

    visible: result !== ""
    implicitHeight: column.implicitHeight + theme.unit
    onResultChanged: isOpen = false

    Rectangle {
        anchors.fill: parent
        color: Qt.alpha(root.ink, root.theme.dark ? 0.16 : 0.1)

        Rectangle {
            width: parent.width
            height: 1
            color: root.theme.line
        }
    }
    ColumnLayout {
        id: column

        anchors.verticalCenter: parent.verticalCenter
        x: root.theme.unit * 1.5
        width: parent.width - root.theme.unit * 2
        spacing: root.theme.unit / 2

        RowLayout {
            Layout.fillWidth: true
            spacing: root.theme.unit

            Symbol {
                visible: name !== ""
                name: root.look ? root.look[0] : ""
                color: root.ink
                size: root.theme.symbolSize
            }
            PlainText {
                id: line

                Layout.fillWidth: true
                theme: root.theme
                text: root.words
                elide: Text.ElideRight
                maximumLineCount: 1
                wrapMode: Text.Wrap
                Accessible.role: Accessible.StaticText
                Accessible.name: root.result
            }
            IconButton {
                enabled: line.truncated || root.isOpen
                opacity: enabled ? 1 : 0
                theme: root.theme
                symbol: root.isOpen ? "chevron.down" : "chevron.right"
                text: root.isOpen ? "Show less" : "Show the whole result"
                onClicked: root.isOpen = !root.isOpen
            }
        }
        Repeater {
            model: root.isOpen ? 1 : 0
            delegate: LongText {
                Layout.fillWidth: true
                Layout.rightMargin: root.theme.unit / 2
                Layout.bottomMargin: root.theme.unit / 2
                theme: root.theme
                label: "Result"
                text: root.words
                maximumHeight: root.theme.unit * 20
            }
        }
    }
}
