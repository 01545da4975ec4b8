// The PostScript the watermark and finishing modules insert, run by a real
// PostScript interpreter: a two-page job shaped like a desktop application's
// print output goes through the filter, loses its PJL envelope and is
// rendered by Ghostscript, with and without the watermark.
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "filter_runner.h"

namespace {

// Letter page at 72 dpi: one pixel per point.
constexpr int kPageWidth = 612;
constexpr int kPageHeight = 792;
constexpr double kCentreX = 306;
constexpr double kCentreY = 396;

// A red "CONFIDENTIAL" in 48-point Helvetica-Bold at 45 degrees; the box is
// what the dialog measures for that text.
std::string WatermarkOptions() {
  const std::vector<std::pair<std::string, std::string>> settings = {
      {"WMARKNameTicket", "Confidential"},
      {"WMARKOnlyFirstTicket", "0"},
      {"WMARKTextTicket", "(CONFIDENTIAL)"},
      {"WMARKOrientationTicket", "1"},
      {"WMARKPaperHeightTicket", "792"},
      {"WMARKPaperWidthTicket", "612"},
      {"WMARKTypeTicket", "0"},
      {"WMARKFontTicket", "Helvetica-Bold"},
      {"WMARKFontSizeTicket", "48"},
      {"WMARKColorRTicket", "1.0"},
      {"WMARKColorGTicket", "0.0"},
      {"WMARKColorBTicket", "0.0"},
      {"WMARKAngleTicket", "45"},
      {"WMARKDensityTicket", "100"},
      {"WMARKWidthTicket", "357.3"},
      {"WMARKHeightTicket", "34.5"},
      {"WMARKhOffsetTicket", "0"},
      {"WMARKvOffsetTicket", "0"},
  };
  std::string options;
  for (const auto& [name, value] : settings) options += Key(name, value);
  return options;
}

std::string OutputDir() {
  std::string dir = ZPJL_TEST_OUTPUT_DIR;
  mkdir(dir.c_str(), 0755);
  return dir;
}

// The PostScript of a filtered job: the envelope and the end-of-job byte removed.
std::string PostScriptOf(const std::string& options) {
  FilterJob job;
  job.ppd = Fixture("ppd/utf8-color.ppd");
  job.options = options;
  job.input = ReadFile(Fixture("ps/app-letter-2page.ps"));
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0) << run.err;
  std::string body = SplitStream(run.out).body;
  if (!body.empty() && body.back() == '\x04') body.pop_back();
  EXPECT_EQ(body.rfind("%!PS-Adobe-3.0\n", 0), 0u) << Visible(run.out.substr(0, 400));
  return body;
}

struct Image {
  int width = 0;
  int height = 0;
  std::string rgb;  // width * height * 3 bytes, top row first
  const unsigned char* At(int x, int row) const {
    return reinterpret_cast<const unsigned char*>(rgb.data()) + (row * width + x) * 3;
  }
};

// A binary PPM ("P6") as Ghostscript's ppmraw device writes it.
bool ParsePPM(const std::string& bytes, Image* image) {
  size_t at = 0;
  auto field = [&]() {
    while (at < bytes.size() &&
           (isspace(static_cast<unsigned char>(bytes[at])) || bytes[at] == '#')) {
      if (bytes[at] == '#') at = bytes.find('\n', at);
      if (at == std::string::npos) return std::string();
      ++at;
    }
    size_t start = at;
    while (at < bytes.size() && !isspace(static_cast<unsigned char>(bytes[at]))) ++at;
    return bytes.substr(start, at - start);
  };
  if (field() != "P6") return false;
  image->width = std::atoi(field().c_str());
  image->height = std::atoi(field().c_str());
  if (field() != "255") return false;
  ++at;  // the single whitespace byte before the raster
  size_t size = static_cast<size_t>(image->width) * image->height * 3;
  if (image->width <= 0 || image->height <= 0 || bytes.size() - at < size) return false;
  image->rgb = bytes.substr(at, size);
  return true;
}

struct Rendering {
  bool ok = false;
  std::vector<Image> pages;
};

