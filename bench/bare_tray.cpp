/// The least that a tray icon of Qt costs: an icon, a menu, and an event loop. `--moving` gives it one of two pictures
/// in turns, 12 times a second.
#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>

int main(int count, char** words)
{
    const QApplication application(count, words);
    QPixmap picture(22, 22);
    picture.fill(Qt::black);
    QMenu menu;
    menu.addAction("Quit", &application, &QCoreApplication::quit);
    QSystemTrayIcon icon{QIcon(picture)};
    icon.setContextMenu(&menu);
    icon.show();
    QTimer timer;
    QPixmap other(24, 24);
    other.fill(Qt::white);
    const QIcon pictures[]{QIcon(picture), QIcon(other)};
    bool isOther = false;
    QObject::connect(&timer, &QTimer::timeout, &icon, [&] { icon.setIcon(pictures[isOther = !isOther]); });
    if (application.arguments().contains("--moving"))
        timer.start(84);
    return QApplication::exec();
}
