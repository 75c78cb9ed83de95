import QtQuick

/** Text as it stands: never markup. */
Text {
    required property Theme theme

    color: theme.text
    font.pixelSize: theme.textSize
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    renderType: Text.NativeRendering
}
