#include "modules/watermark/watermark.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "engine/module_dispatch.h"
#include "frame/fixed_text.h"
#include "frame/ps_stream.h"
#include "test_support.h"

namespace {

// A black text watermark on a portrait letter page, a 200 x 20 box at 45
// degrees, on every page.
class WatermarkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    FilterArguments none("");
    GetTicketFromPDE(none.argv);  // every module as for an empty ticket
    ResetWatermarkState();
    WatermarkOptionRecord& w = psOptionWatermark;
    CopyText(w.name, sizeof w.name, "Confidential");
    CopyText(w.text, sizeof w.text, "(CONFIDENTIAL)");
    CopyText(w.font, sizeof w.font, "Helvetica-Bold");
    w.type = 0;
    w.onlyFirst = 0;
    w.orientation = 1;
    w.paperWidth = 612;
    w.paperHeight = 792;
    w.fontSize = 48;
    w.colorR = w.colorG = w.colorB = 0;
    w.angle = 45;
    w.density = 100;
    w.width = 200;
    w.height = 20;
    w.hOffset = w.vOffset = 0;
  }
  void TearDown() override { ResetWatermarkState(); }

  static std::string At(int32_t point) {
    return CaptureStream([point](FILE* s) { WatermarkOutputPSCommandFromFilter(point, 1, s); });
  }
  static std::string LineBefore(const std::string& text, const std::string& suffix) {
    size_t end = text.find(suffix);
    if (end == std::string::npos) return "";
    size_t start = text.rfind('\n', end) + 1;
    return text.substr(start, end - start);
  }
};

