pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** Plain text of millions of characters to read and scroll: only what is in sight is laid out. */
ListView {
    id: root

    required property Theme theme
    required property string text
    required property font font

    readonly property int pieceLength: 4000

    /// Ends at line ends where there are any, and never within a character.
    function pieces() {
        const list = [];
        for (let at = 0; at < text.length;) {
            let piece = text.slice(at, at + pieceLength);
            const lineEnd = piece.lastIndexOf("\n");
            if (at + piece.length === text.length || lineEnd < 0) {
                const last = piece.charCodeAt(piece.length - 1);
                if (last >= 0xD800 && last < 0xDC00)
                    piece = piece.slice(0, -1);
                at += Math.max(piece.length, 1);
            } else {
                piece = piece.slice(0, lineEnd);
                at += lineEnd + 1;
            }
            list.push(piece);
        }
        return list;
    }

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.Document
    Keys.onDownPressed: flick(0, -600)
    Keys.onUpPressed: flick(0, 600)
    T.ScrollBar.vertical: SlimScrollBar {
        theme: root.theme
    }

    model: pieces()
    delegate: PlainText {
        required property string modelData

        width: root.width - root.theme.unit
        theme: root.theme
        text: modelData
        font: root.font
        wrapMode: Text.Wrap
    }
}
