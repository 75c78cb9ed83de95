pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** What came of the last operation, or what is wrong at present, in the colour of its kind; opens to the whole text. */
Item {
    id: root

    required property Theme theme
    required property StatusMessage message

    /// The signs of the kinds, as symbols: fonts often lack them.
    readonly property var looks: ({
            [StatusMessage.Done]: ["checkmark.circle.fill", "green"],
            [StatusMessage.Failed]: ["exclamationmark.circle.fill", "red"],
            [StatusMessage.Warning]: ["exclamationmark.triangle.fill", "orange"],
            [StatusMessage.Running]: ["hourglass", "blue"],
            [StatusMessage.Rejected]: ["nosign", "orange"],
            [StatusMessage.Started]: ["play.circle", "blue"],
            [StatusMessage.Stopping]: ["stop.circle.fill", "dim"],
            [StatusMessage.Opening]: ["arrow.up.forward.app", "blue"]
        })
    readonly property var look: looks[message.kind]
    readonly property color ink: theme.ink(look ? look[1] : "text")
    property bool isOpen: false

    visible: message.kind !== StatusMessage.None
    implicitHeight: line.height + whole.height

    Connections {
        target: root.message
        function onChanged() {
            root.isOpen = false;
        }
    }
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
        text: root.message.text
        elide: Text.ElideRight
        maximumLineCount: 1
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
        Accessible.name: root.message.line
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
                text: root.message.text
                maximumHeight: root.theme.unit * 20
            }
        }
    }
}
