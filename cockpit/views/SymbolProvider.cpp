#include "cockpit/views/SymbolProvider.h"

#include "cockpit/views/Symbols.h"

namespace mervo {

SymbolProvider::SymbolProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{
}

QImage SymbolProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    constexpr int usualPixels = 16;
    const qsizetype slash = id.indexOf('/');
    const int pixels = requestedSize.width() > 0 ? requestedSize.width() : usualPixels;
    const QString name = id.left(slash);
    const QColor colour("#" + id.mid(slash + 1));
    QImage image = name == "tile" ? Symbols::drawTile(pixels, colour) : Symbols::draw(name, pixels, colour);
    if (size != nullptr)
        *size = image.size();
    return image;
}

} // namespace mervo
