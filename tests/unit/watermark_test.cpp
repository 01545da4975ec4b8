#include "modules/watermark/watermark.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "engine/module_dispatch.h"
#include "frame/fixed_text.h"
#include "frame/ps_stream.h"
#include "module_output_capture.h"

namespace {

constexpr char kPrefix[] = "com.korvanel.qd.jtz.printsettings.";

// A text watermark on a portrait letter page: a 200 x 20 box, black, full
// density, every page.
void SetTextWatermark() {
  WatermarkOptionRecord& w = psOptionWatermark;
  std::memset(&w, 0, sizeof w);
  CopyText(w.name, sizeof w.name, "Confidential");
  CopyText(w.text, sizeof w.text, "(CONFIDENTIAL)");
  CopyText(w.font, sizeof w.font, "Helvetica-Bold");
  w.type = 0;
  w.onlyFirst = 0;
  w.options = -1;
  w.orientation = 1;
  w.paperWidth = 612;
  w.paperHeight = 792;
  w.fontSize = 48;
  w.angle = 45;
  w.density = 100;
  w.width = 200;
  w.height = 20;
}

class WatermarkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Every module's settings as for a ticket without options.
    FilterArguments none("");
    GetTicketFromPDE(none.argv);
    ResetWatermarkState();
    SetTextWatermark();
  }
  void TearDown() override { ResetWatermarkState(); }

  static std::string At(int32_t point) {
    return CaptureStream([point](FILE* s) { WatermarkOutputPSCommandFromFilter(point, 1, s); });
  }

  // The moveto line of the text block drawn before "ep".
  static std::string MovetoLine() {
    std::string block = At(27);
    size_t end = block.find(" moveto\n");
    if (end == std::string::npos) return "";
    size_t start = block.rfind('\n', end) + 1;
    return block.substr(start, end - start);
  }
};

TEST_F(WatermarkTest, WritesTheTextBlockBeforeThePageEnd) {
  EXPECT_EQ(At(27),
            "pgsave restore /pgsave save store gsave\n"
            "0.00 0.00 0.00 setrgbcolor\n"
            "/Helvetica-Bold 48 selectfont\n"
            "242.36 318.22 moveto\n"
            "45 rotate\n"
            "(CONFIDENTIAL) show\n"
            "grestore\n");
  EXPECT_EQ(psOptionWatermark.options, 1);
}

TEST_F(WatermarkTest, EachPointWritesItsOwnFragment) {
  const struct {
    int32_t point;
    std::string start;  // the whole output, or the opening line of a text block
    bool textBlock;
  } cases[] = {
      {13,
       "userdict/krfInfo 2 dict dup begin\n/krfpgsave 0 def\n"
       "/krfbp{/krfpgsave save restore} bind def\n",
       false},
      {24, "krfbp\n", false},
      {27, "pgsave restore /pgsave save store gsave\n", true},
      {28, "pm restore /pm save store gsave\n", true},
      {29, "krfpgsave restore /krfpgsave save store gsave\n", true},
      {14, "", false},
      {16, "", false},
      {21, "", false},
      {23, "", false},
      {25, "", false},
      {26, "", false},
      {30, "", false},
      {-1, "", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.point);
    std::string out = At(c.point);
    if (c.textBlock) {
      EXPECT_EQ(out.rfind(c.start, 0), 0u) << out;
      EXPECT_NE(out.find("(CONFIDENTIAL) show\ngrestore\n"), std::string::npos) << out;
    } else {
      EXPECT_EQ(out, c.start);
    }
  }
}

TEST_F(WatermarkTest, OnlyTextWatermarksWithANameWriteAnything) {
  const struct {
    const char* name;
    int32_t type;
    bool writes;
  } cases[] = {
      {"Confidential", 0, true},
      {"Confidential", 1, false},
      {"Confidential", 2, false},
      {"Confidential", -1, false},  // type absent from the ticket
      {"", 0, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " type " + std::to_string(c.type));
    ResetWatermarkState();
    SetTextWatermark();
    CopyText(psOptionWatermark.name, sizeof psOptionWatermark.name, c.name);
    psOptionWatermark.type = c.type;
    std::string all;
    for (int32_t point : {13, 24, 27, 28, 29}) all += At(point);
    EXPECT_EQ(!all.empty(), c.writes) << all;
    EXPECT_EQ(psOptionWatermark.options, c.writes ? 1 : -1);
  }
}

