// Hostile input through the built filter: ticket values, names, PPDs and
// PostScript that no print dialog sends. Every job must end normally with
// the whole PJL envelope and no sanitizer report, must not let a plain
// password out, and in pass-through mode must keep its memory independent
// of the job's size. Big inputs are made at test time in a scratch
// directory, and big jobs are streamed rather than held.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "filter_runner.h"
#include "sealed_blob.h"

namespace {

const std::string kEnterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
const std::string kPlainPassword = "Plain-Secret-7391";
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
size_t Big(size_t bytes) {
  return std::getenv("ZPJL_UNDER_VALGRIND") != nullptr ? bytes / 20 : bytes;
}

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

// The credential layer writes its failure lines to stdout on purpose; a
// password that cannot be opened is met while the ticket is read, so they
// lead the stream. The envelope starts after them.
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
void ExpectSoundJob(const FilterRun& run, int status = 0) {
  EXPECT_EQ(run.termSignal, 0);
  EXPECT_EQ(run.status, status) << run.err.substr(0, 4000);
  for (const char* report :
       {"AddressSanitizer", "LeakSanitizer", "UndefinedBehaviorSanitizer", "runtime error:"}) {
    EXPECT_FALSE(Contains(run.err, report)) << run.err.substr(0, 4000);
  }
  std::string stream = AfterCryptoMessages(run.out);
  EXPECT_EQ(stream.compare(0, kUEL.size() + 4, kUEL + "@PJL"), 0) << Visible(stream.substr(0, 300));
  ASSERT_GE(stream.size(), kTrailer.size());
  EXPECT_EQ(stream.compare(stream.size() - kTrailer.size(), kTrailer.size(), kTrailer), 0)
      << Visible(stream.substr(stream.size() - std::min<size_t>(stream.size(), 300)));
  EXPECT_FALSE(Contains(run.out, kPlainPassword));
  EXPECT_FALSE(Contains(run.err, kPlainPassword));
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Pseudo-random bytes without NUL, the same on every run.
std::string NoiseBytes(size_t length, uint32_t seed) {
  std::string bytes(length, '\0');
  for (char& byte : bytes) {
    seed = seed * 1103515245u + 12345u;
    byte = static_cast<char>(1 + (seed >> 16) % 255);
  }
  return bytes;
}

// The value of the first "@<attribute>=" line of the stream.
std::string AttributeValue(const std::string& stream, const std::string& attribute) {
  size_t at = stream.find("@" + attribute + "=");
  if (at == std::string::npos) return "<none>";
  at += attribute.size() + 2;
  return stream.substr(at, stream.find('"', at) - at);
}

struct HostileCase {
  const char* name;
  // Fills in the job; `dir` is a scratch directory for files it needs.
  std::function<void(FilterJob& job, const ScratchDir& dir)> make;
  // Checks beyond those every job gets.
  std::function<void(const FilterRun& run)> expect;
  bool sealsPassword = true;  // the job carries a sealed HOLDENCRYPTKEY
};
void ExpectEndsSoundly(const HostileCase& c) {
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
  // Nothing in these jobs is large enough to take long, however large the
  // numbers in it claim to be.
  EXPECT_LT(seconds, std::getenv("ZPJL_UNDER_VALGRIND") != nullptr ? 300.0 : 20.0);
  if (c.sealsPassword) {
    EXPECT_TRUE(Contains(run.out, "@PJL SET HOLDENCRYPTKEY=\""))
        << Visible(run.out.substr(0, 3000));
  }
  if (c.expect) c.expect(run);
}

// The header stays small whatever size the names and values come in.
void ExpectSmallStream(const FilterRun& run) {
  EXPECT_LT(run.out.size(), 16384u) << Visible(run.out.substr(0, 3000));
}

std::vector<HostileCase> TicketCases() {
  const std::string big = Repeat("u", 100 * 1024);
  std::vector<HostileCase> cases = {
      {"HundredKilobyteUserTitleAndValue",
       [big](FilterJob& job, const ScratchDir&) {
         job.user = big;
         job.title = big;
         job.options += Key("JBAUserIDTextEditTicket", big);
       },
       [](const FilterRun& run) {
         ExpectSmallStream(run);
         // UTF-8 printer: 255 units for the login user, 32 for the owner.
         EXPECT_EQ(AttributeValue(run.out, "LUNA"), std::string(255, 'u'));
         EXPECT_EQ(AttributeValue(run.out, "JOAU"), std::string(32, 'u'));
       }},
      {"HundredKilobytePassword",
       [](FilterJob& job, const ScratchDir&) {
         // Not a stored password: the accounting password is still sealed.
         job.options = Key("JBAManageTypeListTicketKey", "2") +
                       Key("JBAUserSettingRadioBtnTicket", "1") +
                       Key("JBAUserIDListCtrlTicket", "1") +
                       Key("JBAUserPasswordTextEditTicket", StoredPasswordText(kPlainPassword)) +
                       Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "a") +
                       Key("PrintTypePasswordTicketKey", Repeat("QUJD", 25 * 1024));
       },
       ExpectSmallStream, false},
      {"HundredKilobyteSpecialPageRecord",
       [big](FilterJob& job, const ScratchDir&) {
         job.options += Key("ZPIFCoverCountTicket", "1") +
                        Key("ZPIFCoverValueTicket_0", "0,1,print-front," + big);
       },
       [](const FilterRun& run) {
         ExpectSmallStream(run);
         EXPECT_TRUE(Contains(run.out, "@PJL SET JOBATTR=\"@EFCV=PRINTFRONT\"\n"));
       }},
      {"HundredKilobyteNumbers",
       [](FilterJob& job, const ScratchDir&) {
         std::string nines = Repeat("9", 100 * 1024);
         job.options +=
             "number-up=" + nines.substr(0, 30 * 1024) +
             " KRTonerSaver=UserInput KRTonerReductionRate=Reduce_" + nines.substr(0, 30 * 1024) +
             " KRPBindPosition=BindLeft KRPBindCoverAdjustX=" + nines.substr(0, 30 * 1024) + " ";
       },
       [](const FilterRun& run) {
         ExpectSmallStream(run);
         EXPECT_TRUE(Contains(run.out, "@PJL SET REDUCTIONRATE=99\n"));
       }},
      {"TenThousandOptions",
       [](FilterJob& job, const ScratchDir&) {
         std::string junk;
         for (int i = 0; i < 10000; ++i) junk += "o" + std::to_string(i) + "=1 ";
         job.options = junk + job.options;
       },
       [](const FilterRun& run) { EXPECT_TRUE(Contains(run.out, "@PJL SET HOLD=STORE\n")); }},
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
       [](const FilterRun& run) {
         EXPECT_TRUE(Contains(run.out, " setrgbcolor\n"));
         EXPECT_TRUE(Contains(run.out, " moveto\n"));
         EXPECT_TRUE(Contains(run.out, "(Draft) show\n"));
       }},
      {"HundredKilobyteWatermarkAndSeparatorTexts",
       [big](FilterJob& job, const ScratchDir&) {
         job.options += PostScriptModulesOn() + Key("WMARKFontTicket", big.substr(0, 30000)) +
                        Key("WMARKTextTicket", big.substr(0, 30000)) +
                        Key("SeparatorPageTicket", big.substr(0, 30000));
       },
       [](const FilterRun& run) {
         // Each PostScript line is formatted into a 100-byte buffer.
         EXPECT_TRUE(Contains(run.out, "\n/" + std::string(98, 'u')));
         EXPECT_TRUE(Contains(run.out, "1 dict dup/SeparatorPages[???"));
         ExpectSmallStream(run);
       }},
      {"LayoutOfThousandByThousand",
       [](FilterJob& job, const ScratchDir&) {
         job.options += PostScriptModulesOn() +
                        "com.apple.print.PrintSettings.PMLayoutRows..n.=1000 "
                        "com.apple.print.PrintSettings.PMLayoutColumns..n.=1000 ";
       },
       [](const FilterRun& run) {
         // The N-up text has room for two digits.
         std::string nup = AttributeValue(run.out, "NLPP");
         ASSERT_NE(nup, "<none>");
         EXPECT_LE(nup.size(), 3u) << nup;
         // A million pages a side: separator pages and auto-fit go to the
         // page-device line of an N-up job, once.
         size_t device = run.out.find("userdict/setpagedevice{pop}bind put\n");
         size_t separator = run.out.find("/setcoverseparator get exec\n");
         ASSERT_NE(separator, std::string::npos);
         EXPECT_LT(separator, device);
         EXPECT_EQ(run.out.find("/setcoverseparator", separator + 1), std::string::npos);
       }},
  };
  return cases;
}

