// Hostile input through the built filter: ticket values, names, PPDs and
// PostScript that no print dialog sends. Every job must end normally with
// the whole PJL envelope and no sanitizer report, must not let a plain
// password out, and big jobs must run in memory independent of their size.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "filter_runner.h"
#include "sealed_blob.h"

namespace {

const std::string kEnterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
const std::string kPlainPassword = "Plain-Secret-7391";
const bool kValgrind = std::getenv("ZPJL_UNDER_VALGRIND") != nullptr;
// A job with every line at which the modules write PostScript.
const char kEveryInjectionPoint[] =
    "%!PS-Adobe-3.0\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n%%EndSetup\n"
    "userdict/setpagedevice{pop}bind put\nbp\n%%EndPageSetup\n(page) show\nep\n"
    "bp\n%%EndPageSetup\nendp\nshowpage\n";

// The watermark and the finishing PostScript switched on.
std::string PostScriptModulesOn() {
  return Key("WMARKTypeTicket", "0") + Key("WMARKNameTicket", "w") +
         Key("WMARKTextTicket", "(Draft)") + Key("WMARKFontTicket", "Courier") +
         Key("SeparatorPageListTicket", "2") + Key("SeparatorPageTicket", "1") +
         Key("BookletMarginSwitchTicket", "1") + Key("BookletMarginMMShiftTicket", "5") +
         Key("AutoFitSwitchTicket", "1");
}

// Under Valgrind everything runs tens of times slower: big inputs shrink.
size_t Big(size_t bytes) { return kValgrind ? bytes / 20 : bytes; }

// Secure print and an accounting user password, both stored as the print
// dialog stores them: every job takes the password-sealing path.
const std::string& PasswordTicket() {
  static const std::string ticket = [] {
    std::string stored = StoredPasswordText(kPlainPassword);
    return Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "alice") +
           Key("PrintTypePasswordTicketKey", stored) + Key("JBAManageTypeListTicketKey", "2") +
           Key("JBAUserSettingRadioBtnTicket", "1") + Key("JBAUserIDListCtrlTicket", "1") +
           Key("JBAInfoListTicketKey", "0") + Key("JBAUserPasswordTextEditTicket", stored);
  }();
  return ticket;
}

