pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** Every argument of an action. A long value is cut, says by how much, and opens. */
Column {
    id: root

    required property Theme theme
    required property var list ///< of { name, shown, whole, cutBy }

    spacing: theme.unit

    Repeater {
        model: root.list
        delegate: ColumnLayout {
            id: row

            required property var modelData
            property bool isOpen: false

            width: root.width
            spacing: root.theme.unit / 4

            RowLayout {
                PlainText {
                    Layout.fillWidth: true
                    theme: root.theme
                    text: row.modelData.name
                    color: root.theme.dim
                    font.pixelSize: root.theme.smallSize
                    elide: Text.ElideMiddle
                }
                Disclosure {
                    visible: row.modelData.cutBy > 0
                    theme: root.theme
                    text: row.isOpen ? "Show less" : (row.modelData.cutBy === 1 ? "1 more character" : "%1 more characters".arg(Number(row.modelData.cutBy).toLocaleString(Qt.locale(), "f", 0)))
                    isOpen: row.isOpen
                    onClicked: row.isOpen = !row.isOpen
                }
            }
            LongText {
                Layout.fillWidth: true
                theme: root.theme
                label: row.modelData.name
                text: row.isOpen ? row.modelData.whole : row.modelData.shown
                font.family: root.theme.monospaced
                font.pixelSize: root.theme.smallSize
                maximumHeight: root.theme.unit * (row.isOpen ? 32 : 12)
            }
        }
    }
}
