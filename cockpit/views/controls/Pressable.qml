pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** What every button of the cockpit does: mouse, Space, Enter and the press of a screen reader are one click. */
T.AbstractButton {
    id: root

    required property Theme theme

    property bool isUnsettled: false ///< it may have come under the mouse just now
    property bool wasMet: false ///< the click that goes on was aimed at something else

    /// A click that was meant: not by a mouse under which the button has only just come.
    signal chosen

    function activate() {
        wasMet = false;
        if (enabled)
            clicked();
    }

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(theme.controlHeight, implicitContentHeight + topPadding + bottomPadding)
    onPressed: wasMet = isUnsettled
    onClicked: if (!wasMet) chosen()
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.pixelSize: theme.textSize
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: root.activate()
    // At the press: when the key comes up, something else may have the keyboard.
    Keys.onPressed: event => {
        event.accepted = [Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter].includes(event.key);
        if (event.accepted)
            activate();
    }
    Keys.onReleased: event => event.accepted = event.key === Qt.Key_Space

    FocusRing {
        theme: root.theme
        visible: root.visualFocus
    }
}
