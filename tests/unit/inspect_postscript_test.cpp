// The PostScript part read back: pages by their page-end lines, and the
// fragments the watermark and finishing modules write, recognised from
// what those modules really write.
#include <gtest/gtest.h>

#include <string>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "inspect/postscript_part.h"
#include "job/module_dispatch.h"
#include "modules/features/features.h"
#include "modules/watermark/watermark.h"
#include "test_support.h"

namespace {

// Every module set as for an empty ticket, then a text watermark on every
// page, separator pages and the booklet margin shift with auto-fit.
class InspectPostScriptTest : public ::testing::Test {
 protected:
  void SetUp() override {
    InializeDescriptionTable();
    ResetJobState();
    FilterArguments none("");
    GetTicketFromPDE(none.argv);
    ResetWatermarkState();
    WatermarkOptionRecord& w = psOptionWatermark;
    CopyText(w.name, sizeof w.name, "Draft");
    CopyText(w.text, sizeof w.text, "(DRAFT)");
    CopyText(w.font, sizeof w.font, "Helvetica");
    w.type = 0;
    w.onlyFirst = 0;
    w.orientation = 1;
    w.paperWidth = 612;
    w.paperHeight = 792;
    w.fontSize = 48;
    w.colorR = w.colorG = w.colorB = 0;
    w.angle = 45;
    w.density = 50;
    w.width = 200;
    w.height = 20;
    w.hOffset = w.vOffset = 0;
    FeaturesOptionRecord& f = zpjlOptionFeatures;
    f.separatorPagesList = 2;
    CopyText(f.separatorPages, sizeof f.separatorPages, "1,3");
    f.bookletMarginSwitch = 1;
    CopyText(f.bookletMarginShift, sizeof f.bookletMarginShift, "5");
    f.autoFitSwitch = 1;
  }
  void TearDown() override {
    ResetWatermarkState();
    ResetJobState();
  }

  // What the modules write at an injection point.
  static std::string At(int32_t point) {
    return CaptureStream([point](FILE* s) { OutputPSCommandFromFilter(point, 1, s); });
  }

