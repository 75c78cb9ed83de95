pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** One line of a menu: a symbol and words. Mouse, Space, Enter and a screen reader choose it. */
T.MenuItem {
    id: root

    required property Theme theme
    required property string symbol
    property color ink: theme.text

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: theme.controlHeight
    leftPadding: theme.unit
    rightPadding: theme.unit * 1.5
    font.pixelSize: theme.textSize
    Accessible.onPressAction: root.clicked()
    // At the press, as any button.
    Keys.onPressed: event => {
        event.accepted = [Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter].includes(event.key);
        if (event.accepted)
            clicked();
    }

    background: Rectangle {
        radius: root.theme.unit / 2
        color: root.down || root.highlighted ? root.theme.selection : "transparent"
    }
    contentItem: Row {
        spacing: root.theme.unit

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: root.symbol
            color: root.ink
            size: root.theme.symbolSize
        }
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            theme: root.theme
            text: root.text
            color: root.ink
            Accessible.ignored: true
        }
    }
}