TEST_F(WatermarkTest, FragmentPerInjectionPoint) {
  const std::string text =
      "0.00 0.00 0.00 setrgbcolor\n/Helvetica-Bold 48 selectfont\n242.36 318.22 moveto\n"
      "45 rotate\n(CONFIDENTIAL) show\ngrestore\n";
  const struct {
    int32_t point;
    std::string out;
  } cases[] = {
      {13,
       "userdict/krfInfo 2 dict dup begin\n/krfpgsave 0 def\n"
       "/krfbp{/krfpgsave save restore} bind def\n"},
      {24, "krfbp\n"},
      {27, "pgsave restore /pgsave save store gsave\n" + text},
      {28, "pm restore /pm save store gsave\n" + text},
      {29, "krfpgsave restore /krfpgsave save store gsave\n" + text},
      {14, ""},
      {26, ""},
      {-1, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(At(c.point), c.out) << c.point;
  EXPECT_EQ(psOptionWatermark.options, 1);
}

TEST_F(WatermarkTest, OnlyNamedTextWatermarksWrite) {
  const struct {
    const char* name;
    int32_t type;
  } silent[] = {{"Confidential", 1}, {"Confidential", 2}, {"Confidential", -1}, {"", 0}};
  for (const auto& c : silent) {
    CopyText(psOptionWatermark.name, sizeof psOptionWatermark.name, c.name);
    psOptionWatermark.type = c.type;
    psOptionWatermark.options = -1;
    for (int32_t point : {13, 24, 27, 28, 29}) EXPECT_EQ(At(point), "") << c.type << c.name;
    EXPECT_EQ(psOptionWatermark.options, -1);
  }
}

TEST_F(WatermarkTest, StartPoint) {
  const struct {
    int32_t angle;
    float hOffset, vOffset;
    const char* moveto;
  } cases[] = {
      {45, 0, 0, "242.36 318.22"},
      {135, 0, 0, "383.78 332.36"},
      {45, 10, -20, "252.36 298.22"},
      // Outside 0..360 (a negative angle compares unsigned): the offsets alone.
      {-10, 0, 0, "0.00 0.00"},
      {400, 0, 0, "0.00 0.00"},
      {-10, 12.5f, -3, "12.50 -3.00"},
  };
  for (const auto& c : cases) {
    psOptionWatermark.angle = c.angle;
    psOptionWatermark.hOffset = c.hOffset;
    psOptionWatermark.vOffset = c.vOffset;
    EXPECT_EQ(LineBefore(At(27), " moveto\n"), c.moveto) << c.angle;
  }
}

// For every angle the box drawn from the start point, turned by the angle,
// has its centre on the page centre (orientations 2 and 4 swap the sides;
// other values centre on the origin).
TEST_F(WatermarkTest, RotatedBoxIsCentredForEveryAngle) {
  const struct {
    int32_t orientation;
    double cx, cy;
  } pages[] = {{1, 306, 396}, {3, 306, 396}, {2, 396, 306}, {4, 396, 306}, {0, 0, 0}, {5, 0, 0}};
  const double hw = 75, hh = 15;
  psOptionWatermark.width = 2 * hw;
  psOptionWatermark.height = 2 * hh;
  for (const auto& page : pages) {
    psOptionWatermark.orientation = page.orientation;
    for (int32_t angle = 0; angle <= 360; ++angle) {
      psOptionWatermark.angle = angle;
      float x = -1, y = -1;
      GetWatermarkPostion(&x, &y, 0, 0);
      double a = angle * M_PI / 180;
      EXPECT_NEAR(x + std::cos(a) * hw - std::sin(a) * hh, page.cx, 0.01) << angle;
      EXPECT_NEAR(y + std::sin(a) * hw + std::cos(a) * hh, page.cy, 0.01) << angle;
    }
  }
}

TEST_F(WatermarkTest, DensityFadesTowardsWhite) {
  const struct {
    float r, g, b;
    int32_t density;
    const char* colour;
  } cases[] = {
      {0, 0, 0, 50, "0.50 0.50 0.50"},
      {1, 0, 0.25f, 100, "1.00 0.00 0.25"},
      {0.2f, 0.6f, 1, 50, "0.60 0.80 1.00"},
  };
  for (const auto& c : cases) {
    psOptionWatermark.colorR = c.r;
    psOptionWatermark.colorG = c.g;
    psOptionWatermark.colorB = c.b;
    psOptionWatermark.density = c.density;
    EXPECT_EQ(LineBefore(At(27), " setrgbcolor\n"), c.colour);
  }
}

TEST_F(WatermarkTest, LinesAreCutAtTheirBufferAndNeverFormats) {
  // 200 characters of text: the show line keeps 99 bytes and loses its end.
  std::string text = "(" + std::string(198, 'W') + ")";
  CopyText(psOptionWatermark.text, sizeof psOptionWatermark.text, text.c_str());
  CopyText(psOptionWatermark.font, sizeof psOptionWatermark.font, "F%s%n");
  std::string out = At(27);
  EXPECT_NE(out.find("rotate\n" + text.substr(0, kWatermarkLineSize - 1) + "grestore\n"),
            std::string::npos);
  EXPECT_NE(out.find("/F?s?n 48 selectfont\n"), std::string::npos);
}

TEST_F(WatermarkTest, TextShowsAsTypedInOneStringToken) {
  const struct {
    const char *text, *token;
  } cases[] = {
      {"(a (b) c)", "(a (b) c)"},  // paired parentheses need no escape
      {"<48 65>", "<48 65>"},
      {"DRAFT", "(DRAFT)"},
      {"(a) show (b)", "(a\\) show \\(b)"},
      {"(C:\\x\\)", "(C:\\\\x\\\\)"},
      {"(\x1b%-12345X\r\n)", "(?%-12345X?" "?)"},
      {"<4G>", "(<4G>)"},
  };
  for (const auto& c : cases) {
    CopyText(psOptionWatermark.text, sizeof psOptionWatermark.text, c.text);
    EXPECT_EQ(LineBefore(At(27), " show\n"), c.token) << c.text;
  }
}

size_t Count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

// A three-page job through the pass-through.
TEST_F(WatermarkTest, ThreePageJobWithAndWithoutOnlyFirst) {
  const char* lines[] = {"%%BeginProlog",
                         "/ep{showpage}def",
                         "%%EndProlog",
                         "%%EndPageSetup",
                         "ep",
                         "%%EndPageSetup",
                         "ep",
                         "%%EndPageSetup",
                         "ep"};
  for (int32_t onlyFirst : {0, 1, -1}) {
    ResetWatermarkState();
    psOptionWatermark.onlyFirst = onlyFirst;
    char* argv[7] = {nullptr};
    std::string job = CaptureStream([&](FILE* out) {
      PSLineState state;
      for (const char* l : lines) HandlePSLine(state, l, std::strlen(l), '\n', argv, out);
    });
    const size_t pages = onlyFirst == 0 ? 3 : 1;
    EXPECT_EQ(Count(job, "%%EndPageSetup\nkrfbp\n"), pages) << onlyFirst;
    EXPECT_EQ(Count(job, "(CONFIDENTIAL) show\ngrestore\nep\n"), pages) << onlyFirst;
    EXPECT_EQ(Count(job, "(CONFIDENTIAL) show"), pages) << onlyFirst;
    // The first block ends the first page.
    EXPECT_LT(job.find("(CONFIDENTIAL) show"), job.find("%%EndPageSetup", job.find("ep\n")));
    EXPECT_EQ(job.find("%%BeginProlog\nuserdict/krfInfo 2 dict dup begin\n/krfpgsave 0 def\n"
                       "/krfbp{/krfpgsave save restore} bind def\n/ep{showpage}def\n"),
              0u);
  }
}

// The text is slash-decoded like every dialog text; name and font are kept as sent.
TEST(WatermarkTicket, TextIsDecodedNameAndFontAreNot) {
  const std::string prefix = " com.korvanel.qd.jtz.printsettings.WMARK";
  FilterArguments args(prefix + "NameTicket=/68" + prefix + "TextTicket=/40/72/105/41" + prefix +
                       "FontTicket=/70" + prefix + "hOffsetTicket=-4.5");
  WatermarkGetTicketFromPDE(args.argv);
  EXPECT_STREQ(psOptionWatermark.name, "/68");
  EXPECT_STREQ(psOptionWatermark.text, "(Hi)");
  EXPECT_STREQ(psOptionWatermark.font, "/70");
  EXPECT_FLOAT_EQ(psOptionWatermark.hOffset, -4.5f);
  EXPECT_EQ(psOptionWatermark.type, -1);
  EXPECT_EQ(WatermarkticketDataNum, 25);
}

}  // namespace

namespace {

// The text lines are formatted once and kept: whatever setting changes
// between two pages must still show in the next block, and going back must
// give the first block again.
TEST_F(WatermarkTest, EachBlockFollowsTheSettingsOfItsMoment) {
  const std::string first = At(27);
  const struct {
    const char* name;
    void (*change)(WatermarkOptionRecord&);
    const char* expected;  // a line the changed block holds
  } changes[] = {
      {"angle", [](WatermarkOptionRecord& w) { w.angle = 90; }, "90 rotate\n"},
      {"density", [](WatermarkOptionRecord& w) { w.density = 50; }, "0.50 0.50 0.50 setrgbcolor\n"},
      {"colour", [](WatermarkOptionRecord& w) { w.colorG = 1; }, "0.00 1.00 0.00 setrgbcolor\n"},
      {"font", [](WatermarkOptionRecord& w) { CopyText(w.font, sizeof w.font, "Times-Roman"); },
       "/Times-Roman 48 selectfont\n"},
      {"text", [](WatermarkOptionRecord& w) { CopyText(w.text, sizeof w.text, "(DRAFT)"); },
       "(DRAFT) show\n"},
      {"offset", [](WatermarkOptionRecord& w) { w.hOffset = 10; }, "252.36 318.22 moveto\n"},
  };
  for (const auto& c : changes) {
    const WatermarkOptionRecord saved = psOptionWatermark;
    c.change(psOptionWatermark);
    const std::string changed = At(27);
    EXPECT_NE(changed.find(c.expected), std::string::npos) << c.name << "\n" << changed;
    psOptionWatermark = saved;
    EXPECT_EQ(At(27), first) << c.name;
  }
}

}  // namespace
