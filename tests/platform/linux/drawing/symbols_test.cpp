#include "platform/linux/drawing/symbols.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>
#include <vector>

#include "platform/linux/bell/bus_types.h"

namespace tollvane {
namespace {

using testing::Each;
using testing::ElementsAre;

std::vector<int> alphas(const IconPixmap& pixmap) {
  std::vector<int> result;
  for (qsizetype i = 0; i < pixmap.argb.size(); i += 4) result.push_back(static_cast<unsigned char>(pixmap.argb.at(i)));
  return result;
}

long opaque(const IconPixmap& pixmap) {
  const std::vector<int> all = alphas(pixmap);
  return std::count(all.begin(), all.end(), 255);
}

int alphaAt(const IconPixmap& pixmap, int x, int y) { return alphas(pixmap)[y * pixmap.width + x]; }

// The four bytes of the first opaque pixel, as they are sent over the bus.
std::vector<int> opaqueBytes(const IconPixmap& pixmap) {
  for (qsizetype i = 0; i < pixmap.argb.size(); i += 4) {
    if (static_cast<unsigned char>(pixmap.argb.at(i)) == 255) {
      std::vector<int> bytes;
      for (int k = 0; k < 4; ++k) bytes.push_back(static_cast<unsigned char>(pixmap.argb.at(i + k)));
      return bytes;
    }
  }
  return {};
}

// The pixmaps of the hollow bell, as bars get them.
IconPixmaps hollow(BarTone tone = BarTone::dark) { return iconPixmaps(drawIcon(iconNameForSymbol("bell"), tone)); }
IconPixmaps filled(BarTone tone = BarTone::dark) { return iconPixmaps(drawIcon(iconNameForSymbol("bell.fill"), tone)); }

TEST(Symbols, EachSymbolHasItsDrawing) {
  EXPECT_EQ(iconNameForSymbol("bell").toStdString(), "tollvane-bell-symbolic");
  EXPECT_EQ(iconNameForSymbol("bell.fill").toStdString(), "tollvane-bell-fill-symbolic");
  for (const char* symbol : {"bell", "bell.fill", "checkmark.circle.fill"}) {
    EXPECT_FALSE(drawIcon(iconNameForSymbol(symbol), BarTone::dark).isEmpty()) << symbol;
  }
}

TEST(Symbols, AnUnknownSymbolHasNoDrawing) {
  EXPECT_TRUE(iconNameForSymbol("").isEmpty());
  EXPECT_TRUE(iconNameForSymbol("bell.slash").isEmpty());
  EXPECT_TRUE(iconNameForSymbol("Bell").isEmpty());
  EXPECT_TRUE(drawIcon(QString(), BarTone::dark).isEmpty());
  EXPECT_TRUE(drawIcon(QStringLiteral("no-such-drawing"), BarTone::dark).isEmpty());
}

TEST(Symbols, ThereIsAPixmapForEverySizeOfBar) {
  std::vector<int> sizes;
  for (const IconPixmap& pixmap : hollow()) {
    EXPECT_EQ(pixmap.width, pixmap.height);
    EXPECT_EQ(pixmap.argb.size(), pixmap.width * pixmap.height * 4);
    sizes.push_back(pixmap.width);
  }
  EXPECT_THAT(sizes, ElementsAre(16, 22, 24, 32, 48, 64));
}

TEST(Symbols, BytesAreAlphaRedGreenBlue) {
  // The three colour bytes of the dark ink differ, so a wrong order is noticed.
  for (const IconPixmap& pixmap : filled(BarTone::light)) {
    EXPECT_THAT(opaqueBytes(pixmap), ElementsAre(0xff, 0x2e, 0x34, 0x36));
  }
}

TEST(Symbols, ADarkBarGetsALightBell) {
  for (const IconPixmap& pixmap : filled(BarTone::dark)) {
    EXPECT_THAT(opaqueBytes(pixmap), ElementsAre(0xff, 0xf2, 0xf2, 0xf2));
  }
}

TEST(Symbols, EdgesAreNotPremultiplied) {
  const IconPixmap pixmap = filled(BarTone::dark).first();
  for (qsizetype i = 0; i < pixmap.argb.size(); i += 4) {
    if (static_cast<unsigned char>(pixmap.argb.at(i)) > 32) {
      EXPECT_NEAR(static_cast<unsigned char>(pixmap.argb.at(i + 1)), 0xf2, 8) << "at byte " << i;
    }
  }
}

TEST(Symbols, OnlyTheColourDependsOnTheBar) {
  for (qsizetype i = 0; i < hollow().size(); ++i) {
    EXPECT_EQ(alphas(hollow(BarTone::dark)[i]), alphas(hollow(BarTone::light)[i]));
  }
}

TEST(Symbols, TheHollowBellHasFewerOpaquePixelsThanTheFilled) {
  for (qsizetype i = 0; i < hollow().size(); ++i) {
    EXPECT_GT(opaque(hollow()[i]), 0);
    EXPECT_LT(opaque(hollow()[i]), opaque(filled()[i]));
  }
}

TEST(Symbols, BothBellsHaveTheSameOutline) {
  const IconPixmap outline = hollow().last();
  const IconPixmap solid = filled().last();
  const std::vector<int> outlineAlphas = alphas(outline);
  const std::vector<int> solidAlphas = alphas(solid);
  for (std::size_t i = 0; i < solidAlphas.size(); ++i) EXPECT_LE(outlineAlphas[i], solidAlphas[i] + 1) << "pixel " << i;
  EXPECT_EQ(alphaAt(outline, 32, 24), 0) << "the inside is hollow";
  EXPECT_EQ(alphaAt(solid, 32, 24), 255) << "the inside is filled";
}

TEST(Symbols, TheBellIsSymmetric) {
  for (const IconPixmap& pixmap : hollow()) {
    for (int y = 0; y < pixmap.height; ++y) {
      for (int x = 0; x < pixmap.width / 2; ++x) {
        EXPECT_NEAR(alphaAt(pixmap, x, y), alphaAt(pixmap, pixmap.width - 1 - x, y), 4) << x << ',' << y;
      }
    }
  }
}

TEST(Symbols, AtSixteenPixelsTheRimAndTheWallsAreCrisp) {
  const IconPixmap small = hollow().first();
  for (int x = 3; x <= 12; ++x) {
    EXPECT_EQ(alphaAt(small, x, 11), 255) << "rim at " << x;
    EXPECT_EQ(alphaAt(small, x, 12), 0) << "gap above the clapper at " << x;
  }
  EXPECT_EQ(alphaAt(small, 4, 6), 255) << "left wall";
  EXPECT_EQ(alphaAt(small, 5, 6), 0) << "inside, next to the left wall";
  EXPECT_EQ(alphaAt(small, 11, 6), 255) << "right wall";
}

TEST(Symbols, NothingTouchesTheEdge) {
  for (const IconPixmap& pixmap : filled()) {
    const int last = pixmap.width - 1;
    std::vector<int> border;
    for (int i = 0; i <= last; ++i) {
      for (const int alpha :
           {alphaAt(pixmap, i, 0), alphaAt(pixmap, i, last), alphaAt(pixmap, 0, i), alphaAt(pixmap, last, i)}) {
        border.push_back(alpha);
      }
    }
    EXPECT_THAT(border, Each(0));
  }
}

}  // namespace
}  // namespace tollvane