// Renders `postscript` with Ghostscript into files named `name`-page<N>.<ext>
// under the output directory; ppmraw pages are read back.
Rendering Render(const std::string& postscript, const std::string& name,
                 const std::string& device) {
  Rendering result;
  const bool ppm = device == "ppmraw";
  const std::string pattern = OutputDir() + "/" + name + "-page%d." + (ppm ? "ppm" : "png");
  FilterJob job;
  job.filter = "gs";  // found on PATH; scripts/install-deps installs it
  job.argv = std::vector<std::string>{
      "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=" + device, "-r72", "-sOutputFile=" + pattern,
      "-"};
  job.input = postscript;
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_EQ(run.out.find("Error"), std::string::npos) << run.out;
  EXPECT_EQ(run.err.find("Error"), std::string::npos) << run.err;
  result.ok = run.status == 0;
  for (int page = 1; page <= 2; ++page) {
    char file[32];
    snprintf(file, sizeof file, "-page%d.", page);
    std::string path = OutputDir() + "/" + name + file + (ppm ? "ppm" : "png");
    std::string bytes = ReadFile(path);
    if (ppm) {
      Image image;
      EXPECT_TRUE(ParsePPM(bytes, &image)) << path;
      result.pages.push_back(image);
    } else {
      EXPECT_EQ(bytes.rfind("\x89PNG\r\n\x1a\n", 0), 0u) << path;
    }
  }
  return result;
}

// How two renderings of a page differ: in how many pixels, how many of them
// farther than `radius` from the page centre, and how many of them red in
// the second rendering.
struct Difference {
  long count = 0;
  long outside = 0;
  long red = 0;
};

Difference Compare(const Image& plain, const Image& marked, double radius) {
  Difference d;
  for (int row = 0; row < plain.height; ++row) {
    for (int x = 0; x < plain.width; ++x) {
      const unsigned char* a = plain.At(x, row);
      const unsigned char* b = marked.At(x, row);
      if (a[0] == b[0] && a[1] == b[1] && a[2] == b[2]) continue;
      ++d.count;
      if (std::hypot(x + 0.5 - kCentreX, plain.height - row - 0.5 - kCentreY) > radius) ++d.outside;
      if (b[0] > 200 && b[1] < 60 && b[2] < 60) ++d.red;
    }
  }
  return d;
}

TEST(WatermarkRendering, TextIsDrawnAcrossThePageCentre) {
  const std::string plainJob = PostScriptOf("");
  const std::string markedJob = PostScriptOf(WatermarkOptions());
  ASSERT_NE(markedJob.find("(CONFIDENTIAL) show\n"), std::string::npos);

  Rendering plain = Render(plainJob, "centre-plain", "ppmraw");
  Rendering marked = Render(markedJob, "watermark", "ppmraw");
  ASSERT_TRUE(plain.ok && marked.ok);
  ASSERT_EQ(plain.pages.size(), 2u);
  ASSERT_EQ(marked.pages.size(), 2u);

  for (size_t page = 0; page < 2; ++page) {
    SCOPED_TRACE("page " + std::to_string(page + 1));
    const Image& a = plain.pages[page];
    const Image& b = marked.pages[page];
    ASSERT_EQ(a.width, kPageWidth);
    ASSERT_EQ(a.height, kPageHeight);
    ASSERT_EQ(b.width, a.width);
    ASSERT_EQ(b.height, a.height);
    // The text box's half diagonal is about 180 points; nothing beyond
    // 205 points from the centre may change.
    Difference d = Compare(a, b, 205);
    EXPECT_GT(d.count, 2000);
    EXPECT_EQ(d.outside, 0);
    EXPECT_GT(d.red, d.count * 9 / 10);
  }

  // One rendered page kept for a person to look at.
  Render(markedJob, "watermark", "png16m");
}

// Separator pages and the booklet margin with auto-fit ask a procedure set
// the interpreter does not have; the bracketed blocks must fail quietly and
// leave the pages as they were.
TEST(FeaturesRendering, FinishingBlocksRunWithoutError) {
  const std::string options =
      Key("SeparatorPageListTicket", "2") + Key("SeparatorPageTicket", "1,2") +
      Key("BookletMarginSwitchTicket", "1") + Key("BookletMarginMMShiftTicket", "5") +
      Key("AutoFitSwitchTicket", "1");
  const std::string job = PostScriptOf(options);
  ASSERT_NE(job.find("/setcoverseparator get exec\n"), std::string::npos);
  ASSERT_NE(job.find("/setsignatureautoscale 2 copy known"), std::string::npos);
  Rendering plain = Render(PostScriptOf(""), "finishing-plain", "ppmraw");
  Rendering finished = Render(job, "finishing", "ppmraw");
  ASSERT_TRUE(plain.ok && finished.ok);
  ASSERT_EQ(finished.pages.size(), 2u);
  for (size_t page = 0; page < 2; ++page) {
    EXPECT_EQ(Compare(plain.pages[page], finished.pages[page], 0).count, 0) << page;
  }
}

}  // namespace
