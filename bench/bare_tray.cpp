/// The least that a tray icon of Qt costs: an icon, a menu, and an event loop.
#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

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
    return QApplication::exec();
}