// The credential layer writes its failure lines to stdout on purpose, while
// the ticket is read: they lead the stream and the envelope starts after them.
std::string AfterCryptoMessages(const std::string& stream) {
  size_t at = 0;
  for (;;) {
    bool message = stream.compare(at, 9, "AES Error") == 0 || stream.compare(at, 6, "ERROR[") == 0;
    size_t end = stream.find('\n', at);
    if (!message || end == std::string::npos) return stream.substr(at);
    at = end + 1;
  }
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// What every hostile job must show.
void ExpectSoundJob(const FilterRun& run) {
  EXPECT_EQ(run.termSignal, 0);
  EXPECT_EQ(run.status, 0) << run.err.substr(0, 4000);
  for (const char* report :
       {"AddressSanitizer", "LeakSanitizer", "UndefinedBehaviorSanitizer", "runtime error:"}) {
    EXPECT_FALSE(Contains(run.err, report)) << run.err.substr(0, 4000);
  }
  std::string stream = AfterCryptoMessages(run.out);
  EXPECT_EQ(stream.compare(0, kUEL.size() + 4, kUEL + "@PJL"), 0) << Visible(stream.substr(0, 300));
  EXPECT_TRUE(stream.size() >= kTrailer.size() &&
              stream.compare(stream.size() - kTrailer.size(), kTrailer.size(), kTrailer) == 0)
      << Visible(stream.substr(stream.size() - std::min<size_t>(stream.size(), 300)));
  EXPECT_FALSE(Contains(run.out + run.err, kPlainPassword));
}

struct HostileCase {
  const char* name;
  // Fills in the job; `dir` is a scratch directory for files it needs.
  std::function<void(FilterJob& job, const ScratchDir& dir)> make;
  std::function<void(const FilterRun& run)> expect;  // beyond what every job gets
  bool sealsPassword = true;  // the job carries a sealed HOLDENCRYPTKEY
};

void ExpectEndsSoundly(const std::vector<HostileCase>& cases) {
  for (const HostileCase& c : cases) {
    SCOPED_TRACE(c.name);
    ScratchDir dir;
    ASSERT_TRUE(dir.ok());
    FilterJob job;
    job.ppd = Fixture("ppd/utf8-color.ppd");
    job.options = PasswordTicket();
    job.input = kEveryInjectionPoint;
    c.make(job, dir);
    auto start = std::chrono::steady_clock::now();
    FilterRun run = RunFilter(job);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ExpectSoundJob(run);
    // However large the numbers and names in them, no job takes long and
    // the stream stays small.
    EXPECT_LT(seconds, kValgrind ? 300.0 : 20.0);
    EXPECT_LT(run.out.size(), 16384u) << Visible(run.out.substr(0, 3000));
    if (c.sealsPassword) {
      EXPECT_TRUE(Contains(run.out, "@PJL SET HOLDENCRYPTKEY=\""));
    }
    if (c.expect) c.expect(run);
  }
}

// Checks that the stream holds each of `parts`.
std::function<void(const FilterRun&)> Holds(std::vector<std::string> parts) {
  return [parts](const FilterRun& run) {
    for (const std::string& part : parts) EXPECT_TRUE(Contains(run.out, part)) << Visible(part);
  };
}

TEST(HostileJob, TicketsEndSoundly) {
  const std::string big = Repeat("u", 100 * 1024);
  ExpectEndsSoundly({
      // UTF-8 printer: 255 units for the login user, 32 for the owner.
      {"HundredKilobyteUserTitleAndValue",
       [big](FilterJob& job, const ScratchDir&) {
         job.user = job.title = big;
         job.options += Key("JBAUserIDTextEditTicket", big);
       },
       Holds({"@LUNA=" + std::string(255, 'u') + "\"", "@JOAU=" + std::string(32, 'u') + "\""})},
      {"HundredKilobyteSpecialPageRecord",
       [big](FilterJob& job, const ScratchDir&) {
         job.options += Key("ZPIFCoverCountTicket", "1") +
                        Key("ZPIFCoverValueTicket_0", "0,1,print-front," + big);
       },
       Holds({"@PJL SET JOBATTR=\"@EFCV=PRINTFRONT\"\n"})},
      {"HundredKilobyteNumbers",
       [](FilterJob& job, const ScratchDir&) {
         std::string nines = Repeat("9", 30 * 1024);
         job.options += "number-up=" + nines + " KRTonerSaver=UserInput KRTonerReductionRate=Reduce_" +
                        nines + " KRPBindPosition=BindLeft KRPBindCoverAdjustX=" + nines + " ";
       },
       Holds({"@PJL SET REDUCTIONRATE=99\n"})},
      {"TenThousandOptions",
       [](FilterJob& job, const ScratchDir&) {
         std::string junk;
         for (int i = 0; i < 10000; ++i) junk += "o" + std::to_string(i) + "=1 ";
         job.options = junk + job.options;
       },
       Holds({"@PJL SET HOLD=STORE\n"})},
      {"HundredKilobytePassword",
       [](FilterJob& job, const ScratchDir&) {
         // Not a stored password: the accounting password is still sealed.
         job.options = Key("JBAManageTypeListTicketKey", "2") +
                       Key("JBAUserSettingRadioBtnTicket", "1") + Key("JBAUserIDListCtrlTicket", "1") +
                       Key("JBAUserPasswordTextEditTicket", StoredPasswordText(kPlainPassword)) +
                       Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "a") +
                       Key("PrintTypePasswordTicketKey", Repeat("QUJD", 25 * 1024));
       },
       nullptr, false},
      {"ExtremeWatermarkNumbers",
       [](FilterJob& job, const ScratchDir&) {
         job.options +=
             PostScriptModulesOn() + Key("WMARKAngleTicket", "2147483647") +
             Key("WMARKDensityTicket", "-2147483648") + Key("WMARKFontSizeTicket", "99999999999") +
             Key("WMARKOrientationTicket", "1") + Key("WMARKPaperWidthTicket", "2147483647") +
             Key("WMARKPaperHeightTicket", "-2147483648") + Key("WMARKWidthTicket", "1e39") +
             Key("WMARKHeightTicket", "nan") + Key("WMARKColorRTicket", "1e308") +
             Key("WMARKColorGTicket", "-inf") + Key("WMARKhOffsetTicket", "-1e39") +
             Key("WMARKvOffsetTicket", "0x1p200");
       },
       Holds({" setrgbcolor\n", " moveto\n", "(Draft) show\n"})},
      {"HundredKilobyteWatermarkAndSeparatorTexts",
       [big](FilterJob& job, const ScratchDir&) {
         job.options += PostScriptModulesOn() + Key("WMARKFontTicket", big.substr(0, 30000)) +
                        Key("WMARKTextTicket", big.substr(0, 30000)) +
                        Key("SeparatorPageTicket", big.substr(0, 30000));
       },
       // Each PostScript line is formatted into a 100-byte buffer.
       Holds({"\n/" + std::string(98, 'u'), "1 dict dup/SeparatorPages[???"})},
      {"LayoutOfThousandByThousand",
       [](FilterJob& job, const ScratchDir&) {
         job.options += PostScriptModulesOn() +
                        "com.apple.print.PrintSettings.PMLayoutRows..n.=1000 "
                        "com.apple.print.PrintSettings.PMLayoutColumns..n.=1000 ";
       },
       [](const FilterRun& run) {
         // The N-up text has room for two digits.
         size_t nup = run.out.find("@NLPP=");
         ASSERT_NE(nup, std::string::npos);
         EXPECT_LE(run.out.find('"', nup) - nup - 6, 3u) << Visible(run.out.substr(nup, 20));
         // Separator pages and auto-fit go to the page-device line of an
         // N-up job, once.
         size_t device = run.out.find("userdict/setpagedevice{pop}bind put\n");
         size_t separator = run.out.find("/setcoverseparator get exec\n");
         ASSERT_NE(separator, std::string::npos);
         EXPECT_LT(separator, device);
         EXPECT_EQ(run.out.find("/setcoverseparator", separator + 1), std::string::npos);
       }},
  });
}

