pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** A question of a scheduled run, and the answer. */
FocusScope {
    id: root

    required property Theme theme
    required property CockpitQuestions questions
    required property bool isUnsettled ///< it may have come under the mouse just now

    required property string questionId
    required property string automation
    required property string text

    signal moved
    signal decided

    function send() {
        const answer = draft.text;
        draft.clear();
        decide(answer);
    }
    function decide(answer) {
        decided();
        questions.answer(questionId, answer);
    }

    implicitHeight: column.implicitHeight + theme.unit * 3
    onYChanged: moved()
    Component.onCompleted: moved()

    Rectangle {
        id: frame

        anchors.fill: parent
        radius: root.theme.radius
        color: root.theme.card
        border.color: activeFocus ? root.theme.ring : root.theme.line
        border.width: activeFocus ? 2 : 1
        focus: true
        activeFocusOnTab: true
        Accessible.role: Accessible.ListItem
        Accessible.name: root.automation === "" ? "Question" : "Question of %1".arg(root.automation)
        Accessible.description: root.text
        Accessible.focusable: true

        ColumnLayout {
            id: column

            x: root.theme.unit * 1.5
            y: root.theme.unit * 1.5
            width: parent.width - root.theme.unit * 3
            spacing: root.theme.unit

            RowLayout {
                spacing: root.theme.unit

                Symbol {
                    Layout.alignment: Qt.AlignTop
                    name: "questionmark.bubble.fill"
                    color: root.theme.ink("blue")
                    size: root.theme.symbolSize
                }
                PlainText {
                    Layout.fillWidth: true
                    visible: root.automation !== ""
                    theme: root.theme
                    text: root.automation
                    color: root.theme.dim
                    font.weight: Font.DemiBold
                    elide: Text.ElideMiddle
                }
            }
            PlainText {
                Layout.fillWidth: true
                theme: root.theme
                text: root.text
                wrapMode: Text.Wrap
            }
            RowLayout {
                spacing: root.theme.unit

                ActionButton {
                    theme: root.theme
                    text: "Oui"
                    isUnsettled: root.isUnsettled
                    onChosen: root.decide("Oui")
                }
                ActionButton {
                    theme: root.theme
                    text: "Non"
                    isUnsettled: root.isUnsettled
                    onChosen: root.decide("Non")
                }
                Field {
                    id: draft

                    Layout.fillWidth: true
                    theme: root.theme
                    placeholderText: "Answer..."
                    onAccepted: root.send()
                }
                IconButton {
                    theme: root.theme
                    symbol: "paperplane.fill"
                    text: "Send"
                    isUnsettled: root.isUnsettled
                    onChosen: root.send()
                }
            }
        }
    }
}
