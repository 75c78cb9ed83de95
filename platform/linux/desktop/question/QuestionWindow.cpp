#include "platform/linux/desktop/question/QuestionWindow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace mervo {
namespace {

constexpr int kTextWidth = 380; // logical pixels

QLabel* sentenceLabel(const QString& sentence, QWidget* parent)
{
    auto* label = new QLabel(sentence, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(kTextWidth);
    label->setAccessibleName(sentence);
    label->setFocusPolicy(Qt::StrongFocus); // so that a screen reader says it first
    return label;
}

/// Neither Return nor the dialog presses it; Space does, once it has the keyboard.
QPushButton* button(const QString& text, QWidget* parent)
{
    auto* made = new QPushButton(text, parent);
    made->setAutoDefault(false);
    made->setAccessibleName(text);
    return made;
}

} // namespace

QuestionWindow::QuestionWindow(const QString& sentence)
{
    setWindowTitle("Mervo asks for your consent");
    setAccessibleDescription(sentence);
    auto* label = sentenceLabel(sentence, this);
    auto* icon = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxQuestion).pixmap(size));
    auto* refuse = button("Don't Allow", this);
    auto* allow = button("Allow", this);
    connect(refuse, &QPushButton::clicked, this, &QuestionWindow::reject);
    connect(allow, &QPushButton::clicked, this, &QuestionWindow::accept);

    auto* text = new QHBoxLayout;
    text->addWidget(icon, 0, Qt::AlignTop);
    text->addWidget(label, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(refuse);
    buttons->addWidget(allow);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(text);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    label->setFocus();
}

void QuestionWindow::accept()
{
    if (hasSettled())
        QDialog::accept();
}

void QuestionWindow::reject()
{
    if (hasSettled())
        QDialog::reject();
}

void QuestionWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    shown_.start();
}

/// Closing is meant, however early it comes.
void QuestionWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    QDialog::reject();
}

} // namespace mervo
