#pragma once

#include <QQuickImageProvider>

namespace mervo {

/// Symbols for `Image`: "image://symbols/<name>/<colour as rrggbb>"; the name "tile" gives the ground for one. Images
/// of the same name, colour and size share one drawing.
class SymbolProvider final : public QQuickImageProvider {
public:
    SymbolProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace mervo