TEST(HostileJob, TicketsEndSoundly) {
  for (const HostileCase& c : TicketCases()) ExpectEndsSoundly(c);
}

// The bytes of a literal, NULs included.
template <size_t N>
std::string Bytes(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}

std::string PPDText(const char* fixture) {
  return ReadFile(Fixture(std::string("ppd/") + fixture));
}

std::vector<HostileCase> PrinterCases() {
  auto usesPPD = [](std::function<std::string()> text) {
    return [text](FilterJob& job, const ScratchDir& dir) {
      job.ppd = dir.File("printer.ppd");
      WriteFile(*job.ppd, text());
    };
  };
  auto legacyWithoutBlock = [](const FilterRun& run) {
    EXPECT_FALSE(Contains(run.out, "STRINGCODESET"));
    EXPECT_FALSE(Contains(run.out, "PRINTJOBINFO"));
    EXPECT_TRUE(Contains(run.out, kEnterPS));
  };
  return {
      {"EmptyPPD", usesPPD([] { return std::string(); }), legacyWithoutBlock},
      {"TruncatedPPD", usesPPD([] {
         std::string text = PPDText("utf8-color.ppd");
         return text.substr(0, text.find("*KRPrinterLanguageEncoding: \"UT") + 31);
       }),
       nullptr},
      {"BinaryPPD", usesPPD([] { return NoiseBytes(64 * 1024, 4); }), legacyWithoutBlock},
      {"BinaryAfterHeaderPPD", usesPPD([] {
         return "*PPD-Adobe: \"4.3\"\n*KRPrinterLanguageEncoding: \"UTF-8\"\n" +
                NoiseBytes(16 * 1024, 5);
       }),
       nullptr},
      {"FiftyMegabytePPD", usesPPD([] {
         // Read to its end: the last line turns the job information block on.
         std::string text = PPDText("utf8-nocomment.ppd");
         const std::string off = "*CommentOn: \"False\"\n";
         text.erase(text.find(off), off.size());
         std::string line = "*% " + std::string(96, 'x') + "\n";
         return text + Repeat(line, Big(50 * 1024 * 1024) / line.size()) + "*CommentOn: \"True\"\n";
       }),
       [](const FilterRun& run) {
         EXPECT_TRUE(Contains(run.out, "@PJL SET STRINGCODESET=UTF8\n"));
         EXPECT_TRUE(Contains(run.out, "@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n"));
       }},
      {"PPDAttributesWithoutValues", usesPPD([] {
         return std::string(
             "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*LanguageEncoding:\n"
             "*KRPrinterLanguageEncoding:\n*KRPSDecompMode:\n*PCFileName:\n*CommentOn:\n"
             "*ColorDevice:\n*KRZPrintTypeSettings:\n*DefaultKRColorMode:\n"
             "*OpenUI *KRColorMode: PickOne\n*CloseUI: *KRColorMode\n"
             "*OpenUI *PageSize: PickOne\n*PageSize A4: \"\"\n*CloseUI: *PageSize\n");
       }),
       [](const FilterRun& run) { EXPECT_TRUE(Contains(run.out, kEnterPS)); }},
      {"MissingPPDVariable", [](FilterJob& job, const ScratchDir&) { job.ppd = std::nullopt; },
       legacyWithoutBlock},
      {"PPDPathToADirectory", [](FilterJob& job, const ScratchDir&) { job.ppd = "/tmp"; },
       legacyWithoutBlock},
  };
}

