import QtQuick

/** The ring around a control that has the keyboard. */
Rectangle {
    required property Theme theme

    anchors.fill: parent
    anchors.margins: -3
    radius: theme.unit / 2 + 3
    color: "transparent"
    border.color: theme.ring
    border.width: 2
}
