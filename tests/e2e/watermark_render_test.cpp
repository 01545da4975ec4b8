// Jobs through the filter, rendered by Ghostscript with and without the
// watermark and the pages compared; real documents are made at test time by
// groff, dvips, poppler, Ghostscript and the CUPS filter chain.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "filter_runner.h"
#include "inspect/postscript_part.h"

namespace {

// The watermark's circle: the centre of the letter page, in points.
constexpr double kCentreX = 306;
constexpr double kCentreY = 396;
constexpr double kMarkRadius = 205;

// A red "CONFIDENTIAL" in 48-point Helvetica-Bold at 45 degrees.
std::string WatermarkOptions(bool onlyFirst = false) {
  const char* settings[][2] = {
      {"Name", "Confidential"}, {"OnlyFirst", onlyFirst ? "1" : "0"}, {"Text", "(CONFIDENTIAL)"},
      {"Orientation", "1"},     {"PaperHeight", "792"},  {"PaperWidth", "612"},  {"Type", "0"},
      {"Font", "Helvetica-Bold"}, {"FontSize", "48"},  {"ColorR", "1.0"},  {"ColorG", "0.0"},
      {"ColorB", "0.0"},        {"Angle", "45"},   {"Density", "100"},  {"Width", "357.3"},
      {"Height", "34.5"},       {"hOffset", "0"},  {"vOffset", "0"}};
  std::string options;
  for (const auto& [name, value] : settings)
    options += Key(std::string("WMARK") + name + "Ticket", value);
  return options;
}

// The filter's run on a job, and its PostScript without the end-of-job byte.
struct Filtered {
  FilterRun run;
  std::string postscript;
};

Filtered Filter(const std::string& input, const std::string& options,
                const std::string& ppd = "ppd/utf8-color.ppd") {
  FilterJob job;
  job.ppd = Fixture(ppd);
  job.options = options;
  job.input = input;
  Filtered result{RunFilter(job), ""};
  EXPECT_EQ(result.run.status, 0) << result.run.err;
  result.postscript = SplitStream(result.run.out).body;
  if (!result.postscript.empty() && result.postscript.back() == '\x04') result.postscript.pop_back();
  return result;
}

struct Image {
  int width = 0;
  int height = 0;
  double scale = 1;  // pixels per point
  std::string rgb;   // width * height * 3 bytes, top row first
  const unsigned char* At(int x, int row) const {
    return reinterpret_cast<const unsigned char*>(rgb.data()) + (row * width + x) * 3;
  }
};

// The binary PPMs ("P6") Ghostscript's ppmraw device writes one after another.
std::vector<Image> ParsePPMs(const std::string& bytes, double scale) {
  std::vector<Image> images;
  size_t at = 0;
  auto field = [&]() {
    while (at < bytes.size() &&
           (isspace(static_cast<unsigned char>(bytes[at])) || bytes[at] == '#')) {
      at = bytes[at] == '#' ? bytes.find('\n', at) : at + 1;  // a comment runs to the line end
    }
    size_t start = at;
    while (at < bytes.size() && !isspace(static_cast<unsigned char>(bytes[at]))) ++at;
    return bytes.substr(start, at - start);
  };
  while (field() == "P6") {
    Image image{std::atoi(field().c_str()), std::atoi(field().c_str()), scale, ""};
    if (field() != "255") break;
    ++at;  // the single whitespace byte before the raster
    size_t size = static_cast<size_t>(image.width) * image.height * 3;
    if (image.width <= 0 || image.height <= 0 || bytes.size() - at < size) break;
    image.rgb = bytes.substr(at, size);
    at += size;
    images.push_back(image);
  }
  return images;
}

// The pages of `postscript` as Ghostscript renders them; any error fails.
std::vector<Image> Render(const std::string& postscript, int dpi) {
  FilterJob job;
  job.filter = "gs";  // found on PATH; scripts/install-deps installs it
  job.argv = std::vector<std::string>{"-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=ppmraw",
                                      "-r" + std::to_string(dpi), "-sOutputFile=-", "-"};
  job.input = postscript;
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.find("Error"), std::string::npos) << run.err;
  return ParsePPMs(run.out, dpi / 72.0);
}