TEST(HostileJob, PrintersEndSoundly) {
  auto usesPPD = [](const std::string& text) {
    return [text](FilterJob& job, const ScratchDir& dir) {
      job.ppd = dir.File("printer.ppd");
      std::ofstream(*job.ppd, std::ios::binary) << text;
    };
  };
  // Fifty megabytes, read to the end: the last line turns the job
  // information block on.
  std::string fifty = ReadFile(Fixture("ppd/utf8-nocomment.ppd"));
  const std::string off = "*CommentOn: \"False\"\n", filler = "*% " + std::string(96, 'x') + "\n";
  fifty.erase(fifty.find(off), off.size());
  fifty += Repeat(filler, Big(50 * 1024 * 1024) / filler.size()) + "*CommentOn: \"True\"\n";
  auto legacyWithoutBlock = [](const FilterRun& run) {
    EXPECT_FALSE(Contains(run.out, "STRINGCODESET"));
    EXPECT_FALSE(Contains(run.out, "PRINTJOBINFO"));
    EXPECT_TRUE(Contains(run.out, kEnterPS));
  };
  ExpectEndsSoundly({
      {"EmptyPPD", usesPPD(""), legacyWithoutBlock},
      {"FiftyMegabytePPD", usesPPD(fifty),
       Holds({"@PJL SET STRINGCODESET=UTF8\n", "@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n"})},
      {"PPDAttributesWithoutValues",
       usesPPD("*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*LanguageEncoding:\n"
               "*KRPrinterLanguageEncoding:\n*KRPSDecompMode:\n*PCFileName:\n*CommentOn:\n"
               "*ColorDevice:\n*KRZPrintTypeSettings:\n*DefaultKRColorMode:\n"
               "*OpenUI *KRColorMode: PickOne\n*CloseUI: *KRColorMode\n"
               "*OpenUI *PageSize: PickOne\n*PageSize A4: \"\"\n*CloseUI: *PageSize\n"),
       Holds({kEnterPS})},
      {"MissingPPDVariable", [](FilterJob& job, const ScratchDir&) { job.ppd = std::nullopt; },
       legacyWithoutBlock},
      {"PPDPathToADirectory", [](FilterJob& job, const ScratchDir&) { job.ppd = "/tmp"; },
       legacyWithoutBlock},
  });
}

std::string Body(const FilterRun& run) { return SplitStream(AfterCryptoMessages(run.out)).body; }

TEST(HostileJob, PostScriptEndSoundly) {
  ExpectEndsSoundly({
      {"CarriageReturnLineEnds",
       [](FilterJob& job, const ScratchDir&) {
         job.input = "%!PS\r%%EndProlog\rbp\r%%EndPageSetup\rep\rbp\rep\rshowpage\r";
       },
       [](const FilterRun& run) {
         EXPECT_TRUE(SameStream("%!PS\r%%EndProlog\rbp\r%%EndPageSetup\rep\rbp\rep\rshowpage\r\x04",
                                Body(run)));
         EXPECT_TRUE(Contains(run.err, "PAGE:1 1\nPAGE:2 1\n")) << run.err;
       }},
      {"NulBytesInFeatureLines",
       [](FilterJob& job, const ScratchDir&) {
         job.ppd = Fixture("ppd/decomp-color.ppd");
         job.input = std::string("%%BeginFeature: *KRSetTrapMode\0True\nTTRC\0"
                                 "1 GTRC 2 ITRC 3 TSCR 4 GSCR 5 ISCR 6\nep\n", 81);
       },
       [](const FilterRun& run) {
         // A NUL ends the text that the feature and screen scans see: no
         // trapping value, not all six screen names. Pass 2 leads with "ep",
         // whose line end was the held-back last byte.
         EXPECT_FALSE(Contains(run.out, "@TRAP="));
         EXPECT_FALSE(Contains(run.out, "@TTRC="));
         EXPECT_TRUE(SameStream(std::string("ep%%BeginFeature: *KRSetTrapMode\0True\nTTRC\0"
                                            "1 GTRC 2 ITRC 3 TSCR 4 GSCR 5 ISCR 6\n\n", 81),
                                Body(run)));
       }},
      {"DirectoryAsInputFile",
       [](FilterJob& job, const ScratchDir& dir) { job.file = dir.File(""); },
       [](const FilterRun& run) { EXPECT_EQ(Body(run), "\x04"); }},
  });
}

