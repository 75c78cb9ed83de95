pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** What came of the last operation, or what is wrong at present, in the colour of its first sign; opens to the whole text. */
Item {
    id: root

    required property Theme theme
    required property string result

    /// The signs that results begin with, as symbols: fonts often lack them.
    readonly property var looks: ({
            "✅": ["checkmark.circle.fill", "green"],
            "❌": ["exclamationmark.circle.fill", "red"],
            "⚠": ["exclamationmark.triangle.fill", "orange"],
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
    implicitHeight: line.height + whole.height
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
    Symbol {
        id: mark

        x: root.theme.unit * 1.5
        anchors.verticalCenter: line.verticalCenter
        width: root.look ? size : 0
        name: root.look ? root.look[0] : ""
        color: root.ink
        size: root.theme.symbolSize
    }
    PlainText {
        id: line

        anchors.left: mark.right
        anchors.right: more.left
        anchors.leftMargin: mark.width > 0 ? root.theme.unit : 0
        height: more.height + root.theme.unit
        theme: root.theme
        text: root.words
        elide: Text.ElideRight
        maximumLineCount: 1
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
        Accessible.name: root.result
    }
    IconButton {
        id: more

        anchors.right: parent.right
        anchors.rightMargin: root.theme.unit / 2
        anchors.verticalCenter: line.verticalCenter
        enabled: line.truncated || root.isOpen
        opacity: enabled ? 1 : 0
        theme: root.theme
        symbol: root.isOpen ? "chevron.down" : "chevron.right"
        text: root.isOpen ? "Show less" : "Show the whole result"
        onClicked: root.isOpen = !root.isOpen
    }
    // None or one. (A Loader does not take a bound component in Qt 6.4.)
    Column {
        id: whole

        anchors.top: line.bottom
        x: root.theme.unit
        width: parent.width - root.theme.unit * 2
        bottomPadding: root.isOpen ? root.theme.unit : 0

        Repeater {
            model: root.isOpen ? 1 : 0
            delegate: LongText {
                width: whole.width
                theme: root.theme
                label: "Result"
                text: root.words
                maximumHeight: root.theme.unit * 20
            }
        }
    }
}