// The watermark, and nothing else, on the first `marks` pages: more than
// `minimum` pixels changed, none outside its circle, nine in ten red; the
// other pages as they were.
void ExpectMarks(const std::vector<Image>& plain, const std::vector<Image>& marked,
                 size_t marks, long minimum) {
  ASSERT_EQ(marked.size(), plain.size());
  for (size_t page = 0; page < plain.size(); ++page) {
    SCOPED_TRACE("page " + std::to_string(page + 1));
    const Image &p = plain[page], &m = marked[page];
    ASSERT_TRUE(p.width == m.width && p.height == m.height);
    long count = 0, outside = 0, red = 0;
    for (int row = 0; row < p.height; ++row) {
      for (int x = 0; x < p.width; ++x) {
        const unsigned char *a = p.At(x, row), *b = m.At(x, row);
        if (a[0] == b[0] && a[1] == b[1] && a[2] == b[2]) continue;
        ++count;
        double px = (x + 0.5) / p.scale, py = (p.height - row - 0.5) / p.scale;
        if (std::hypot(px - kCentreX, py - kCentreY) > kMarkRadius) ++outside;
        if (b[0] > 200 && b[1] < 60 && b[2] < 60) ++red;
      }
    }
    if (page >= marks) {
      EXPECT_EQ(count, 0);
      continue;
    }
    EXPECT_GT(count, minimum);
    EXPECT_EQ(outside, 0);
    EXPECT_GT(red, count * 9 / 10);
  }
}

TEST(WatermarkRendering, TextIsDrawnAcrossThePageCentre) {
  const std::string job = ReadFile(Fixture("ps/app-letter-2page.ps"));
  const std::string marked = Filter(job, WatermarkOptions()).postscript;
  ASSERT_NE(marked.find("(CONFIDENTIAL) show\n"), std::string::npos);
  std::vector<Image> plain = Render(Filter(job, "").postscript, 72);
  ASSERT_EQ(plain.size(), 2u);
  EXPECT_EQ(plain[0].width, 612);
  EXPECT_EQ(plain[0].height, 792);
  ExpectMarks(plain, Render(marked, 72), 2, 2000);
}

// Separator pages and the booklet margin with auto-fit ask a procedure set
// the interpreter does not have; the bracketed blocks must fail quietly and
// leave the pages as they were.
TEST(FeaturesRendering, FinishingBlocksRunWithoutError) {
  const std::string options =
      Key("SeparatorPageListTicket", "2") + Key("SeparatorPageTicket", "1,2") +
      Key("BookletMarginSwitchTicket", "1") + Key("BookletMarginMMShiftTicket", "5") +
      Key("AutoFitSwitchTicket", "1");
  const std::string job = ReadFile(Fixture("ps/app-letter-2page.ps"));
  const std::string finished = Filter(job, options).postscript;
  ASSERT_NE(finished.find("/setcoverseparator get exec\n"), std::string::npos);
  ASSERT_NE(finished.find("/setsignatureautoscale 2 copy known"), std::string::npos);
  ExpectMarks(Render(Filter(job, "").postscript, 36), Render(finished, 36), 0, 0);
}

// ---- Real documents ---------------------------------------------------------------

const char kManPage[] =
    ".TH DOC 1\n.SH ONE\nFirst page.\n.bp\n.SH TWO\nSecond page.\n.bp\n.SH THREE\nThird page.\n";
const char kTeX[] =
    "\\hsize=4in \\vsize=6in \\parindent=0pt First page.\\vfill\\eject "
    "Second page.\\vfill\\eject Third page.\\bye\n";

struct Document {
  const char* name;
  const char* command;  // in a directory with doc.man, doc.tex, doc.ps, doc.pdf; writes job.ps
  size_t sheets;   // what the job prints
  size_t logged;   // "PAGE:" lines the filter writes for it
  bool onlyFirst;  // the watermark on the first sheet only
  bool insertion = false;  // the PPD-feature insertion mode
};
void PrintTo(const Document& d, std::ostream* os) { *os << d.name; }

#define CUPS_CHAIN "cupsfilter -p " ZPJL_SOURCE_DIR "/ppd/zpjl-color-production.ppd " \
                   "-m application/vnd.cups-postscript "
