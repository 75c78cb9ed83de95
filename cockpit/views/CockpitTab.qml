pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** One tab with the number of what waits in it. */
T.TabButton {
    id: root

    required property Theme theme
    required property string tab
    required property bool isCurrent
    property int count: 0

    activeFocusOnTab: isCurrent
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: count > 0 ? "%1, %2".arg(text).arg(count) : text
    Accessible.onPressAction: clicked()
    Accessible.selected: isCurrent

    background: Rectangle {
        anchors.fill: parent
        anchors.margins: root.theme.unit / 2
        radius: root.theme.unit / 2
        color: root.down ? root.theme.press : root.hovered ? root.theme.hover : "transparent"
    }
    contentItem: Item {
        Row {
            anchors.centerIn: parent
            spacing: root.theme.unit * 0.75

            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                theme: root.theme
                text: root.text
                color: root.isCurrent ? root.theme.text : root.theme.dim
                font.weight: root.isCurrent ? Font.DemiBold : Font.Normal
                Accessible.ignored: true
            }
            Badge {
                anchors.verticalCenter: parent.verticalCenter
                visible: root.count > 0
                theme: root.theme
                text: root.count
                ink: root.theme.accentText
                color: root.theme.tint("orange")
            }
        }
    }

    FocusRing {
        theme: root.theme
        visible: root.visualFocus
    }
}