  // A two-page 1-up job with the modules' fragments where the pass-through
  // puts them.
  static std::string Job() {
    std::string ps = "%!PS-Adobe-3.0\n%%BeginProlog\n" + At(13) + "/ep { showpage } def\n" +
                     At(14) + "%%EndProlog\n%%BeginSetup\n" + At(16) + "%%EndSetup\n";
    for (int page = 1; page <= 2; ++page) {
      ps += "%%Page: " + std::to_string(page) + " " + std::to_string(page) + "\n%%EndPageSetup\n" +
            At(24) + "bp\n" + At(27) + "ep\n";
    }
    return ps + "%%EOF\n\x04";
  }
};

std::string Detail(const Fragment& fragment, const std::string& name) {
  for (const auto& [key, value] : fragment.details) {
    if (key == name) return value;
  }
  return "<none>";
}

TEST_F(InspectPostScriptTest, FindsEveryFragmentTheModulesWrite) {
  const PostScriptReport report = InspectPostScript(Job(), 100);
  EXPECT_EQ(report.offset, 100u);
  EXPECT_EQ(report.pages, 2);
  EXPECT_TRUE(report.endOfJobByte);
  const struct {
    const char* kind;
    int page;
    const char* anchor;
    const char* detail;
    const char* value;
  } kExpected[] = {
      {"watermark-prolog", 0, "after %%BeginProlog", "", ""},
      {"separator-pages", 0, "before %%EndProlog", "pages", "1,3"},
      {"booklet-margin-shift", 0, "before %%EndSetup", "shift (mm)", "5"},
      {"auto-fit", 0, "before %%EndSetup", "auto-fit", "on"},
      {"watermark-page-setup", 0, "after %%EndPageSetup", "", ""},
      {"watermark-text", 1, "before ep", "text", "(DRAFT)"},
      {"watermark-page-setup", 0, "after %%EndPageSetup", "", ""},
      {"watermark-text", 2, "before ep", "position", "242.36 318.22"},
  };
  ASSERT_EQ(report.fragments.size(), sizeof kExpected / sizeof kExpected[0]);
  for (size_t i = 0; i < report.fragments.size(); ++i) {
    const Fragment& f = report.fragments[i];
    EXPECT_EQ(f.kind, kExpected[i].kind) << i;
    EXPECT_EQ(f.page, kExpected[i].page) << i;
    EXPECT_EQ(f.anchor, kExpected[i].anchor) << i;
    EXPECT_TRUE(f.complete) << i;
    if (kExpected[i].detail[0] != '\0') {
      EXPECT_EQ(Detail(f, kExpected[i].detail), kExpected[i].value) << i;
    }
  }
  EXPECT_EQ(Detail(report.fragments[5], "colour"), "0.50 0.50 0.50");
  EXPECT_EQ(Detail(report.fragments[5], "font"), "/Helvetica 48");
  EXPECT_EQ(Detail(report.fragments[5], "angle"), "45");
  // Each fragment starts on the line the modules' text puts it.
  EXPECT_EQ(report.fragments[0].line, 3u);
  EXPECT_EQ(report.fragments[0].lines, 3u);
}

// Settings that change the fragments: auto-fit off, a 2-up job, a
// separator list too long for its line, a text that runs past its buffer.
TEST_F(InspectPostScriptTest, FragmentVariants) {
  const struct {
    const char* name;
    std::function<void()> set;
    int32_t point;
    const char* kind;
    bool complete;
    const char* detail;
    const char* value;
  } kCases[] = {
      {"auto-fit off", [] { zpjlOptionFeatures.autoFitSwitch = 0; }, 16, "auto-fit", true,
       "auto-fit", "off"},
      {"2-up",
       [] {
         CopyText(StdLayoutRowInfo, kLayoutInfoSize, "1");
         CopyText(StdLayoutColumnInfo, kLayoutInfoSize, "2");
       },
       21, "separator-pages", true, "pages", "1,3"},
      {"long separator list",
       [] { CopyText(zpjlOptionFeatures.separatorPages, kFeaturesTextSize, "1,2,3,4,5,6,78"); }, 14,
       "separator-pages", false, "pages", "1,2,3,4,5,6,78"},
      {"long text",
       [] {
         CopyText(psOptionWatermark.text, kWatermarkTextSize,
                  ("(" + std::string(120, 'x') + ")").c_str());
       },
       27, "watermark-text", false, "colour", "0.50 0.50 0.50"},
  };
  for (const auto& c : kCases) {
    SetUp();
    c.set();
    const std::string before = c.point == 14   ? "%%EndProlog\n"
                               : c.point == 16 ? "%%EndSetup\n"
                               : c.point == 21 ? "userdict/setpagedevice{pop}bind put\n"
                                               : "ep\n";
    const std::string ps = "%!PS\n" + At(c.point) + before;
    const PostScriptReport report = InspectPostScript(ps, 0);
    bool found = false;
    for (const Fragment& f : report.fragments) {
      if (f.kind != c.kind) continue;
      found = true;
      EXPECT_EQ(f.complete, c.complete) << c.name;
      EXPECT_EQ(Detail(f, c.detail), c.value) << c.name;
      EXPECT_EQ(f.anchor, "before " + before.substr(0, before.size() - 1)) << c.name;
    }
    EXPECT_TRUE(found) << c.name << "\n" << ps;
  }
}

TEST(InspectPostScript, CountsPagesByTheirPageEndLines) {
  const struct {
    const char* ps;
    int pages;
    size_t lines;
    bool endOfJob;
  } kCases[] = {
      {"", 0, 0, false},
      {"\x04", 0, 1, true},
      {"bp\nep\nbp\nep\n\x04", 2, 5, true},
      {"bp\r\nep\r\nbp\r\nendp\r\n", 2, 4, false},
      {"bp\rep\rbp\rep", 2, 4, false},              // lone CR ends lines; the last one unended
      {"ep \nep\t\n ep\nshowpage\n", 0, 4, false},  // only the whole lines count
      {"/ep { showpage } def\nep\n", 1, 2, false},
  };
  for (const auto& c : kCases) {
    const PostScriptReport report = InspectPostScript(c.ps, 0);
    EXPECT_EQ(report.pages, c.pages) << c.ps;
    EXPECT_EQ(report.lines, c.lines) << c.ps;
    EXPECT_EQ(report.endOfJobByte, c.endOfJob) << c.ps;
    EXPECT_EQ(report.pageEnds.size(), static_cast<size_t>(c.pages)) << c.ps;
  }
  const PostScriptReport report = InspectPostScript("a\nep\nb\nendp\n", 0);
  ASSERT_EQ(report.pageEnds.size(), 2u);
  EXPECT_EQ(report.pageEnds[1].line, 4u);
  EXPECT_EQ(report.pageEnds[1].kind, "endp");
  EXPECT_EQ(report.pageEnds[1].page, 2);
}

// The anchor is the structural line the filter writes the fragment at, or
// nothing when the fragment stands elsewhere.
TEST(InspectPostScript, AnchorsNameWhereTheFilterInserts) {
  const std::string prolog =
      "userdict/krfInfo 2 dict dup begin\n/krfpgsave 0 def\n/krfbp{/krfpgsave save restore} bind "
      "def\n";
  const struct {
    std::string ps;
    const char* kind;
    const char* anchor;
  } kCases[] = {
      {"%%BeginProlog\n" + prolog + "%%EndProlog\n", "watermark-prolog", "after %%BeginProlog"},
      {"x\n" + prolog + "%%EndProlog\n", "watermark-prolog", ""},
      {"%%EndPageSetup\nkrfbp\nbp\n", "watermark-page-setup", "after %%EndPageSetup"},
      {"bp\nkrfbp\n", "watermark-page-setup", ""},
      {"%%BeginSetup\n[{\n%%BeginNonPPDFeatures\n1 dict dup/SeparatorPages[2]put/Custom/ProcSet "
       "findresource/setcoverseparator get exec\n%%EndNonPPDFeatures\n} stopped cleartomark\n"
       "%%EndSetup\n",
       "separator-pages", ""},
  };
  for (const auto& c : kCases) {
    const PostScriptReport report = InspectPostScript(c.ps, 0);
    ASSERT_EQ(report.fragments.size(), 1u) << c.ps;
    EXPECT_EQ(report.fragments[0].kind, c.kind) << c.ps;
    EXPECT_EQ(report.fragments[0].anchor, c.anchor) << c.ps;
  }
}

// The application's own bracketed feature blocks are not the filter's.
TEST(InspectPostScript, LeavesTheApplicationsFeatureCodeAlone) {
  const std::string ps =
      "[{\n%%BeginNonPPDFeatures\n/Other/ProcSet findresource/x get exec\n%%EndNonPPDFeatures\n"
      "} stopped cleartomark\n[{\n%%BeginFeature: *PageSize A4\n%%EndFeature\n"
      "} stopped cleartomark\ngsave\nkrfbpx\n";
  EXPECT_TRUE(InspectPostScript(ps, 0).fragments.empty());
}

}  // namespace