const Document kDocuments[] = {
    {"groff", "cp doc.ps job.ps", 3, 3, false},
    {"dvips", "tex -interaction=batchmode doc.tex >/dev/null && dvips -q -o job.ps doc.dvi", 3, 3, false},
    {"pdftops", "pdftops doc.pdf job.ps", 3, 3, false},
    {"pdftocairo", "pdftocairo -ps doc.pdf job.ps", 3, 3, false},
    {"ps2write", "gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=ps2write -sOutputFile=job.ps doc.pdf", 3, 3, false},
    {"CupsFromPdf", CUPS_CHAIN "doc.pdf >job.ps 2>/dev/null", 3, 3, false},
    {"Cups2Up", CUPS_CHAIN "-o number-up=2 doc.ps >job.ps 2>/dev/null", 2, 2, false},
    {"Cups4Up", CUPS_CHAIN "-o number-up=4 doc.ps >job.ps 2>/dev/null", 1, 1, false},
    {"FirstPageOnly", "pdftops doc.pdf job.ps", 3, 3, true},
    {"InsertionMode", "pdftops doc.pdf job.ps", 3, 3, false, true},
    // Without DSC comments only "showpage" lines tell the pages: groff's
    // end inside a procedure, and its prolog holds one such line.
    {"NoCommentsCairo", "pdftocairo -ps doc.pdf - | grep -v '^%%' >job.ps", 3, 3, false},
    {"NoCommentsGroff", "grep -v '^%%' doc.ps >job.ps", 3, 1, false},
    // A page that places another document: the inner pages are not the job's.
    {"EmbeddedDocument",
     "{ printf '%%!PS-Adobe-3.0\\n%%%%Pages: 1\\n%%%%EndComments\\n%%%%Page: 1 1\\n"
     "save /showpage{}def\\n%%%%BeginDocument: doc.ps\\n'; cat doc.ps;"
     " printf '%%%%EndDocument\\nrestore showpage\\n%%%%Trailer\\n%%%%EOF\\n'; } >job.ps",
     1, 1, false},
};
#undef CUPS_CHAIN

// A directory per test process: ctest runs the rows in parallel.
class RealDocumentTest : public ::testing::TestWithParam<Document> {
 protected:
  static void SetUpTestSuite() {
    mkdir(ZPJL_TEST_OUTPUT_DIR, 0755);
    std::string pattern = std::string(ZPJL_TEST_OUTPUT_DIR) + "/documents-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
    std::ofstream(dir_ + "/doc.man") << kManPage;
    std::ofstream(dir_ + "/doc.tex") << kTeX;
    ASSERT_EQ(Shell("groff -man -Tps doc.man >doc.ps && gs -q -dSAFER -dBATCH -dNOPAUSE "
                    "-sDEVICE=pdfwrite -sOutputFile=doc.pdf doc.ps"), 0);
  }
  static void TearDownTestSuite() { std::system(("rm -rf '" + dir_ + "'").c_str()); }
  static int Shell(const std::string& command) {
    return std::system(("cd '" + dir_ + "' && " + command).c_str());
  }
  static std::string dir_;
};
std::string RealDocumentTest::dir_;

// Whether every line of `input` is in `output`, in order (lines only added).
bool LinesKept(const std::string& input, const std::string& output) {
  size_t at = 0;
  for (size_t start = 0, end; (end = input.find('\n', start)) != std::string::npos; start = end + 1) {
    std::string line = input.substr(start, end - start + 1);
    at = output.find(line, at);
    if (at == std::string::npos || (at > 0 && output[at - 1] != '\n')) return false;
    at += line.size();
  }
  return true;
}

TEST_P(RealDocumentTest, WatermarkOnEveryPrintedSheetAndOnePageLogLineEach) {
  const Document& d = GetParam();
  ASSERT_EQ(Shell(d.command), 0);
  const std::string job = ReadFile(dir_ + "/job.ps");
  ASSERT_FALSE(job.empty());

  // Without a watermark the PostScript passes unchanged but for an
  // unterminated last line; with it, lines are only added (the insertion
  // mode moves the last line to the front).
  Filtered marked = Filter(job, WatermarkOptions(d.onlyFirst),
                           d.insertion ? "ppd/decomp-color.ppd" : "ppd/utf8-color.ppd");
  if (!d.insertion) {
    EXPECT_TRUE(Filter(job, "").postscript == job.substr(0, job.rfind('\n') + 1));
    EXPECT_TRUE(LinesKept(job, marked.postscript));
  }
  // The inspector finds the page-device hook, and only it, with its text.
  PostScriptReport report = InspectPostScript(marked.postscript, 0);
  ASSERT_EQ(report.fragments.size(), 1u);
  EXPECT_EQ(report.fragments[0].kind, "watermark-page-hook");
  EXPECT_TRUE(report.fragments[0].complete);
  const auto& details = report.fragments[0].details;
  EXPECT_NE(std::find(details.begin(), details.end(),
                      std::make_pair(std::string("text"), std::string("(CONFIDENTIAL)"))), details.end());
  std::string log;
  for (size_t page = 1; page <= d.logged; ++page) log += "PAGE:" + std::to_string(page) + " 1\n";
  EXPECT_EQ(marked.run.err, log);

  std::vector<Image> plain = Render(job, 36);
  ASSERT_EQ(plain.size(), d.sheets);
  ExpectMarks(plain, Render(marked.postscript, 36), d.onlyFirst ? 1 : d.sheets, 300);
}

INSTANTIATE_TEST_SUITE_P(Documents, RealDocumentTest, ::testing::ValuesIn(kDocuments),
                         [](const ::testing::TestParamInfo<Document>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
