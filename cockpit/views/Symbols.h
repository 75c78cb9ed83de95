#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QStringList>

/// The symbols of the views, by the model's names for them, drawn from icons of the desktop's theme.
namespace mervo::Symbols {

/// Names of icons for a symbol, best first. Empty for an unknown symbol.
QStringList iconNames(const QString& symbol);
/// Every symbol that has icons.
QStringList all();

/// Uses Breeze, which is a package dependency, where the desktop's theme lacks an icon.
void useFallbackTheme();

/// The symbol in one colour, as a square of `pixels` device pixels; a hollow square if there is no icon for it. Needs a
/// QGuiApplication; any thread.
QImage draw(const QString& symbol, int pixels, const QColor& colour);

/// The ground for a symbol: a rounded square of `pixels` device pixels with a gradient of the colour.
QImage drawTile(int pixels, const QColor& colour);

} // namespace mervo::Symbols
