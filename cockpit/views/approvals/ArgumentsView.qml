pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** Every argument of an action. A long value is cut, says by how much, and opens. */
Column {
    id: root

    required property Theme theme
    required property var list ///< of { name, shown, whole, cutBy, hasNoEffect, remark }

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
                    Layout.fillWidth: !effect.visible
                    Layout.maximumWidth: row.width / 2
                    theme: root.theme
                    text: row.modelData.name
                    color: root.theme.dim
                    font.pixelSize: root.theme.smallSize
                    elide: Text.ElideMiddle
                }
                PlainText {
                    id: effect

                    Layout.fillWidth: true
                    visible: row.modelData.remark !== ""
                    theme: root.theme
                    text: row.modelData.hasNoEffect ? "no effect" : row.modelData.remark
                    color: root.theme.dim
                    font.pixelSize: root.theme.smallSize
                    font.italic: true
                    elide: Text.ElideRight
                    Accessible.name: row.modelData.remark

                    HoverHandler {
                        id: mouse
                    }
                    Repeater {
                        model: mouse.hovered ? 1 : 0
                        delegate: Item {
                            anchors.fill: parent

                            Tip {
                                theme: root.theme
                                text: row.modelData.remark
                            }
                        }
                    }
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
