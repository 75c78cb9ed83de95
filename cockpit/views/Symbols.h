#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QStringList>

/// The symbols of the views, by the names that the model gives, as icons of the desktop's theme.
namespace mervo::Symbols {

/// Names of icons that can stand for a symbol, best first. Empty for a name that is not known.
QStringList iconNames(const QString& symbol);
/// Every symbol that has icons.
QStringList all();

/// Asks for Breeze, which is a package dependency, where the desktop's theme lacks an icon.
void useFallbackTheme();

/// The symbol as a square of `pixels` device pixels in one colour; a hollow square when nothing can draw it. Needs a
/// QGuiApplication; any thread.
QImage draw(const QString& symbol, int pixels, const QColor& colour);

/// The ground for a symbol: a rounded square of `pixels` device pixels with a gradient of the colour.
QImage drawTile(int pixels, const QColor& colour);

} // namespace mervo::Symbols
