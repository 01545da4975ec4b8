#include "modules/watermark/watermark.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// The start point straight from the trigonometry, a quarter turn per row of
// angles: the looked-up turns must give it bit for bit, and no angle row
// outside 0 to 360.
TEST(GetWatermarkPostion, EveryWholeAngleMatchesTheTrigonometry) {
  const struct {
    int high;
    double phase;
    int xSign, ySign;
    bool swapped;
  } kRows[] = {{90, 0, -1, -1, false}, {180, 1.5707963, +1, -1, true},
               {270, 3.1415926, +1, +1, false}, {360, 4.7123889, -1, +1, true}};
  WatermarkOptionRecord& w = psOptionWatermark;
  w.orientation = 1;
  w.paperWidth = 595;
  w.paperHeight = 842;
  w.width = 301.5f;
  w.height = 48.25f;
  const float hw = w.width / 2, hh = w.height / 2;
  for (int angle = -1; angle <= 361; ++angle) {
    float wantX = 0, wantY = 0;
    for (const auto& row : kRows) {
      if (angle < 0 || angle > row.high) continue;
      const double phi = angle * 3.1415926 / 180 - row.phase;
      const double along = std::cos(phi) * hw - std::sin(phi) * hh;
      const double across = std::cos(phi) * hh + std::sin(phi) * hw;
      wantX = static_cast<float>(297.5f + row.xSign * (row.swapped ? across : along));
      wantY = static_cast<float>(421.0f + row.ySign * (row.swapped ? along : across));
      break;
    }
    w.angle = angle;
    float x = 0, y = 0;
    GetWatermarkPostion(&x, &y, 1.5f, -2.0f);
    EXPECT_EQ(x, wantX + 1.5f) << "angle " << angle;
    EXPECT_EQ(y, wantY - 2.0f) << "angle " << angle;
  }
}

}  // namespace
