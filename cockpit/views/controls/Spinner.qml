pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window

/** Work in flight: turns in twelve steps a second while it can be seen, and stands still without animations. */
Symbol {
    id: root

    required property Theme theme

    name: "arrow.clockwise"
    color: theme.ink("blue")
    size: theme.symbolSize

    Timer {
        interval: 83
        repeat: true
        running: root.visible && root.theme.isAnimated && Window.visibility !== Window.Hidden
        onTriggered: root.rotation = (root.rotation + 30) % 360
    }
}