TEST(HostileJob, PrintersEndSoundly) {
  for (const HostileCase& c : PrinterCases()) ExpectEndsSoundly(c);
}

// The PostScript between the language switch and the trailer.
std::string Body(const FilterRun& run) {
  std::string stream = AfterCryptoMessages(run.out);
  size_t start = stream.find(kEnterPS);
  if (start == std::string::npos || stream.size() < kTrailer.size()) return "<no body>";
  start += kEnterPS.size();
  return stream.substr(start, stream.size() - kTrailer.size() - start);
}

std::vector<HostileCase> PostScriptCases() {
  const std::string insertionPPD = Fixture("ppd/decomp-color.ppd");
  return {
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
       [insertionPPD](FilterJob& job, const ScratchDir&) {
         job.ppd = insertionPPD;
         job.input = Bytes(
             "%%BeginFeature: *KRSetTrapMode\0True\nTTRC\0"
             "1 GTRC 2 ITRC 3 TSCR 4 "
             "GSCR 5 ISCR 6\nep\n");
       },
       [](const FilterRun& run) {
         // A NUL ends the text that the feature and screen scans see: no
         // trapping value, not all six screen names. Pass 2 leads with "ep",
         // whose line end was the held-back last byte.
         EXPECT_FALSE(Contains(run.out, "@TRAP="));
         EXPECT_FALSE(Contains(run.out, "@TTRC="));
         EXPECT_TRUE(SameStream(Bytes("ep%%BeginFeature: *KRSetTrapMode\0True\nTTRC\0"
                                      "1 GTRC 2 ITRC 3 TSCR 4 GSCR 5 ISCR 6\n\n"),
                                Body(run)));
       }},
      {"InputFileWithoutReadPermission",
       [](FilterJob& job, const ScratchDir& dir) {
         job.file = dir.File("locked.ps");
         WriteFile(*job.file, "%!PS\nshowpage\n");
         chmod(job.file->c_str(), 0);
       },
       [](const FilterRun& run) {
         // Permissions do not hold back the superuser.
         EXPECT_EQ(Body(run), geteuid() == 0 ? "%!PS\nshowpage\n\x04" : "");
       }},
      {"DirectoryAsInputFile",
       [](FilterJob& job, const ScratchDir& dir) { job.file = dir.File(""); },
       [](const FilterRun& run) { EXPECT_EQ(Body(run), "\x04"); }},
  };
}