// What a streamed job wrote: its first and last bytes, its size and how many
// bytes of the filling it held.
struct StreamedRun {
  FilterRun run;
  std::string head, tail;
  size_t size = 0, filling = 0;
};

// Runs a job of `prefix`, `length` bytes of `fill`, then `suffix`, writing
// it in 1 MB pieces and never holding input or output whole.
StreamedRun RunStreamed(const FilterJob& job, const std::string& prefix, char fill,
                        size_t length, const std::string& suffix) {
  StreamedRun s;
  FilterProcess process(job);
  process.StreamOutput([&s, fill](const char* bytes, size_t count) {
    if (s.head.size() < 4096) s.head.append(bytes, std::min(count, 4096 - s.head.size()));
    s.tail.append(bytes, count);
    if (s.tail.size() > 8192) s.tail.erase(0, s.tail.size() - 4096);
    s.size += count;
    s.filling += static_cast<size_t>(std::count(bytes, bytes + count, fill));
  });
  EXPECT_TRUE(process.Write(prefix));
  const std::string piece(1 << 20, fill);
  for (size_t done = 0; done < length; done += piece.size()) {
    if (!process.Write(piece.substr(0, std::min(piece.size(), length - done)))) break;
  }
  EXPECT_TRUE(process.Write(suffix));
  s.run = process.Finish();
  FilterRun shown = s.run;
  shown.out = s.head + "..." + s.tail;
  ExpectSoundJob(shown);
  return s;
}

// Peak memory of a big job may exceed a small one's by this much at most;
// the sanitizer build's own baseline is far larger than the filter's needs.
constexpr long kMemoryMarginKb = 48 * 1024;

TEST(HostileStream, HundredMegabyteLineAndInsertionSpoolInBoundedMemory) {
  ScratchDir dir;
  ASSERT_TRUE(dir.ok());
  const std::string trap = "%!PS\n%%BeginFeature: *KRSetTrapMode True\n%%EndFeature\n";
  const struct {
    const char* ppd;
    std::string prefix;
    char fill;  // in no header line and in no base64 text
    size_t length;
    std::string suffix, head, end;
  } cases[] = {
      // The line passes whole, in chunks, and the job ends as usual.
      {"ppd/utf8-color.ppd", "%!PS\n", '#', Big(100u << 20), "\nshowpage\n", kEnterPS + "%!PS\n#",
       "#\nshowpage\n\x04" + kTrailer},
      // The insertion mode spools the job. Pass 2 leads with the text of
      // pass 1's unfinished last line ("%%EOF", whose line end was held
      // back) and leaves out the closing Ctrl-D.
      {"ppd/decomp-color.ppd", trap, '~', Big(30u << 20), "\nshowpage\n%%EOF\n",
       "@PJL SET JOBATTR=\"@TRAP=ON\"\n" + kEnterPS + "%%EOF" + trap, "~\nshowpage\n\n" + kTrailer},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ppd);
    FilterJob job;
    job.ppd = Fixture(c.ppd);
    job.options = PasswordTicket();
    job.env["TMPDIR"] = dir.File("");
    StreamedRun small = RunStreamed(job, c.prefix, c.fill, 1024, c.suffix);
    StreamedRun large = RunStreamed(job, c.prefix, c.fill, c.length, c.suffix);
    EXPECT_TRUE(Contains(large.head, c.head)) << Visible(large.head);
    EXPECT_EQ(large.filling, c.length);
    EXPECT_EQ(large.size - small.size, c.length - 1024);
    EXPECT_EQ(large.tail.substr(large.tail.size() - std::min(large.tail.size(), c.end.size())), c.end);
    EXPECT_GT(small.run.maxRssKb, 0);
    EXPECT_LT(large.run.maxRssKb - small.run.maxRssKb, kMemoryMarginKb)
        << "small job " << small.run.maxRssKb << " KB, " << c.length << "-byte line "
        << large.run.maxRssKb << " KB";
  }
}

}  // namespace
