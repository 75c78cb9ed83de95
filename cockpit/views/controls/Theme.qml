pragma ComponentBehavior: Bound
import QtQuick

/** Colours and measures of the cockpit, in one place. All measures follow the size of the desktop's font. */
QtObject {
    id: root

    required property bool dark
    required property bool isAnimated ///< false when the desktop wants no animations

    readonly property font base: Application.font
    readonly property int textSize: base.pixelSize
    readonly property int smallSize: Math.round(textSize * 0.88)
    readonly property int titleSize: Math.round(textSize * 1.15)
    readonly property string monospaced: "monospace"
    /// The grid; 8 at the usual font sizes.
    readonly property int unit: Math.max(6, Math.round(textSize * 0.62))
    readonly property int symbolSize: unit * 2
    readonly property int controlHeight: unit * 4
    readonly property int radius: unit
    readonly property int duration: isAnimated ? 140 : 0

    readonly property color window: dark ? "#1d1e21" : "#f4f5f7"
    readonly property color card: dark ? "#292a2e" : "#ffffff"
    readonly property color line: dark ? "#3b3d43" : "#dfe1e6"
    readonly property color text: dark ? "#eeeef1" : "#1b1c1f"
    readonly property color dim: dark ? "#adb0b8" : "#5a5e67"
    readonly property color field: dark ? "#1f2023" : "#f5f6f8"
    readonly property color fieldLine: dark ? "#6f727b" : "#8b8f99"
    readonly property color hover: dark ? "#14ffffff" : "#0d000000"
    readonly property color press: dark ? "#26ffffff" : "#1f000000"
    readonly property color shade: "#80000000" ///< over what a dialog keeps from being used
    readonly property color accent: dark ? "#2f6fe4" : "#1f63d6"
    readonly property color accentHover: dark ? "#3d7cf0" : "#1a57c0"
    readonly property color accentText: "#ffffff"
    readonly property color selection: dark ? "#37578f" : "#bcd4fb"
    readonly property color ring: dark ? "#8ab4ff" : "#1f63d6"

    /// A colour by the name that the model gives, for text and symbols.
    function ink(name: string): color {
        switch (name) {
        case "red": return dark ? "#ff8078" : "#c22a2a";
        case "green": return dark ? "#63d187" : "#1b7a3b";
        case "orange": return dark ? "#ffb65c" : "#a35200";
        case "blue": return dark ? "#8ab4ff" : "#1f63d6";
        case "dim": return dim;
        default: return text;
        }
    }

    /// The same as the ground under something white.
    function tint(name: string): color {
        switch (name) {
        case "red": return "#d93a36";
        case "purple": return "#8c4fd4";
        case "blue": return "#2a6fdf";
        case "teal": return "#14808c";
        default: return "#c96a12";
        }
    }
}
