#include "platform/linux/drawing/symbol_path.h"

#include <gtest/gtest.h>

#include <numbers>

namespace tollvane {
namespace {

// The area inside, counted by points that are 0.02 apart.
double areaOf(const QPainterPath& path) {
  constexpr double step = 0.02;
  constexpr int points = static_cast<int>(symbolSize / step);
  long inside = 0;
  for (int row = 0; row < points; ++row) {
    for (int column = 0; column < points; ++column)
      inside += path.contains(QPointF((column + 0.5) * step, (row + 0.5) * step));
  }
  return static_cast<double>(inside) * step * step;
}

constexpr double pi = std::numbers::pi;

TEST(SymbolPath, LinesGoWhereTheyShould) {
  const QPainterPath path = pathOfData(u"M2 3H6V8L2,8Z");
  EXPECT_EQ(path.boundingRect(), QRectF(2, 3, 4, 5));
  EXPECT_NEAR(areaOf(path), 20, 0.1);
}

TEST(SymbolPath, NumbersNeedNoBlanksBetweenThem) {
  EXPECT_EQ(pathOfData(u"M.5.25L-1-2").currentPosition(), QPointF(-1, -2));
}

TEST(SymbolPath, ACurveStaysWithinItsPoints) {
  const QPainterPath path = pathOfData(u"M0 0C0 4 4 4 4 0Z");
  EXPECT_EQ(path.currentPosition(), QPointF(0, 0));
  EXPECT_NEAR(path.boundingRect().height(), 3, 0.01);
}

TEST(SymbolPath, TwoHalvesOfACircleAreACircle) {
  EXPECT_NEAR(areaOf(pathOfData(u"M8 1A7 7 0 1 1 8 15A7 7 0 1 1 8 1Z")), 49 * pi, 0.5);
}

// From (8, 4) to (12, 8), which are a quarter of a circle around (8, 8) apart, and of another around (12, 4).
TEST(SymbolPath, ThereAreFourWaysFromOnePointOfACircleToAnother) {
  const double quarter = 4 * pi;
  const double triangle = 8;
  const double segment = quarter - triangle;
  EXPECT_NEAR(areaOf(pathOfData(u"M8 4A4 4 0 0 1 12 8Z")), segment, 0.1);
  EXPECT_NEAR(areaOf(pathOfData(u"M8 4A4 4 0 0 0 12 8Z")), segment, 0.1);
  EXPECT_NEAR(areaOf(pathOfData(u"M8 4A4 4 0 1 1 12 8Z")), 16 * pi - segment, 0.1);
  EXPECT_NEAR(areaOf(pathOfData(u"M8 4A4 4 0 1 0 12 8Z")), 16 * pi - segment, 0.1);
  EXPECT_TRUE(pathOfData(u"M8 4A4 4 0 0 1 12 8Z").contains(QPointF(10.5, 5.5)));
  EXPECT_TRUE(pathOfData(u"M8 4A4 4 0 0 0 12 8Z").contains(QPointF(9.5, 6.5)));
  EXPECT_TRUE(pathOfData(u"M8 4A4 4 0 1 1 12 8Z").contains(QPointF(14, 2)));
  EXPECT_TRUE(pathOfData(u"M8 4A4 4 0 1 0 12 8Z").contains(QPointF(6, 10)));
}

TEST(SymbolPath, WhatFollowsAMistakeIsLeftOut) {
  for (const char* rest : {"X5 6", "L", "L5", "L5 nothing", "c1 1 1 1 1 1"}) {
    EXPECT_EQ(pathOfData(QString(QLatin1String("M1 2L3 4") + QLatin1String(rest))).currentPosition(), QPointF(3, 4))
        << rest;
  }
  EXPECT_TRUE(pathOfData(u"").isEmpty());
}

TEST(SymbolPath, HolesOfAllPathsOfADrawingStayOpen) {
  const QPainterPath path =
      symbolPath(R"(<svg><path d="M0 0H10V10H0ZM2 2H8V8H2Z"/><g><path d="M12 12H14V14H12Z"/></g></svg>)");
  EXPECT_NEAR(areaOf(path), 100 - 36 + 4, 0.2);
  EXPECT_TRUE(symbolPath("no drawing").isEmpty());
}

}  // namespace
}  // namespace tollvane