TEST_F(WatermarkTest, StartPointForTheDialogsAngles) {
  const struct {
    int32_t angle;
    float hOffset, vOffset;
    const char* moveto;
  } cases[] = {
      {45, 0, 0, "242.36 318.22"},
      {135, 0, 0, "383.78 332.36"},
      {225, 0, 0, "369.64 473.78"},
      {315, 0, 0, "228.22 459.64"},
      {0, 0, 0, "206.00 386.00"},
      {90, 0, 0, "316.00 296.00"},
      {180, 0, 0, "406.00 406.00"},
      {270, 0, 0, "296.00 496.00"},
      {45, 10, -20, "252.36 298.22"},
      // Outside 0..360 (a negative angle compares unsigned): offsets only.
      {-10, 0, 0, "0.00 0.00"},
      {400, 0, 0, "0.00 0.00"},
      {-1, 0, 0, "0.00 0.00"},
      {361, 0, 0, "0.00 0.00"},
      {-10, 12.5f, -3, "12.50 -3.00"},
      {400, 7, 8, "7.00 8.00"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.angle);
    psOptionWatermark.angle = c.angle;
    psOptionWatermark.hOffset = c.hOffset;
    psOptionWatermark.vOffset = c.vOffset;
    EXPECT_EQ(MovetoLine(), c.moveto);
  }
}

// For every angle the dialog can send, the text box drawn from the start
// point (rotated by the angle) has its centre on the page centre.
TEST_F(WatermarkTest, RotatedBoxIsCentredOnThePageForEveryAngle) {
  const struct {
    int32_t orientation;
    double cx, cy;
  } pages[] = {{1, 306, 396}, {3, 306, 396}, {2, 396, 306}, {4, 396, 306}, {0, 0, 0},
               {5, 0, 0},     {-1, 0, 0}};
  const double hw = 75, hh = 15;
  psOptionWatermark.width = 2 * hw;
  psOptionWatermark.height = 2 * hh;
  for (const auto& page : pages) {
    psOptionWatermark.orientation = page.orientation;
    for (int32_t angle = 0; angle <= 360; ++angle) {
      SCOPED_TRACE("orientation " + std::to_string(page.orientation) + " angle " +
                   std::to_string(angle));
      psOptionWatermark.angle = angle;
      float x = -1, y = -1;
      GetWatermarkPostion(&x, &y, 0, 0);
      double a = angle * M_PI / 180;
      EXPECT_NEAR(x + std::cos(a) * hw - std::sin(a) * hh, page.cx, 0.01);
      EXPECT_NEAR(y + std::sin(a) * hw + std::cos(a) * hh, page.cy, 0.01);
    }
  }
}

