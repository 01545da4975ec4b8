#include "modules/watermark/watermark.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// The start point straight from the trigonometry, one quarter turn per row,
// as the looked-up turns must reproduce it bit for bit.
void ReferencePosition(int angle, float cx, float cy, float hw, float hh, float* x, float* y) {
  static const struct {
    int high;
    double phase;
    int xSign, ySign;
    bool swapped;
  } kRows[] = {{90, 0, -1, -1, false},
               {180, 1.5707963, +1, -1, true},
               {270, 3.1415926, +1, +1, false},
               {360, 4.7123889, -1, +1, true}};
  *x = *y = 0;  // outside 0 to 360: no angle row
  for (const auto& row : kRows) {
    if (angle < 0 || angle > row.high) continue;
    const double phi = angle * 3.1415926 / 180 - row.phase;
    const double along = std::cos(phi) * hw - std::sin(phi) * hh;
    const double across = std::cos(phi) * hh + std::sin(phi) * hw;
    *x = static_cast<float>(cx + row.xSign * (row.swapped ? across : along));
    *y = static_cast<float>(cy + row.ySign * (row.swapped ? along : across));
    return;
  }
}

TEST(GetWatermarkPostion, EveryWholeAngleMatchesTheTrigonometry) {
  WatermarkOptionRecord& w = psOptionWatermark;
  const WatermarkOptionRecord saved = w;
  w.orientation = 1;
  w.paperWidth = 595;
  w.paperHeight = 842;
  w.width = 301.5f;
  w.height = 48.25f;
  for (int angle = -1; angle <= 361; ++angle) {
    w.angle = angle;
    float x = 0, y = 0, wantX = 0, wantY = 0;
    GetWatermarkPostion(&x, &y, 1.5f, -2.0f);
    ReferencePosition(angle, 297.5f, 421.0f, w.width / 2, w.height / 2, &wantX, &wantY);
    EXPECT_EQ(x, wantX + 1.5f) << "angle " << angle;
    EXPECT_EQ(y, wantY - 2.0f) << "angle " << angle;
  }
  w = saved;
}

}  // namespace