TEST(HostileJob, PostScriptEndSoundly) {
  for (const HostileCase& c : PostScriptCases()) ExpectEndsSoundly(c);
}

// ---- Big jobs, streamed -----------------------------------------------------

// What a streamed job's output looked like: its first and last bytes, its
// size and how many bytes of the filling it held.
struct StreamedOutput {
  std::string head;
  std::string tail;
  size_t size = 0;
  size_t filling = 0;
};

struct StreamedRun {
  FilterRun run;
  StreamedOutput output;
};

// Runs a job of `prefix`, `length` bytes of `fill`, then `suffix`, writing
// it in 1 MB pieces and never holding input or output whole.
StreamedRun RunStreamed(FilterJob job, const std::string& prefix, char fill, size_t length,
                        const std::string& suffix) {
  StreamedRun result;
  StreamedOutput& out = result.output;
  FilterProcess process(job);
  process.StreamOutput([&out, fill](const char* bytes, size_t count) {
    if (out.head.size() < 4096) out.head.append(bytes, std::min(count, 4096 - out.head.size()));
    out.tail.append(bytes, count);
    if (out.tail.size() > 8192) out.tail.erase(0, out.tail.size() - 4096);
    out.size += count;
    out.filling += static_cast<size_t>(std::count(bytes, bytes + count, fill));
  });
  EXPECT_TRUE(process.Write(prefix));
  const std::string piece(1 << 20, fill);
  for (size_t done = 0; done < length; done += piece.size()) {
    if (!process.Write(piece.substr(0, std::min(piece.size(), length - done)))) break;
  }
  EXPECT_TRUE(process.Write(suffix));
  result.run = process.Finish();
  return result;
}