TEST_F(WatermarkTest, DensityFadesTheColourTowardsWhite) {
  const struct {
    float r, g, b;
    int32_t density;
    const char* line;
  } cases[] = {
      {0, 0, 0, 50, "0.50 0.50 0.50 setrgbcolor\n"},
      {0, 0, 0, 100, "0.00 0.00 0.00 setrgbcolor\n"},
      {0, 0, 0, 0, "1.00 1.00 1.00 setrgbcolor\n"},
      {1, 0, 0.25f, 100, "1.00 0.00 0.25 setrgbcolor\n"},
      {0.2f, 0.6f, 1, 50, "0.60 0.80 1.00 setrgbcolor\n"},
      {0, 0.5f, 1, 20, "0.80 0.90 1.00 setrgbcolor\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    psOptionWatermark.colorR = c.r;
    psOptionWatermark.colorG = c.g;
    psOptionWatermark.colorB = c.b;
    psOptionWatermark.density = c.density;
    EXPECT_NE(At(27).find(std::string("gsave\n") + c.line), std::string::npos);
  }
}

TEST_F(WatermarkTest, LinesAreCutAtTheirBuffer) {
  // A text of 200 characters: the show line keeps 99 bytes and loses its
  // line end; the next line follows directly.
  std::string text = "(" + std::string(198, 'W') + ")";
  CopyText(psOptionWatermark.text, sizeof psOptionWatermark.text, text.c_str());
  std::string out = At(27);
  std::string expected = text.substr(0, kWatermarkLineSize - 1) + "grestore\n";
  EXPECT_NE(out.find("rotate\n" + expected), std::string::npos) << out;

  // The font name is a ticket text, never a format: percent signs pass as is.
  CopyText(psOptionWatermark.font, sizeof psOptionWatermark.font, "F%s%n%d");
  EXPECT_NE(At(27).find("/F%s%n%d 48 selectfont\n"), std::string::npos);
}

// Runs a three-page job through the pass-through and returns the stream.
std::string ThreePageJob() {
  const char* lines[] = {"%!PS-Adobe-3.0", "%%BeginProlog", "/ep{showpage}def", "%%EndProlog",
                         "%%Page: 1 1",    "%%EndPageSetup", "ep",
                         "%%Page: 2 2",    "%%EndPageSetup", "ep",
                         "%%Page: 3 3",    "%%EndPageSetup", "ep",
                         "%%EOF"};
  char* argv[7] = {nullptr};
  char copies[] = "1";
  argv[4] = copies;
  return CaptureStream([&](FILE* out) {
    PSLineState state;
    for (const char* line : lines) {
      HandlePSLine(state, line, std::strlen(line), '\n', argv, out);
    }
  });
}

size_t Count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

TEST_F(WatermarkTest, OnlyFirstDrawsOnTheFirstPageAlone) {
  const struct {
    int32_t onlyFirst;
    size_t blocks;
  } cases[] = {{0, 3}, {1, 1}, {-1, 1}, {2, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.onlyFirst);
    ResetWatermarkState();
    psOptionWatermark.onlyFirst = c.onlyFirst;
    std::string job = ThreePageJob();
    EXPECT_EQ(Count(job, "(CONFIDENTIAL) show\n"), c.blocks);
    EXPECT_EQ(Count(job, "\nkrfbp\n"), c.blocks);
    EXPECT_EQ(Count(job, "userdict/krfInfo"), 1u);
    // The first block always comes before the first page's "ep".
    size_t firstEnd = job.find("\nep\n");
    EXPECT_LT(job.find("(CONFIDENTIAL) show"), firstEnd);
    EXPECT_EQ(Count(job, "\nep\n"), 3u);
  }
}

TEST_F(WatermarkTest, PrologLinesFollowBeginProlog) {
  std::string job = ThreePageJob();
  EXPECT_NE(job.find("%%BeginProlog\n"
                     "userdict/krfInfo 2 dict dup begin\n"
                     "/krfpgsave 0 def\n"
                     "/krfbp{/krfpgsave save restore} bind def\n"
                     "/ep{showpage}def\n"),
            std::string::npos)
      << job;
  EXPECT_NE(job.find("%%EndPageSetup\nkrfbp\n"), std::string::npos);
  EXPECT_NE(job.find("grestore\nep\n"), std::string::npos);
}

TEST(WatermarkTicket, EveryKeyReachesItsField) {
  std::string ticket;
  auto add = [&ticket](const char* name, const char* value) {
    ticket += std::string(" ") + kPrefix + name + "=" + value;
  };
  add("WMARKNameTicket", "/68/114");  // plain text getter: kept as is
  add("WMARKOptionsTicket", "7");
  add("WMARKOnlyFirstTicket", "1");
  add("WMARKTextTicket", "/40/72/105/41");  // decoded: "(Hi)"
  add("WMARKOrientationTicket", "2");
  add("WMARKPaperHeightTicket", "842");
  add("WMARKPaperWidthTicket", "595");
  add("WMARKFilePathTicket", "/109/97/114/107");
  add("WMARKTypeTicket", "3");
  add("WMARKFontTicket", "Times-Roman");
  add("WMARKFontSizeTicket", "36");
  add("WMARKFontTypeTicket", "4");
  add("WMARKColorRTicket", "0.1");
  add("WMARKColorGTicket", "0.2");
  add("WMARKColorBTicket", "0.3");
  add("WMARKColorATicket", "0.4");
  add("WMARKAngleTicket", "30");
  add("WMARKDensityTicket", "60");
  add("WMARKScaleTicket", "1.5");
  add("WMARKPosHorizontalTicket", "2.5");
  add("WMARKPosVerticalTicket", "3.5");
  add("WMARKWidthTicket", "120.5");
  add("WMARKHeightTicket", "18.25");
  add("WMARKhOffsetTicket", "-4");
  add("WMARKvOffsetTicket", "6");
  FilterArguments args(ticket);
  WatermarkGetTicketFromPDE(args.argv);

  const WatermarkOptionRecord& w = psOptionWatermark;
  EXPECT_STREQ(w.name, "/68/114");
  EXPECT_EQ(w.options, 7);
  EXPECT_EQ(w.onlyFirst, 1);
  EXPECT_STREQ(w.text, "(Hi)");
  EXPECT_EQ(w.orientation, 2);
  EXPECT_EQ(w.paperHeight, 842);
  EXPECT_EQ(w.paperWidth, 595);
  EXPECT_STREQ(w.filePath, "mark");
  EXPECT_EQ(w.type, 3);
  EXPECT_STREQ(w.font, "Times-Roman");
  EXPECT_EQ(w.fontSize, 36);
  EXPECT_EQ(w.fontType, 4);
  EXPECT_FLOAT_EQ(w.colorR, 0.1f);
  EXPECT_FLOAT_EQ(w.colorG, 0.2f);
  EXPECT_FLOAT_EQ(w.colorB, 0.3f);
  EXPECT_FLOAT_EQ(w.colorA, 0.4f);
  EXPECT_EQ(w.angle, 30);
  EXPECT_EQ(w.density, 60);
  EXPECT_FLOAT_EQ(w.scale, 1.5f);
  EXPECT_FLOAT_EQ(w.posHorizontal, 2.5f);
  EXPECT_FLOAT_EQ(w.posVertical, 3.5f);
  EXPECT_FLOAT_EQ(w.width, 120.5f);
  EXPECT_FLOAT_EQ(w.height, 18.25f);
  EXPECT_FLOAT_EQ(w.hOffset, -4);
  EXPECT_FLOAT_EQ(w.vOffset, 6);

  // An empty ticket leaves the getters' defaults.
  FilterArguments empty("");
  WatermarkGetTicketFromPDE(empty.argv);
  EXPECT_STREQ(w.name, "");
  EXPECT_EQ(w.type, -1);
  EXPECT_FLOAT_EQ(w.width, -1);
  EXPECT_EQ(WatermarkticketDataNum, 25);
}

}  // namespace
