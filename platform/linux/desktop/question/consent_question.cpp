#include "platform/linux/desktop/question/QuestionWindow.h"

#include <QApplication>
#include <cstdio>

/// consent-question SENTENCE: shows the question in a window and prints "allow" or "refuse". Any other end is no
/// answer: without a display it fails. Reads no input.
int main(int argc, char** argv)
{
    qunsetenv("QT_QPA_PLATFORM"); // a window that nobody sees is no question
    QApplication application(argc, argv);
    QApplication::setApplicationName("Mervo");
    QApplication::setDesktopFileName("mervo");
    const QStringList words = QApplication::arguments();
    if (words.size() != 2)
        return 2;
    mervo::QuestionWindow window(words.at(1));
    const bool isAllowed = window.exec() == QDialog::Accepted;
    return std::puts(isAllowed ? "allow" : "refuse") < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
