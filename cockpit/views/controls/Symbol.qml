pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window

/** A symbol by its given name, in one colour; see Symbols.h. Says nothing to a screen reader. */
Item {
    id: root

    required property string name
    required property color color
    property int size: 16

    readonly property int pixels: Math.round(size * Screen.devicePixelRatio)

    implicitWidth: size
    implicitHeight: size

    Image {
        anchors.centerIn: parent
        width: root.size
        height: root.size
        sourceSize.width: root.pixels
        sourceSize.height: root.pixels
        source: root.name === "" ? "" : "image://symbols/%1/%2".arg(root.name).arg(root.color.toString().slice(-6))
        Accessible.ignored: true
    }
}
