#include "cockpit/views/Symbols.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

#include <array>

namespace mervo {
namespace {

/// The share of an image that is inked, in percent.
int inkOf(const QImage& image)
{
    int inked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            inked += qAlpha(image.pixel(x, y));
    }
    return inked * 100 / 255 / (image.width() * image.height());
}

TEST(Symbols, everyNameIsDrawnByThePackagedThemeAndIsNoBlot)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    std::array<char, 5> name{"test"};
    char* words = name.data();
    const QGuiApplication application(count, &words);
    Symbols::useFallbackTheme();

    const QImage missing = Symbols::draw("no such symbol", 16, Qt::black);
    EXPECT_GT(inkOf(missing), 5) << "what is missing is drawn all the same";
    EXPECT_GT(Symbols::all().size(), 30);
    for (const QString& symbol : Symbols::all()) {
        for (const int pixels : {16, 20, 48}) {
            const QImage image = Symbols::draw(symbol, pixels, Qt::black);
            EXPECT_EQ(image.size(), QSize(pixels, pixels));
            EXPECT_NE(image, Symbols::draw("no such symbol", pixels, Qt::black)) << qPrintable(symbol);
            EXPECT_GE(inkOf(image), 1) << qPrintable(symbol) << " at " << pixels;
            EXPECT_LT(inkOf(image), 70) << qPrintable(symbol) << " at " << pixels;
        }
    }
}

} // namespace
} // namespace mervo
