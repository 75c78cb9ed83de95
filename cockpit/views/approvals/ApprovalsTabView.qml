pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Mervo.Cockpit

/** What waits for a person: first the questions, then the actions, oldest first. */
Item {
    id: root

    required property Theme theme
    required property CockpitQueue queue
    required property CockpitQuestions questions
    required property int waitingCount ///< actions and questions
    required property bool isBlind ///< the cockpit cannot see all that waits

    Settling {
        id: settling
    }
    ListView {
        id: list

        /// What was typed and opened in the cards that have been scrolled away, by key.
        property var drafts: ({})

        anchors.fill: parent
        topMargin: head.height
        bottomMargin: root.theme.unit * 1.5
        leftMargin: root.theme.unit * 1.5
        rightMargin: root.theme.unit * 1.5
        visible: root.waitingCount > 0
        clip: true
        focus: true
        spacing: root.theme.unit
        reuseItems: true
        cacheBuffer: root.theme.unit * 80
        boundsBehavior: Flickable.StopAtBounds
        highlightFollowsCurrentItem: false
        Accessible.role: Accessible.List
        Accessible.name: "Approvals"
        // What comes above is shown to one who is at the top, and moves nothing under the eyes of one who is not.
        onTopMarginChanged: {
            settling.restart();
            if (contentY <= originY)
                contentY = originY - topMargin;
        }
        onContentYChanged: settling.restart()
        onContentHeightChanged: settling.restart()
        Keys.onDownPressed: {
            incrementCurrentIndex();
            positionViewAtIndex(currentIndex, ListView.Contain);
        }
        Keys.onUpPressed: {
            decrementCurrentIndex();
            positionViewAtIndex(currentIndex, ListView.Contain);
        }
        T.ScrollBar.vertical: SlimScrollBar {
            theme: root.theme
        }

        model: root.queue.list
        delegate: ApprovalCard {
            width: ListView.view.width - ListView.view.leftMargin - ListView.view.rightMargin
            theme: root.theme
            queue: root.queue
            drafts: list.drafts
            isUnsettled: settling.isUnsettled
            onMoved: settling.restart()
            onDecided: settling.decide()
        }

        // The questions stand above the first card and are scrolled with it. (Not `header`, which does not take a bound
        // component in Qt 6.4.)
        Column {
            id: head

            parent: list.contentItem
            y: list.originY - height
            width: list.width - list.leftMargin - list.rightMargin
            topPadding: root.theme.unit * 1.5
            bottomPadding: root.theme.unit
            spacing: root.theme.unit

            PlainText {
                width: parent.width
                visible: text !== ""
                theme: root.theme
                text: root.queue.unreadable
                color: root.theme.ink("orange")
                wrapMode: Text.Wrap
            }
            SectionTitle {
                visible: questionCards.count > 0
                theme: root.theme
                symbol: "questionmark.bubble.fill"
                title: questionCards.count === 1 ? "Question" : "Questions"
                count: questionCards.count
            }
            Repeater {
                id: questionCards

                model: root.questions.list
                delegate: CockpitQuestionCard {
                    width: head.width
                    theme: root.theme
                    questions: root.questions
                    isUnsettled: settling.isUnsettled
                    onMoved: settling.restart()
                    onDecided: settling.decide()
                }
            }
            Item {
                visible: questionCards.count > 0
                width: 1
                height: root.theme.unit / 4
            }
            SectionTitle {
                visible: list.count > 0
                theme: root.theme
                symbol: "bolt.fill"
                title: "Actions to approve"
                count: list.count
            }
        }
    }
    EmptyState {
        readonly property bool isWhole: root.queue.unreadable === "" && !root.isBlind

        anchors.centerIn: parent
        width: parent.width - root.theme.unit * 8
        visible: !list.visible
        theme: root.theme
        symbol: isWhole ? "checkmark.seal.fill" : "exclamationmark.triangle.fill"
        ink: root.theme.ink(isWhole ? "green" : "orange")
        title: isWhole ? "All clear" : "Not all can be seen"
        text: root.queue.unreadable !== "" ? root.queue.unreadable : isWhole ? "No actions awaiting approval" : ""
    }
}
