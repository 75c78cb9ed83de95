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
    const QImage image = Symbols::draw(id.left(slash), pixels, QColor("#" + id.mid(slash + 1)));
    if (size != nullptr)
        *size = image.size();
    return image;
}

} // namespace mervo
