pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** What every button of the cockpit does: mouse, Space, Enter and the press of a screen reader are one click. */
T.AbstractButton {
    id: root

    required property Theme theme

    property bool wasAimedAt: false ///< in `clicked`: by the mouse, which meets whatever is under it

    function activate() {
        wasAimedAt = false;
        if (enabled)
            clicked();
    }

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(theme.controlHeight, implicitContentHeight + topPadding + bottomPadding)
    onPressed: wasAimedAt = true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.pixelSize: theme.textSize
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: root.activate()
    Keys.onReturnPressed: root.activate()
    Keys.onEnterPressed: root.activate()

    FocusRing {
        theme: root.theme
        visible: root.visualFocus
    }
}
