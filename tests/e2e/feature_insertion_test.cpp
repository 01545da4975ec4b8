// The PPD-feature insertion mode through the built filter: PJL derived from
// the job's feature code between the header and the language switch, then
// the spooled PostScript.
#include <unistd.h>

#include <csignal>
#include <vector>

#include "filter_runner.h"

namespace {

const std::string kEnterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";

// The header the filter writes for this PPD and ticket, without PostScript.
std::string HeaderOnly(const FilterJob& job) {
  FilterJob headerJob = job;
  headerJob.input.clear();
  headerJob.file = "/nonexistent/job.ps";  // no input: no language switch either
  FilterRun run = RunFilter(headerJob);
  EXPECT_GE(run.out.size(), kTrailer.size());
  return run.out.substr(0, run.out.size() - kTrailer.size());
}

struct InsertionCase {
  const char* name;
  const char* ppd;
  std::string input;
  std::string derived;  // PJL between the header and the language switch
  std::string body;     // what follows the language switch, before the trailer
};

void CheckWholeStream(const InsertionCase& c) {
  FilterJob job;
  job.ppd = Fixture(std::string("ppd/") + c.ppd);
  job.input = c.input;
  std::string header = HeaderOnly(job);
  EXPECT_EQ(header.find(kEnterPS), std::string::npos);
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(SameStream(header + c.derived + kEnterPS + c.body + kTrailer, run.out));
}

const std::string kColorDefaults =
    // KRSetTrapMode and KRBrightnes are options of this PPD: no default line.
    "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"
    "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"
    "@PJL SET JOBATTR=\"@RGBG=22\"\n"
    "@PJL SET ECONOMODE=OFF\n";

const std::string kResolution1200 =
    "@PJL SET RESOLUTION=1200\n@PJL SET BITSPERPIXEL=1\n@PJL SET JOBATTR=\"@DRDM=RASTER\"\n";

std::string Halftone(const char* level) {
  std::string lines;
  for (const char* name : {"TTRC", "GTRC", "ITRC", "TSCR", "GSCR", "ISCR"}) {
    lines += std::string("@PJL SET JOBATTR=\"@") + name + "=" + level + "\"\n";
  }
  return lines;
}

TEST(Insertion, WholeStreams) {
  for (const InsertionCase& c : std::vector<InsertionCase>{
        InsertionCase{"ColorResolutionOnceDefaultsOnce", "decomp-color.ppd",
                      "%!PS\n"
                      "%%BeginFeature: *KROutputMode 1200x1200\n%%EndFeature\n"
                      "%%BeginFeature: *KRSetTrapMode True\n%%EndFeature\n"
                      "%%BeginFeature: *KROutputMode 600x600\n%%EndFeature\n"
                      "%%BeginFeature: *KRBrightnes Dark1\n%%EndFeature\n"
                      "bp\nep\n%%EOF\n",
                      kColorDefaults + kResolution1200 + "@PJL SET JOBATTR=\"@TRAP=ON\"\n" +
                          "@PJL SET JOBATTR=\"@PSBR=-1\"\n",
                      // The unfinished "%%EOF" of the first pass leads the second.
                      "%%EOF%!PS\n"
                      "%%BeginFeature: *KROutputMode 1200x1200\n%%EndFeature\n"
                      "%%BeginFeature: *KRSetTrapMode True\n%%EndFeature\n"
                      "%%BeginFeature: *KROutputMode 600x600\n%%EndFeature\n"
                      "%%BeginFeature: *KRBrightnes Dark1\n%%EndFeature\n"
                      "bp\nep\n\n"},
        InsertionCase{"CrLfLosesNothing", "decomp-color.ppd",
                      "%!PS\r\n%%BeginFeature: *KROutputMode 600x600\r\nbp\r\nep\r\n%%EOF\r\n",
                      kColorDefaults +
                          "@PJL SET RESOLUTION=600\n@PJL SET BITSPERPIXEL=1\n"
                          "@PJL SET JOBATTR=\"@DRDM=RASTER\"\n",
                      "%!PS\r\n%%BeginFeature: *KROutputMode 600x600\r\nbp\r\nep\r\n%%EOF\r\n"},
        InsertionCase{"MonoHalftone", "decomp-mono.ppd",
                      "%%BeginFeature: *KRHalftone Fineness\n"
                      "%%BeginFeature: *KRHalftone Gradation\n"
                      "%%BeginFeature: *KRHalftone Other\n"
                      "%%BeginFeature: *KRSetTrapMode True\nx\n",
                      Halftone("64") + Halftone("66") + "@PJL SET JOBATTR=\"@TRAP=ON\"\n",
                      "x%%BeginFeature: *KRHalftone Fineness\n"
                      "%%BeginFeature: *KRHalftone Gradation\n"
                      "%%BeginFeature: *KRHalftone Other\n"
                      "%%BeginFeature: *KRSetTrapMode True\n\n"},
        InsertionCase{"ToneCurveDigits", "decomp-mono.ppd",
                      "TTRC 64 GTRC 5 ITRC 100 TSCR 64 GSCR 64 ISCR 64\nz\n",
                      "@PJL SET JOBATTR=\"@TTRC=64\"\n@PJL SET JOBATTR=\"@GTRC=5\"\n"
                      "@PJL SET JOBATTR=\"@ITRC=10\"\n@PJL SET JOBATTR=\"@RC 1=0\"\n"
                      "@PJL SET JOBATTR=\"@TSCR=64\"\n@PJL SET JOBATTR=\"@GSCR=64\"\n"
                      "@PJL SET JOBATTR=\"@ISCR=64\"\n",
                      "zTTRC 64 GTRC 5 ITRC 100 TSCR 64 GSCR 64 ISCR 64\n\n"},
        InsertionCase{"EmptyInput", "decomp-color.ppd", "", "", ""}}) {
    SCOPED_TRACE(c.name);
    CheckWholeStream(c);
  }
}

TEST(Insertion, JobEndingInsideAFeatureLine) {
  FilterJob job;
  job.ppd = Fixture("ppd/decomp-color.ppd");
  job.input = "%!PS\n%%BeginFeature: *KROutputMode 1200x12";
  std::string header = HeaderOnly(job);
  FilterRun run = RunFilter(job);
  EXPECT_TRUE(SameStream(header + kEnterPS + "%%BeginFeature: *KROutputMode 1200x1%!PS\n" + kTrailer,
                         run.out));
}

// Pass 1 holds the last byte of every read back: reads of a single byte
// must give the same stream as one read of the whole job.
TEST(Insertion, ReadsOfOneByteGiveTheSameStream) {
  FilterJob job;
  job.ppd = Fixture("ppd/decomp-color.ppd");
  job.input = "%!PS\n%%BeginFeature: *KRSetTrapMode True\nbp\r\nep\n%%EOF";
  FilterRun whole = RunFilter(job);
  job.input.clear();
  FilterProcess process(job);
  for (char byte : std::string("%!PS\n%%BeginFeature: *KRSetTrapMode True\nbp\r\nep\n%%EOF")) {
    ASSERT_TRUE(process.Write(std::string(1, byte)));
    usleep(2000);
  }
  EXPECT_TRUE(SameStream(whole.out, process.Finish().out));
}

TEST(Insertion, SpoolFileRemovedAfterTheJobAndKeptOnCancel) {
  char pattern[] = "/tmp/pstozpjl-spool-XXXXXX";
  std::string tmp = mkdtemp(pattern);
  FilterJob job;
  job.ppd = Fixture("ppd/decomp-color.ppd");
  job.env["TMPDIR"] = tmp;
  job.input = "%!PS\nbp\nep\n%%EOF\n";
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(FilesIn(tmp).empty());

  // A cancel ends the job in the first pass: no language switch, no PostScript.
  FilterProcess process(job);
  // The last byte read is held back until the next arrives, hence the "b".
  ASSERT_TRUE(process.Write("%!PS\nbp\nep\nb"));
  ASSERT_TRUE(process.WaitForError("PAGE:1 1\n"));
  process.Signal(SIGTERM);
  usleep(200000);
  process.Write("p\nep\nbp\nep\n");
  FilterRun cancelled = process.Finish();
  EXPECT_EQ(cancelled.status, 0);
  EXPECT_EQ(cancelled.out.find(kEnterPS), std::string::npos);
  EXPECT_EQ(cancelled.out.find("bp\n"), std::string::npos);
  EXPECT_EQ(cancelled.out.substr(cancelled.out.size() - kTrailer.size()), kTrailer);
  for (const std::string& name : FilesIn(tmp)) unlink((tmp + "/" + name).c_str());
  rmdir(tmp.c_str());
}

}  // namespace
