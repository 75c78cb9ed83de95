#pragma once

#include <QQuickImageProvider>

namespace mervo {

/// Symbols for `Image`: "image://symbols/<name>/<colour as rrggbb>", and with the name "tile" the ground for one. One
/// drawing serves all images of the same name, colour and size.
class SymbolProvider final : public QQuickImageProvider {
public:
    SymbolProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace mervo
