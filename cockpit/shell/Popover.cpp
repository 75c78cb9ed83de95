#include "cockpit/shell/Popover.h"

#include "cockpit/model/CockpitModel.h"
#include "cockpit/shell/PopoverPlace.h"
#include "cockpit/views/Views.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>

namespace mervo {

namespace {

constexpr qint64 kSameClick = 300; ///< milliseconds between losing the focus and the click that took it

} // namespace

Popover::Popover(CockpitModel& model)
    : model_(model)
{
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setTitle("Mervo");
    setResizeMode(SizeRootObjectToView);
    connect(this, &QWindow::activeChanged, this, &Popover::activationChanged);
}

bool Popover::build()
{
    if (rootObject() != nullptr)
        return true;
    Views::prepare(*engine());
    setInitialProperties({{"model", QVariant::fromValue(&model_)}, {"dark", dark_}, {"isAnimated", animated_}});
    setSource(QUrl(Views::rootUrl));
    if (rootObject() == nullptr)
        return false;
    connect(rootObject(), SIGNAL(closeRequested()), this, SLOT(hide()));
    connect(rootObject(), SIGNAL(settingsRequested(QString)), this, SIGNAL(settingsRequested(QString)));
    connect(rootObject(), SIGNAL(quitRequested()), this, SIGNAL(quitRequested()));
    return true;
}

void Popover::open(const QRect& icon)
{
    if (!build())
        return;
    QScreen* screen = icon.isEmpty() ? nullptr : QGuiApplication::screenAt(icon.center());
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    if (!isVisible() && screen != nullptr) {
        const QSizeF wanted(rootObject()->implicitWidth(), rootObject()->implicitHeight());
        setScreen(screen);
        setGeometry(popoverPlace(icon, screen->availableGeometry(), wanted.toSize()));
    }
    show();
    raise();
    requestActivate();
}

void Popover::toggle(const QRect& icon)
{
    // Where a click on the icon takes the focus first, the popover has just closed, and that was what was wanted.
    const bool hasJustLeft = sinceLeft_.isValid() && sinceLeft_.elapsed() < kSameClick;
    if (isVisible()) {
        hide();
    } else if (!hasJustLeft) {
        open(icon);
    }
    sinceLeft_.invalidate();
}

void Popover::activationChanged()
{
    if (isActive() || !isVisible())
        return;
    sinceLeft_.start();
    hide();
}

void Popover::setDark(bool dark)
{
    dark_ = dark;
    setRootProperty("dark", dark);
}

void Popover::setAnimated(bool animated)
{
    animated_ = animated;
    setRootProperty("isAnimated", animated);
}

void Popover::setRootProperty(const char* property, const QVariant& value)
{
    if (rootObject() != nullptr)
        rootObject()->setProperty(property, value);
}

} // namespace mervo
