pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Mervo.Cockpit

/** One action that waits: what it is, what would happen, and the verdict. */
FocusScope {
    id: root

    required property Theme theme
    required property CockpitQueue queue
    required property var drafts ///< what was typed in cards that are out of sight, by key
    required property bool isUnsettled ///< it may have come under the mouse just now

    required property int index
    required property string key
    required property string tool
    required property string symbol
    required property string tint
    required property string age
    required property string summary
    required property string detail
    required property string remarks ///< of arguments without an effect or with an unlikely one; a line each
    required property string preview
    required property bool hasEmail
    required property string emailTo
    required property string emailSubject
    required property string emailBody
    required property bool canOpenInMail
    required property var model

    property bool rejecting: false
    property string reason
    property bool showEmail: false
    property bool showArguments: false

    signal moved
    signal decided

    function keep() {
        if (rejecting || showEmail || showArguments)
            drafts[key] = { rejecting, reason, showEmail, showArguments };
        else
            delete drafts[key];
    }
    function recall() {
        const draft = drafts[key] ?? {};
        rejecting = draft.rejecting ?? false;
        reason = draft.reason ?? "";
        showEmail = draft.showEmail ?? false;
        showArguments = draft.showArguments ?? false;
    }
    function decide(verdict) {
        const { key, reason } = root;
        rejecting = showEmail = showArguments = false;
        decided();
        verdict(key, reason);
    }

    function cancel() {
        rejecting = false;
        rejectButton.forceActiveFocus(Qt.OtherFocusReason);
    }

    implicitHeight: column.implicitHeight + theme.unit * 3
    onYChanged: moved()
    onActiveFocusChanged: if (activeFocus) ListView.view.currentIndex = index
    Component.onCompleted: {
        recall();
        moved();
    }
    Component.onDestruction: keep()
    // A card in the pool is not on the screen, but only an invisible one is left out by screen readers.
    ListView.onPooled: {
        keep();
        visible = false;
    }
    ListView.onReused: {
        visible = true;
        recall();
        moved();
    }
    Keys.onEscapePressed: event => {
        event.accepted = rejecting;
        if (rejecting)
            cancel();
    }

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
        Accessible.name: root.age === "" ? root.tool : root.tool + ", " + root.age
        Accessible.description: (root.detail + "\n" + root.remarks + "\n" + root.preview).trim()
        Accessible.focusable: true

        ColumnLayout {
            id: column

            x: root.theme.unit * 1.5
            y: root.theme.unit * 1.5
            width: parent.width - root.theme.unit * 3
            spacing: root.theme.unit

            RowLayout {
                spacing: root.theme.unit * 1.25

                // A picture: the software renderer does not smooth the corners of a Rectangle that has a gradient.
                Symbol {
                    Layout.alignment: Qt.AlignTop
                    name: "tile"
                    color: root.theme.tint(root.tint)
                    size: root.theme.unit * 4

                    Symbol {
                        anchors.centerIn: parent
                        name: root.symbol
                        color: root.theme.accentText
                        size: root.theme.unit * 2.5
                    }
                }
                ColumnLayout {
                    spacing: root.theme.unit / 4

                    RowLayout {
                        spacing: root.theme.unit

                        PlainText {
                            Layout.fillWidth: true
                            theme: root.theme
                            text: root.tool
                            font.weight: Font.DemiBold
                            elide: Text.ElideMiddle
                        }
                        PlainText {
                            theme: root.theme
                            text: root.age
                            color: root.theme.dim
                            font.pixelSize: root.theme.smallSize
                        }
                    }
                    PlainText {
                        Layout.fillWidth: true
                        theme: root.theme
                        text: root.summary
                        color: root.theme.dim
                        font.pixelSize: root.theme.smallSize
                        wrapMode: Text.Wrap
                        maximumLineCount: 2
                        elide: Text.ElideRight
                    }
                }
            }
            PlainText {
                id: line

                Layout.fillWidth: true
                visible: root.detail !== ""
                theme: root.theme
                text: root.detail
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
            }
            PlainText {
                Layout.fillWidth: true
                visible: text !== ""
                theme: root.theme
                text: root.remarks
                color: root.theme.dim
                font.pixelSize: root.theme.smallSize
                wrapMode: Text.Wrap
                maximumLineCount: 6
                elide: Text.ElideRight
            }
            RowLayout {
                visible: root.preview !== ""
                spacing: root.theme.unit

                Symbol {
                    Layout.alignment: Qt.AlignTop
                    name: "exclamationmark.triangle.fill"
                    color: root.theme.ink("orange")
                    size: root.theme.symbolSize
                }
                PlainText {
                    Layout.fillWidth: true
                    theme: root.theme
                    text: root.preview
                    color: root.theme.ink("orange")
                    font.weight: Font.Medium
                    wrapMode: Text.Wrap
                }
            }
            RowLayout {
                id: more

                readonly property int count: root.model.arguments.length

                visible: count > 0
                spacing: root.theme.unit / 2

                Disclosure {
                    theme: root.theme
                    text: (more.count === 1 ? "1 argument" : "%1 arguments".arg(more.count)) + (line.truncated ? " (cut above)" : "")
                    isOpen: root.showArguments
                    onClicked: root.showArguments = !root.showArguments
                }
                Disclosure {
                    visible: root.hasEmail
                    theme: root.theme
                    text: "View email"
                    isOpen: root.showEmail
                    onClicked: root.showEmail = !root.showEmail
                }
            }
            Repeater {
                model: root.showArguments ? 1 : 0
                delegate: ArgumentsView {
                    Layout.fillWidth: true
                    theme: root.theme
                    list: root.model.arguments
                }
            }
            Repeater {
                model: root.showEmail && root.hasEmail ? 1 : 0
                delegate: EmailPreview {
                    Layout.fillWidth: true
                    theme: root.theme
                    tint: root.theme.tint(root.tint)
                    to: root.emailTo
                    subject: root.emailSubject
                    bodyText: root.emailBody
                    canOpenInMail: root.canOpenInMail
                    onOpenRequested: root.queue.openInMail(root.key)
                }
            }
            RowLayout {
                Layout.alignment: Qt.AlignRight
                visible: !root.rejecting
                spacing: root.theme.unit

                ActionButton {
                    id: rejectButton

                    theme: root.theme
                    text: "Reject"
                    onClicked: {
                        root.rejecting = true;
                        (form.itemAt(0) as RejectForm).begin();
                    }
                }
                ActionButton {
                    theme: root.theme
                    isProminent: true
                    symbol: "checkmark.circle.fill"
                    text: "Approve"
                    isUnsettled: root.isUnsettled
                    onChosen: root.decide(key => root.queue.approve(key))
                }
            }
            // None or one. (A Loader does not take a bound component in Qt 6.4.)
            Repeater {
                id: form

                model: root.rejecting ? 1 : 0
                delegate: RejectForm {
                    Layout.fillWidth: true
                    theme: root.theme
                    reason: root.reason
                    isUnsettled: root.isUnsettled
                    onEdited: text => root.reason = text
                    onCancelled: root.cancel()
                    onConfirmed: root.decide((key, reason) => root.queue.reject(key, reason))
                }
            }
        }
    }
}
