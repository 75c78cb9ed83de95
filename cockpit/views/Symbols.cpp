#include "cockpit/views/Symbols.h"

#include <QHash>
#include <QIcon>
#include <QPainter>
#include <QStandardPaths>

#include <algorithm>
#include <cstdlib>

namespace mervo {
namespace {

const QHash<QString, QStringList>& table()
{
    static const QHash<QString, QStringList> icons{
        {"arrow.clockwise", {"view-refresh"}},
        {"arrow.up.forward.app", {"window-new"}},
        {"bolt.fill", {"quickopen", "system-run"}},
        {"calendar.badge.plus", {"resource-calendar-insert", "appointment-new"}},
        {"checklist", {"view-task-add", "view-pim-tasks"}},
        {"checkmark.circle.fill", {"emblem-ok", "emblem-default", "dialog-ok-apply"}},
        {"checkmark.seal.fill", {"emblem-ok", "emblem-default", "object-select"}},
        {"chevron.down", {"pan-down", "go-down"}},
        {"chevron.right", {"pan-end", "go-next"}},
        {"circle.dotted.circle", {"task-process-0", "media-record"}},
        {"clock.arrow.2.circlepath", {"appointment-recurring", "clock", "view-history"}},
        {"clock.badge.xmark", {"appointment-missed", "clock"}},
        {"doc.text", {"view-list-text", "text-x-generic"}},
        {"doc.text.magnifyingglass", {"document-preview", "view-list-text"}},
        {"ellipsis", {"overflow-menu", "view-more"}},
        {"envelope.fill", {"mail-unread", "mail-message"}},
        {"exclamationmark.circle.fill", {"dialog-close", "dialog-error"}},
        {"exclamationmark.triangle.fill", {"emblem-warning", "dialog-warning"}},
        {"folder", {"document-open-folder", "folder-open", "folder"}},
        {"gearshape", {"configure", "preferences-system", "emblem-system"}},
        {"hourglass", {"chronometer", "clock"}},
        {"lifepreserver", {"help-contents", "help-browser"}},
        {"note.text", {"view-pim-notes", "note"}},
        {"nosign", {"dialog-cancel", "process-stop"}},
        {"paperplane.fill", {"document-send", "mail-send"}},
        {"pause.fill", {"media-playback-pause"}},
        {"play.circle", {"media-playback-start"}},
        {"play.fill", {"media-playback-start"}},
        {"power", {"system-shutdown"}},
        {"questionmark.bubble.fill", {"dialog-question-symbolic", "dialog-question"}},
        {"shield.lefthalf.filled", {"security-high-symbolic", "security-high"}},
        {"square.and.pencil", {"document-edit", "edit-rename"}},
        {"stop.circle", {"process-stop", "media-playback-stop"}},
        {"stop.circle.fill", {"media-playback-stop"}},
        {"terminal", {"dialog-scripts", "utilities-terminal"}},
        {"trash", {"edit-delete", "user-trash"}},
        {"trash.fill", {"edit-delete", "user-trash"}},
        {"tray.full.fill", {"mail-folder-inbox", "mail-inbox"}},
        {"xmark", {"window-close"}},
        {"xmark.circle.fill", {"dialog-close", "process-stop"}},
    };
    return icons;
}

/// The first icon that some theme has. Where icons are colourful, the form in one colour comes first; Breeze's are in
/// one colour themselves.
QIcon icon(const QString& symbol)
{
    const bool isColourful = !QIcon::themeName().startsWith("breeze");
    const QStringList names = Symbols::iconNames(symbol);
    for (const QString& name : names) {
        const QString symbolic = name + "-symbolic";
        for (const QString& form : {isColourful ? symbolic : name, isColourful ? name : symbolic}) {
            if (QIcon::hasThemeIcon(form))
                return QIcon::fromTheme(form);
        }
    }
    return {};
}

/// The colour of most of an icon.
QRgb ground(const QImage& image)
{
    constexpr int coarse = 5; // bits of a channel that do not matter
    QHash<QRgb, int> counts;
    QRgb most = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) < 128)
                continue;
            const QRgb kind = qRgb(qRed(pixel) >> coarse, qGreen(pixel) >> coarse, qBlue(pixel) >> coarse);
            if (++counts[kind] >= counts.value(most))
                most = kind;
        }
    }
    constexpr int middle = 1 << (coarse - 1);
    return qRgb((qRed(most) << coarse) + middle, (qGreen(most) << coarse) + middle, (qBlue(most) << coarse) + middle);
}

/// The icon in one colour. What stands on its ground in another colour (the "!" on a triangle) is cut out of it.
QImage inOneColour(QImage image, const QColor& colour)
{
    constexpr int same = 60, other = 120; // distances of channels from the ground
    image = image.convertToFormat(QImage::Format_ARGB32);
    const QRgb most = ground(image);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            const int distance = std::max({std::abs(qRed(pixel) - qRed(most)), std::abs(qGreen(pixel) - qGreen(most)),
                std::abs(qBlue(pixel) - qBlue(most))});
            const int kept = std::clamp(other - distance, 0, other - same);
            QColor inked = colour;
            inked.setAlpha(qAlpha(pixel) * kept / (other - same));
            image.setPixelColor(x, y, inked);
        }
    }
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage hollowSquare(int pixels, const QColor& colour)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, pixels / 12.0));
    painter.drawRoundedRect(QRectF(image.rect()).adjusted(pixels / 5.0, pixels / 5.0, -pixels / 5.0, -pixels / 5.0),
        pixels / 10.0, pixels / 10.0);
    return image;
}

} // namespace

QStringList Symbols::iconNames(const QString& symbol)
{
    return table().value(symbol);
}

QStringList Symbols::all()
{
    return table().keys();
}

void Symbols::useFallbackTheme()
{
    QStringList places = QIcon::themeSearchPaths();
    for (const QString& place : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        if (!places.contains(place + "/icons"))
            places.append(place + "/icons");
    }
    QIcon::setThemeSearchPaths(places);
    QIcon::setFallbackThemeName("breeze");
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == "hicolor")
        QIcon::setThemeName("breeze");
}

QImage Symbols::draw(const QString& symbol, int pixels, const QColor& colour)
{
    const QPixmap drawn = icon(symbol).pixmap(QSize(pixels, pixels), 1.0);
    if (drawn.isNull())
        return hollowSquare(pixels, colour);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.drawPixmap((pixels - drawn.width()) / 2, (pixels - drawn.height()) / 2, drawn);
    painter.end();
    return inOneColour(image, colour);
}

QImage Symbols::drawTile(int pixels, const QColor& colour)
{
    constexpr int lighterBy = 114; // percent, at the top
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QLinearGradient gradient(0, 0, 0, pixels);
    gradient.setColorAt(0, colour.lighter(lighterBy));
    gradient.setColorAt(1, colour);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(image.rect(), pixels / 4.0, pixels / 4.0);
    return image;
}

} // namespace mervo