// Peak memory of a big job may exceed a small one's by this much at most;
// the sanitizer build's own baseline is far larger than the filter's needs.
constexpr long kMemoryMarginKb = 48 * 1024;

void ExpectSoundStreamedJob(const StreamedRun& streamed) {
  FilterRun run = streamed.run;
  run.out = streamed.output.head + "..." + streamed.output.tail;
  ExpectSoundJob(run);
}

TEST(HostileStream, HundredMegabyteLineInBoundedMemory) {
  FilterJob job;
  job.ppd = Fixture("ppd/utf8-color.ppd");
  job.options = PasswordTicket();
  const size_t length = Big(100u << 20);
  // '#' is in no header line and in no base64 text.
  StreamedRun small = RunStreamed(job, "%!PS\n", '#', 1024, "\nshowpage\n");
  StreamedRun large = RunStreamed(job, "%!PS\n", '#', length, "\nshowpage\n");
  ExpectSoundStreamedJob(small);
  ExpectSoundStreamedJob(large);

  // The line passes whole, in chunks, and the job ends as usual.
  EXPECT_EQ(large.output.filling, length);
  EXPECT_EQ(large.output.size - small.output.size, length - 1024);
  const std::string end = "#\nshowpage\n\x04" + kTrailer;
  EXPECT_EQ(large.output.tail.substr(large.output.tail.size() - end.size()), end);

  EXPECT_GT(small.run.maxRssKb, 0);
  EXPECT_LT(large.run.maxRssKb - small.run.maxRssKb, kMemoryMarginKb)
      << "small job " << small.run.maxRssKb << " KB, " << length << "-byte line "
      << large.run.maxRssKb << " KB";
}

TEST(HostileStream, InsertionModeSpoolsInBoundedMemory) {
  ScratchDir dir;
  ASSERT_TRUE(dir.ok());
  FilterJob job;
  job.ppd = Fixture("ppd/decomp-color.ppd");
  job.options = PasswordTicket();
  job.env["TMPDIR"] = dir.File("");
  const size_t length = Big(30u << 20);
  const std::string features = "%!PS\n%%BeginFeature: *KRSetTrapMode True\n%%EndFeature\n";
  StreamedRun small = RunStreamed(job, features, '~', 1024, "\nshowpage\n%%EOF\n");
  StreamedRun large = RunStreamed(job, features, '~', length, "\nshowpage\n%%EOF\n");
  ExpectSoundStreamedJob(small);
  ExpectSoundStreamedJob(large);

  EXPECT_TRUE(Contains(large.output.head, "@PJL SET JOBATTR=\"@TRAP=ON\"\n"));
  EXPECT_EQ(large.output.filling, length);
  // Pass 2 leads with the text of pass 1's unfinished last line ("%%EOF",
  // whose line end was held back) and leaves out the closing Ctrl-D.
  EXPECT_TRUE(Contains(large.output.head, kEnterPS + "%%EOF%!PS\n%%BeginFeature:"));
  const std::string end = "~\nshowpage\n\n" + kTrailer;
  EXPECT_EQ(large.output.tail.substr(large.output.tail.size() - end.size()), end);
  EXPECT_LT(large.run.maxRssKb - small.run.maxRssKb, kMemoryMarginKb)
      << "small job " << small.run.maxRssKb << " KB, " << length << "-byte line "
      << large.run.maxRssKb << " KB";
}

}  // namespace
