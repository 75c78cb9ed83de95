pragma ComponentBehavior: Bound
import QtQuick
import Mervo.Cockpit

/** A word or a number in a pill. */
Rectangle {
    id: root

    required property Theme theme
    required property string text
    required property color ink

    width: Math.max(height, words.implicitWidth + theme.unit * 1.25)
    height: words.implicitHeight + 4
    radius: height / 2

    PlainText {
        id: words

        anchors.centerIn: parent
        theme: root.theme
        text: root.text
        color: root.ink
        font.pixelSize: root.theme.smallSize
        font.weight: Font.DemiBold
    }
}
