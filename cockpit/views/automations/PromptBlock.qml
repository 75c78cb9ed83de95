pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** One block of a prompt. */
Rectangle {
    id: root

    required property Theme theme
    required property var modelData

    readonly property bool isCode: modelData.kind === "code"
    readonly property bool isBullet: modelData.kind === "bullet"
    readonly property bool isHeading: modelData.kind === "heading"
    readonly property real inset: isCode ? theme.unit : 0

    implicitHeight: words.implicitHeight + 2 * inset
    radius: theme.unit / 2
    color: isCode ? theme.field : "transparent"
    border.width: isCode ? 1 : 0
    border.color: theme.line

    PlainText {
        visible: root.isBullet
        theme: root.theme
        text: "•"
        color: root.theme.dim
        Accessible.ignored: true
    }
    PlainText {
        id: words

        x: root.isBullet ? root.theme.unit * 2 : root.inset
        y: root.inset
        width: root.width - x - root.inset
        theme: root.theme
        text: root.modelData.text
        wrapMode: Text.Wrap
        lineHeight: root.isCode ? 1 : 1.15
        font.family: root.isCode ? root.theme.monospaced : root.theme.base.family
        font.pixelSize: root.isCode ? root.theme.smallSize : root.isHeading ? root.theme.textSize + 2 * (4 - root.modelData.level) : root.theme.textSize
        font.weight: root.isHeading ? Font.DemiBold : Font.Normal
        Accessible.role: root.isHeading ? Accessible.Heading : Accessible.StaticText
        Accessible.name: text
    }
}
