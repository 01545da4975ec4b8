// What a ticket changes in a job's print stream, through the built filter:
// each row's stream is compared line by line with the stream of the same
// job on the same printer without the row's ticket, and the lines it adds
// (in order) and removes ("-" and the line) must be exactly the row's. The
// inspector reads every row's stream back: well-formed, every line known
// in the form the filter writes it, every sealed field open.
#include <string>
#include <vector>

#include "filter_runner.h"
#include "inspect/stream_inspection.h"
#include "sealed_blob.h"

namespace {

// A job with every line at which the pass-through lets the modules write.
const char kJob[] =
    "%!PS-Adobe-3.0\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n%%EndSetup\n"
    "userdict/setpagedevice{pop}bind put\nbp\n%%EndPageSetup\n(page) show\nep\n"
    "bp\n%%EndPageSetup\nendp\nshowpage\n";

// "Name=value ..." as a ticket: names with "Ticket" in them are print-dialog
// keys of their domain, other names system options.
std::string Ticket(const std::string& settings) {
  const std::string etz = " TrimmerSelectTicket TrimmerWidthMMSizeTicket TrimmerHeightMMSizeTicket "
                          "TrimmerAdjustMMSizeTicket whetherMediaSizeA5Ticket ";
  std::string ticket;
  for (size_t at = 0, end; at < settings.size(); at = end + 1) {
    end = std::min(settings.find(' ', at), settings.size());
    const std::string token = settings.substr(at, end - at);
    const std::string name = token.substr(0, token.find('='));
    if (name.find("Ticket") == std::string::npos) {
      ticket += token + " ";
    } else if (etz.find(" " + name + " ") != std::string::npos) {
      ticket += "com.korvanel.qd.etz.printsettings." + token + " ";
    } else {
      ticket += "com.korvanel.qd.jtz.printsettings." + token + " ";
    }
  }
  return ticket;
}

std::vector<std::string> Lines(const std::string& stream) {
  std::vector<std::string> lines;
  for (size_t at = 0; at < stream.size();) {
    size_t end = stream.find('\n', at);
    end = end == std::string::npos ? stream.size() : end + 1;
    lines.push_back(stream.substr(at, end - at));
    at = end;
  }
  return lines;
}

// The lines of `stream` that `plain` lacks, in order, then "-" and each
// line of `plain` that `stream` lacks (a longest common subsequence apart).
std::string Difference(const std::string& plain, const std::string& stream) {
  const std::vector<std::string> a = Lines(plain), b = Lines(stream);
  std::vector<std::vector<int>> common(a.size() + 1, std::vector<int>(b.size() + 1, 0));
  for (size_t i = a.size(); i-- > 0;) {
    for (size_t j = b.size(); j-- > 0;) {
      common[i][j] = a[i] == b[j] ? common[i + 1][j + 1] + 1
                                  : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  std::string added, removed;
  size_t i = 0, j = 0;
  while (i < a.size() || j < b.size()) {
    if (i < a.size() && j < b.size() && a[i] == b[j]) {
      ++i, ++j;
    } else if (j < b.size() && (i == a.size() || common[i][j + 1] >= common[i + 1][j])) {
      added += b[j++];
    } else {
      removed += "-" + a[i++];
    }
  }
  return added + removed;
}

struct Row {
  const char* name;
  const char* ppd;
  std::string settings;
  std::string lines;  // added, then removed with "-"; sealed fields opened
};

std::string Run(const char* ppd, const std::string& options) {
  FilterJob job;
  job.ppd = Fixture(std::string("ppd/") + ppd);
  job.options = options;
  job.input = kJob;
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0) << run.err;
  return run.out;
}

void ExpectReadBack(const std::string& stream) {
  const StreamReport report = InspectStream(stream, {{ReadFile(TestPrivateKeyPath2048()), true}});
  EXPECT_FALSE(report.Malformed());
  for (const Finding& finding : report.findings) ADD_FAILURE() << finding.text;
  for (const HeaderLine& line : report.header) {
    EXPECT_NE(line.meaning.group, LineGroup::kUnknown) << line.bytes;
    EXPECT_NE(line.meaning.words, nullptr) << line.bytes;
    for (const std::string& problem : line.problems) ADD_FAILURE() << line.bytes << problem;
    if (line.sealed) {
      EXPECT_TRUE(line.sealed->opened) << line.bytes;
    }
  }
}

void ExpectRows(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string stream = Run(row.ppd, Ticket(row.settings));
    EXPECT_TRUE(SameStream(row.lines, WithOpenedFields(Difference(Run(row.ppd, ""), stream))));
    ExpectReadBack(stream);
  }
}

const std::string R(const std::string& item) { return AttrCRLF(item); }

TEST(JobLines, PrintTypeAndAccounting) {
  const std::string hold = StoredPasswordText("1234");
  const std::string owner = StoredPasswordText("pw-owner");
  const std::string storage = StoredPasswordText("pw-storage");
  ASSERT_FALSE(hold.empty() || owner.empty() || storage.empty());
  const std::string kana = "\xE3\x82\xA2", sjis = "\x83\x41";  // KATAKANA LETTER A
  const std::string user = "PrintTypeUserNameTicketKey=u1 ";
  const std::string typed = "DocumentNameTypeTicketKey=2 DocumentNameTicketKey=Quarterly ";
  const std::string secure = "PrintTypeTicketKey=2 " + user + "PrintTypePasswordTicketKey=" +
                             hold + " DocumentNameTypeTicketKey=1";
  const std::string secureLines =
      "@PJL SET HOLD=STORE\n@PJL SET HOLDTYPE=PRIVATE\n@PJL SET USERNAME=\"u1\"\r\n"
      "@PJL SET HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n@PJL SET JOBNAME=\"report\"\r\n";
  const std::string mailbox = "PrintTypeTicketKey=5 PrintTypeMBNTicketKey=12 ";
  const std::string mailboxLines = "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=12\r\n";
  const std::string delayed =
      "PrintTypeTicketKey=4 DelayPrintTicketKey=1230 DocumentNameTypeTicketKey=1";
  const std::string sample = "PrintTypeTicketKey=3 " + user + typed;
  const std::string sampleLines =
      "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n";
  const std::string kanaNames = "PrintTypeTicketKey=3 PrintTypeUserNameTicketKey=" + kana +
                                " DocumentNameTypeTicketKey=2 DocumentNameTicketKey=" + kana;
  const std::string userSet = "JBAManageTypeListTicketKey=2 JBAUserSettingRadioBtnTicket=1 ";
  const std::string adminSet =
      "JBAManageTypeListTicketKey=1 JBAAdminUserSettingRadioBtnTicket=1 ";
  const std::string kanaIDs = userSet + "JBAUserIDListCtrlTicket=2 JBAUserIDTextEditTicket=" +
                              kana + " JBADomainNameTextEditTicket=" + kana;
  const char* utf8 = "modules-utf8.ppd";
  const char* default04 = "modules-utf8-default04.ppd";
  const char* legacy04 = "modules-legacy-default04.ppd";
  const std::string joau = "-" + R("JOAU=alice");
  ExpectRows({
      {"secure print", utf8, secure, secureLines},
      {"secure print, partial table", default04, secure, secureLines},
      {"secure print without password", utf8, "PrintTypeTicketKey=2 " + user,
       "@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"u1\"\r\n"},
      {"secure print without user name", utf8,
       "PrintTypeTicketKey=2 PrintTypePasswordTicketKey=" + hold, ""},
      {"secure print, user name of 97 bytes", utf8,
       "PrintTypeTicketKey=2 PrintTypeUserNameTicketKey=" + std::string(97, 'n'),
       "@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"" + std::string(96, 'n') + "\"\r\n"},
      {"mailbox", utf8, mailbox, mailboxLines},
      {"mailbox with password, no user name line", utf8,
       mailbox + user + "PrintTypeMBNPasswordTicketKey=" + StoredPasswordText("0042"),
       "@PJL SET HOLD=BOXSTORE\n@PJL SET HOLDTYPE=PRIVATE\n@PJL SET BOXNUMBER=12\r\n"
       "@PJL SET BOXENCRYPTKEY=\"<sealed:0042>\"\r\n"},
      {"mailbox number cut to four bytes", utf8, "PrintTypeTicketKey=5 PrintTypeMBNTicketKey=123456",
       "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=1234\r\n"},
      {"delayed print", utf8, delayed,
       "@PJL SET JOBNAME=\"report\"\r\n@PJL SET JOBATTR=\"@PRTM=1230\"\r\n"},
      {"delayed print without time", utf8, "PrintTypeTicketKey=4", ""},
      {"sample print, typed job name", utf8, sample, sampleLines},
      {"typed name chosen but none typed", utf8, "PrintTypeTicketKey=3 DocumentNameTypeTicketKey=2",
       ""},
      {"normal printing sends nothing", utf8, "PrintTypeTicketKey=1 " + user + typed, ""},
      {"no print type: user and typed name", utf8, user + typed,
       "@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n"},
      {"partial table: no mailbox", default04, mailbox, ""},
      {"partial table: delayed print", default04, delayed, "@PJL SET JOBNAME=\"report\"\r\n"},
      {"partial table: sample print", default04, sample, sampleLines},
      {"legacy printer listing Default04: the full table", legacy04, mailbox, mailboxLines},
      {"names on a UTF-8 printer", utf8, kanaNames,
       "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"" + kana + "\"\r\n@PJL SET JOBNAME=\"" + kana +
           "\"\r\n"},
      {"names on a legacy printer", legacy04, kanaNames,
       "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"" + sjis + "\"\r\n@PJL SET JOBNAME=\"" + sjis +
           "\"\r\n"},
      // Accounting: without the user ID key the login user goes out twice.
      {"user set, login user with password", utf8,
       userSet + "JBAUserIDListCtrlTicket=1 JBAInfoListTicketKey=0 "
                 "JBAUserPasswordTextEditTicket=" + owner,
       R("JOAU=alice") + R("JOEP=<sealed:pw-owner>") + R("DAID=")},
      {"user set, login user, billing list", utf8,
       userSet + "JBAUserIDListCtrlTicket=1 JBAInfoListTicketKey=2 JBAInfoSetListTicketKey=0",
       Attr("JOAU=UnknownUser") + R("JOEP=") + R("DAID=")},
      {"user set, login user hidden by info set 8", utf8,
       userSet + "JBAUserIDListCtrlTicket=1 JBAInfoListTicketKey=1 JBAInfoSetListTicketKey=8",
       Attr("JOAU=UnknownUser") + R("JOEP=") + R("DAID=")},
      {"administrator set, every field", utf8,
       adminSet + "JBAAdminUserIDListCtrlTicket=2 JBAAdminUserIDTextEditTicket=chief "
                  "JBAAdminUserPasswordTextEditTicket=" + owner +
           " JBAAdminDomainNameTextEditTicket=corp JBAAdminAccountIDTextEditTicket=A-1 "
           "JBAAdminStorageIDTextEditTicket=box9 JBAAdminStoragePasswordTextEditTicket=" + storage,
       "@PJL SET JOBATTR=\"@JOAU=chief\"\r\n" + R("JOEP=<sealed:pw-owner>") + R("JOAD=corp") +
           R("DAID=A-1") + R("ACID=box9") + R("ACNA=report") + R("ACEP=<sealed:pw-storage>")},
      {"administrator set, storage without password", utf8,
       adminSet + "JBAAdminUserIDListCtrlTicket=2 JBAAdminUserIDTextEditTicket=u7 "
                  "JBAAdminStorageIDTextEditTicket=sto",
       R("JOAU=u7") + R("JOEP=") + R("DAID=") + R("ACID=sto") + R("ACNA=report") + R("ACEP=")},
      {"user entry time, user and storage with passwords", utf8,
       "JBAManageTypeListTicketKey=2 JBAUserInputRadioBtnTicket=1 JBAInputAuthRadioBtnTicketKey=1 "
       "JBAInfoSetListTicketKey=0 JBAInputUserIDTextEditTicket=typed "
       "JBAInputUserPasswordTextEditTicket=" + owner +
           " JBAInputAccountIDTextEditTicket=acc JBAInputStrgRadioBtnTicketKey=1 "
           "JBAInfoListTicketKey=1 JBAInputStorageIDTextEditTicket=s7 "
           "JBAInputStoragePasswordTextEditTicket=" + storage,
       R("JOAU=typed") + R("JOEP=<sealed:pw-owner>") + R("DAID=acc") + R("DAID=") + R("ACID=s7") +
           Attr("JOAU=UnknownUser") + Attr("JOEP=") +
           R("ACEP=<sealed:pw-storage>")},
      {"entry time, nothing entered", utf8,
       "JBAManageTypeListTicketKey=2 JBAUserInputRadioBtnTicket=1 JBAInputAuthRadioBtnTicketKey=1 "
       "JBAInfoSetListTicketKey=0",
       R("JOAU=UnknownUser") + R("JOEP=") + R("DAID=")},
      {"address from the ticket", utf8, "JBAIPAddressStringTicket=192.0.2.7",
       Attr("HOAD=192.0.2.7")},
      {"IDs on a UTF-8 printer", utf8, kanaIDs,
       R("JOAU=" + kana) + R("JOEP=") + R("JOAD=" + sjis) + R("DAID=") + joau},
      {"IDs on a legacy printer", legacy04, kanaIDs,
       R("JOAU=" + sjis) + R("JOEP=") + R("JOAD=" + sjis) + R("DAID=") + joau},
  });
}

// The page save and the text of the watermark row, before the page end
// ("ep" saves in pgsave, "endp" in pm).
std::string WatermarkPage(const std::string& save) {
  return "krfbp\n" + save + " restore /" + save +
         " save store gsave\n1.00 0.00 0.00 setrgbcolor\n/Courier 48 selectfont\n"
         "223.40 336.34 moveto\n30 rotate\n(Draft) show\ngrestore\n";
}

TEST(JobLines, DeviceSettingsAndFinishing) {
  const char* color = "jobinfo-utf8-color.ppd";
  const char* nocomment = "utf8-nocomment.ppd";
  const std::string coil =
      "EjectOptionsListTicket=1 KRNumPunchHoles=CoilPunch featuresMediaTypeTabTicket=false "
      "whetherMediaTypeTabTicket=0 CoilPunchFaceTicket=true media=Letter "
      "whetherMediaSizeA5Ticket=0 ";
  const std::string rate = "@PJL SET REDUCTIONRATE=";
  ExpectRows({
      // A user rate follows a seven-character prefix, only seven characters
      // of it read, capped at 99.
      {"toner rate 0", nocomment, "KRTonerSaver=UserInput KRTonerReductionRate=Reduce_0",
       "@PJL SET ECONOMODE=OFF\n" + rate + "0\n"},
      {"toner rate negative", nocomment, "KRTonerSaver=UserInput KRTonerReductionRate=Reduce_-5",
       "@PJL SET ECONOMODE=OFF\n" + rate + "0\n"},
      {"toner rate after any prefix", nocomment,
       "KRTonerSaver=UserInput KRTonerReductionRate=12345678", "@PJL SET ECONOMODE=ON\n" + rate + "8\n"},
      {"toner rate of seven digits", nocomment,
       "KRTonerSaver=UserInput KRTonerReductionRate=Reduce_00000015",
       "@PJL SET ECONOMODE=ON\n" + rate + "1\n"},
      {"toner rate capped", nocomment,
       "KRTonerSaver=UserInput KRTonerReductionRate=Reduce_123456789012345678901234567890",
       "@PJL SET ECONOMODE=ON\n" + rate + "99\n"},
      {"toner mode 3", nocomment, "KRTonerSaver=Mode3 KRTonerReductionRate=Reduce_50",
       "@PJL SET ECONOMODE=MODE3\n" + rate + "0\n"},
      {"toner saver true", nocomment, "KRTonerSaver=true", "@PJL SET ECONOMODE=ON\n" + rate + "0\n"},
      {"toner mode 4 is not a header setting", nocomment, "KRTonerSaver=Mode4", rate + "0\n"},
      // Only the first digit; "Strongly" wins over "Weakly".
      {"line weight", nocomment, "KRLineWeightAdjustment=Level3Strongly", Attr("LWAD=-3")},
      {"line weight, both words", nocomment, "KRLineWeightAdjustment=StronglyWeakly4",
       Attr("LWAD=-4")},
      {"line weight without digit", nocomment, "KRLineWeightAdjustment=Strongly", ""},
      {"line weight of a long word", nocomment,
       "KRLineWeightAdjustment=Strongly" + std::string(300, 'S'), ""},
      {"black on a colour printer", color, "KRColorMode=Black",
       "@PJL SET RENDERMODE=GRAYSCALE\n@PJL COMMENT PRINTJOBINFO COLORMODE=GRAYSCALE\n"
       "-@PJL SET RENDERMODE=COLOR\n-@PJL COMMENT PRINTJOBINFO COLORMODE=COLOR\n"},
      {"colour on a mono printer", "jobinfo-legacy-mono.ppd", "KRColorMode=Color",
       "@PJL SET RENDERMODE=COLOR\n@PJL COMMENT PRINTJOBINFO COLORMODE=COLOR\n"
       "-@PJL SET RENDERMODE=GRAYSCALE\n-@PJL COMMENT PRINTJOBINFO COLORMODE=GRAYSCALE\n"},
      // The job information block: the page order of N-up by layout
      // direction, and a binding edge that alone keeps a job one-sided (as
      // the job without sides is).
      {"3-up down then right", color,
       "number-up=3 com.apple.print.PrintSettings.PMLayoutDirection..n.=5",
       Attr("NLPP=N3") + "@PJL COMMENT PRINTJOBINFO NUP=3\n"
                         "@PJL COMMENT PRINTJOBINFO NUPEX=DOWNTHENRIGHT\n-" + Attr("NLPP=1") +
           "-@PJL COMMENT PRINTJOBINFO NUP=1\n-@PJL COMMENT PRINTJOBINFO ORIENTATION=PORTRAIT\n"},
      {"3-up down then left", color,
       "number-up=3 com.apple.print.PrintSettings.PMLayoutDirection..n.=6",
       Attr("NLPP=N3") + "@PJL COMMENT PRINTJOBINFO NUP=3\n"
                         "@PJL COMMENT PRINTJOBINFO NUPEX=DOWNTHENLEFT\n-" + Attr("NLPP=1") +
           "-@PJL COMMENT PRINTJOBINFO NUP=1\n-@PJL COMMENT PRINTJOBINFO ORIENTATION=PORTRAIT\n"},
      {"6-up lies like 2-up", color, "number-up=6",
       Attr("NLPP=N6") + Attr("DIND=LANDSCAPE") +
           "@PJL COMMENT PRINTJOBINFO NUP=6\n@PJL COMMENT PRINTJOBINFO ORIENTATION=LANDSCAPE\n"
           "@PJL COMMENT PRINTJOBINFO NUPEX=RIGHTTHENDOWN\n-" + Attr("NLPP=1") + "-" +
           Attr("DIND=PORTRAIT") +
           "-@PJL COMMENT PRINTJOBINFO NUP=1\n-@PJL COMMENT PRINTJOBINFO ORIENTATION=PORTRAIT\n"},
      {"binding edge 1 of unknown sides", color, "sides=other DuplexBindingEdge..n.=1", ""},
      // Finishing rows, several at once in row order.
      {"tab margin off", nocomment, "TabMarginSwitchTicket=0", Attr("TABS=OFF")},
      {"tab margin shift without switch", nocomment, "TabMarginMMShiftTicket=12", ""},
      {"trimmer, fore edge", nocomment,
       "TrimmerSelectTicket=2 TrimmerMMCuttingSizeTicket=25 TrimmerWidthMMSizeTicket=7 "
       "TrimmerHeightMMSizeTicket=8 TrimmerAdjustMMSizeTicket=9",
       Attr("TRMR=25") + Attr("TRFW=0") + Attr("TROP=0")},
      {"trimmer, three edges", nocomment,
       "TrimmerSelectTicket=3 TrimmerMMCuttingSizeTicket=25 TrimmerWidthMMSizeTicket=210 "
       "TrimmerHeightMMSizeTicket=297 TrimmerAdjustMMSizeTicket=2",
       Attr("TRMR=210") + Attr("TRFW=297") + Attr("TROP=2")},
      {"trimmer on with the fore edge", nocomment,
       "TrimmerSwitchTicket=1 TrimmerSelectTicket=2 TrimmerMMCuttingSizeTicket=30",
       Attr("TRMR=30") + Attr("TRMR=30") + Attr("TRFW=0") + Attr("TROP=0")},
      {"numbering", nocomment, "NumInSequenceSwitchTicket=1 NumInSequenceLArrowTicket=5",
       Attr("MDOC=5")},
      {"offset by copies", nocomment,
       "OffsetStackingListTicket=5 OffsetStackingPagesLArrowTicket=10 "
       "OffsetStackingUnitsLArrowTicket=3",
       "@PJL SET JOBOFFSET=COPIES\n" + Attr("OCSN=3")},
      {"offset list 1", nocomment, "OffsetStackingListTicket=1 OffsetStackingPagesLArrowTicket=10",
       ""},
      {"rows in order", nocomment,
       "EjectOptionsListTicket=3 OffsetStackingListTicket=4 OffsetStackingPagesLArrowTicket=99999 "
       "TabMarginSwitchTicket=1 TabMarginMMShiftTicket=4 TrimmerSwitchTicket=0",
       Attr("TABS=4") + Attr("TRMR=0") + "@PJL SET JOBOFFSET=PAGES\n" + Attr("OCSN=99999") +
           Attr("FACE=UP")},
      // Which face the coil punch and the media choose.
      {"coil punch face", nocomment, coil, Attr("FACE=OFF")},
      {"face without coil punch", nocomment, coil + "KRNumPunchHoles=2Holes", Attr("FACE=OFF")},
      {"coil punch without face", nocomment, coil + "CoilPunchFaceTicket=false", Attr("FACE=OFF")},
      {"face down reversed", nocomment, "EjectOptionsListTicket=4", Attr("FACE=DOWN_REVERSE")},
      {"face up reversed", nocomment, "EjectOptionsListTicket=5", Attr("FACE=UP_REVERSE")},
      {"coil punch on A5", nocomment, coil + "media=A5", Attr("FACE=UP")},
      {"coil punch on A5 by the ticket", nocomment, coil + "whetherMediaSizeA5Ticket=1",
       Attr("FACE=UP")},
      {"coil punch on A5 rotated", nocomment, coil + "media=A5Rotated whetherMediaSizeA5Ticket=1",
       Attr("FACE=UP")},
      {"coil punch on tab stock", nocomment, coil + "featuresMediaTypeTabTicket=true",
       Attr("FACE=UP")},
      {"coil punch on tab stock by the ticket", nocomment, coil + "whetherMediaTypeTabTicket=1",
       Attr("FACE=UP")},
      {"coil punch, tab stock unknown", nocomment, coil + "featuresMediaTypeTabTicket=", ""},
      {"eject option out of range", nocomment, "EjectOptionsListTicket=6", ""},
      // Only a named text watermark is drawn.
      {"text watermark", nocomment,
       "WMARKNameTicket=w WMARKTypeTicket=0 WMARKTextTicket=(Draft) WMARKFontTicket=Courier "
       "WMARKFontSizeTicket=48 WMARKAngleTicket=30 WMARKDensityTicket=50 WMARKOnlyFirstTicket=0 "
       "WMARKColorRTicket=1.0 WMARKOrientationTicket=1 WMARKPaperWidthTicket=612 "
       "WMARKPaperHeightTicket=792 WMARKWidthTicket=200 WMARKHeightTicket=20",
       "userdict/krfInfo 2 dict dup begin\n/krfpgsave 0 def\n"
       "/krfbp{/krfpgsave save restore} bind def\n" +
           WatermarkPage("pgsave") + WatermarkPage("pm")},
      {"watermark without a name", nocomment, "WMARKTypeTicket=0 WMARKTextTicket=(Draft)", ""},
      {"watermark that is no text", nocomment,
       "WMARKNameTicket=w WMARKTypeTicket=1 WMARKTextTicket=(Draft)", ""},
      // Booklet direction by layout and orientation; binding and division.
      {"booklet, 2-up turns the sheet", nocomment, "number-up=2",
       Attr("NLPP=N2") + Attr("DIND=LANDSCAPE") + "-" + Attr("NLPP=1") + "-" +
           Attr("DIND=PORTRAIT")},
      // Without number-up, the layout's rows times columns.
      {"2-up from the layout", nocomment,
       "com.apple.print.PrintSettings.PMLayoutRows..n.=1 "
       "com.apple.print.PrintSettings.PMLayoutColumns..n.=2",
       Attr("NLPP=N2") + Attr("DIND=LANDSCAPE") + "-" + Attr("NLPP=1") + "-" +
           Attr("DIND=PORTRAIT")},
      {"12-up from the layout", nocomment,
       "com.apple.print.PrintSettings.PMLayoutRows..n.=3 "
       "com.apple.print.PrintSettings.PMLayoutColumns..n.=4",
       Attr("NLPP=N12") + "-" + Attr("NLPP=1")},
      {"booklet, 6-up turns the sheet too", nocomment, "number-up=6",
       Attr("NLPP=N6") + Attr("DIND=LANDSCAPE") + "-" + Attr("NLPP=1") + "-" +
           Attr("DIND=PORTRAIT")},
      {"booklet, 6-up reverse landscape", nocomment, "number-up=6 orientation-requested=5",
       Attr("NLPP=N6") + "-" + Attr("NLPP=1")},
      {"booklet, 1-up landscape", nocomment, "number-up=1 orientation-requested=4",
       Attr("NLPP=N1") + Attr("DIND=LANDSCAPE") + "-" + Attr("NLPP=1") + "-" +
           Attr("DIND=PORTRAIT")},
      {"booklet binding none", nocomment, "KRSignature=None KRSigVol=10Sheets",
       Attr("DIBB=OFF") + Attr("DIBK=OFF")},
      {"booklet right", nocomment, "KRSignature=RightSig KRSigVol=10Sheets",
       Attr("DIBB=RIGHT") + Attr("DIBK=MANUALDIVIDE")},
      {"booklet left and right", nocomment, "KRSignature=LeftRight",
       Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE")},
      {"booklet centre fold", nocomment, "KRSignature=CenterFold KRSigVol=3Sheets",
       Attr("DIBK=MANUALDIVIDE")},
      {"booklet only on UTF-8 printers", "legacy-mono.ppd", "number-up=2 KRSignature=BookLeft",
       Attr("NLPP=N2") +
           "@PJL COMMENT PRINTJOBINFO DUPLEXTYPE=TUMBLE\n@PJL COMMENT PRINTJOBINFO NUP=2\n"
           "@PJL COMMENT PRINTJOBINFO BOOKLETTYPE=TYPE[NOBOOKLET]\n-" + Attr("NLPP=1") +
           "-@PJL COMMENT PRINTJOBINFO DUPLEXTYPE=SIMPLEX\n-@PJL COMMENT PRINTJOBINFO NUP=1\n"},
  });
}

TEST(JobLines, SpecialPagesAndPerfectBinding) {
  const char* ppd = "utf8-nocomment.ppd";
  const char* binding = "perfect_binding.ppd";
  ExpectRows({
      {"one front cover", ppd,
       "ZPIFCoverCountTicket=1 ZPIFCommandTicket_0=0,0,0,5 ZPIFCoverValueTicket_0=0,0,print-front",
       Attrs({"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"})},
      {"two covers", ppd,
       "ZPIFCoverCountTicket=2 ZPIFCommandTicket_0=0,0,0,5 ZPIFCommandTicket_1=0,1,0,12 "
       "ZPIFCoverValueTicket_0=0,0,print-both "
       "ZPIFCoverValueTicket_1=1,1,print-front,Plain,custom_2,2159,2794",
       Attrs({"EFCV=PRINTBOTH", "EMCT=TRAYT1", "EBCV=PRINTFRONT", "EMCP=FORMALSIZE", "EMCW=2159",
              "EMCH=2794", "EMCQ=Plain", "EMCC=CUSTOM2"})},
      {"insertion with media", ppd,
       "ZPIFInsertionCountTicket=1 ZPIFCommandTicket_0=1,0,0,0,33 "
       "ZPIFInsertionValueTicket_0=1,4,2,orange,1000,1500,Recycled",
       Attrs({"EIST=4", "EMCP=CUSTOM", "EMCW=1000", "EMCH=1500", "EMCQ=Recycled", "EMCC=ORANGE",
              "EISC=2"})},
      {"exception with every line", ppd,
       "ZPIFExceptionCountTicket=1 ZPIFCommandTicket_0=2,0,7 "
       "ZPIFExceptionValueTicket_0=0,1,0,2,5,two-sided-short-edge,Plain,no-color,2970,4200",
       Attrs({"EOVS=2", "EMCP=FORMALSIZE", "EMCW=2970", "EMCH=4200", "EMCQ=Plain", "EMCC=CLEAR",
              "EMDP=TUMBLE", "EOVE=5"})},
      {"negative count", ppd,
       "ZPIFCoverCountTicket=-1 ZPIFExceptionCountTicket=1 ZPIFCommandTicket_0=2,0,33 "
       "ZPIFCoverValueTicket_0=0,0,print-front "
       "ZPIFExceptionValueTicket_0=0,0,0,1,1,one-sided,Plain,white,1,2",
       Attrs({"EOVS=1", "EMCP=CUSTOM", "EMCW=1", "EMCH=2", "EMCQ=Plain", "EMCC=WHITE",
              "EMDP=SIMPLEX", "EOVE=1"})},
      {"counts overflowing the sum", ppd,
       "ZPIFCoverCountTicket=2147483647 ZPIFInsertionCountTicket=1 ZPIFCommandTicket_0=0,0,0,5 "
       "ZPIFCoverValueTicket_0=0,0,print-front",
       ""},
      {"huge count", ppd,
       "ZPIFCoverCountTicket=2147483647 ZPIFCommandTicket_0=0,0,0,33 "
       "ZPIFCoverValueTicket_0=0,0,print-front ZPIFCoverValueTicket_2147483646=1,0,print-back",
       Attrs({"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=PRINTBACK", "EMCT=TRAYT1"})},
      {"unmapped sides", ppd,
       "ZPIFExceptionCountTicket=1 ZPIFCommandTicket_0=2,0,5 "
       "ZPIFExceptionValueTicket_0=a,b,c,1,2,Two-Sided,Plain,Pink,10,20",
       Attrs({"EOVS=1", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EOVE=2"})},
      {"short exception record", ppd,
       "ZPIFExceptionCountTicket=1 ZPIFExceptionValueTicket_0=a,b,c,4",
       Attrs({"EOVS=4", "EMCP=FORMALSIZE", "EMCW=4", "EMCH=4", "EMCQ=4", "EOVE=4"})},
      {"views pair within their kind", ppd,
       "ZPIFCoverCountTicket=2 ZPIFInsertionCountTicket=1 ZPIFExceptionCountTicket=1 "
       "ZPIFCommandTicket_0=1,0,0,0,33 ZPIFCommandTicket_1=0,0,0,7 ZPIFCommandTicket_2=2,0,33 "
       "ZPIFCommandTicket_3=0,0,0,33 ZPIFCoverValueTicket_0=0,1,,P,white,1,2 "
       "ZPIFCoverValueTicket_1=1,1,,Q,red,3,4 ZPIFInsertionValueTicket_0=1,9,1,gray,5,6,R "
       "ZPIFExceptionValueTicket_0=x,y,z,1,1,,S,green,7,8",
       Attrs({"EMCP=FORMALSIZE", "EMCW=1", "EMCH=2", "EMCQ=P", "EMCC=WHITE", "EMCP=CUSTOM",
              "EMCW=3", "EMCH=4", "EMCQ=Q", "EMCC=RED", "EIST=9", "EMCP=CUSTOM", "EMCW=5", "EMCH=6",
              "EMCQ=R", "EMCC=GRAY", "EISC=1", "EOVS=1", "EMCP=CUSTOM", "EMCW=7", "EMCH=8",
              "EMCQ=S", "EMCC=GREEN", "EOVE=1"})},
      {"index spelling", ppd,
       "ZPIFCoverCountTicket=9 ZPIFCoverValueTicket_01=0,0,print-both "
       "com.korvanel.qd.jtz.printsettings.zpifcovervalueticket_7=1,0,print-none",
       Attrs({"EBCV=PRINTNONE", "EMCT=TRAYT1"})},
      // Perfect binding, in tenths of a millimetre.
      {"fore edge minimum cuts only the width", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=1EdgeCutMinimum KRPBindPageSize=A4 "
       "KRPBindCutPositionTop=9mm",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=A4", "PBTP=CUSTOM", "PBTW=2030",
              "PBTH=2970", "PBCI=OFF"})},
      {"right, three edges minimum", binding,
       "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCutMinimum KRPBindPageSize=A4 "
       "KRPBindCutPageSize=A3",
       Attrs({"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
              "PBTW=2030", "PBTH=2830", "PBCI=OFF"})},
      {"specified size centres the image", binding,
       "KRPBindPosition=BindRight KRPBindTrimming=1EdgeSpecifySize KRPBindPageSize=A3 "
       "KRPBindCutPageSize=A4 KRPBindCutPositionFore=5mm",
       Attrs({"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FACE", "PBBP=A3", "PBTP=A4", "PBTW=2100",
              "PBTH=2970", "ISXO=435", "ISXT=-435", "PBCI=OFF"})},
      {"fore edge cut ignores the top position", binding,
       "KRPBindPosition=BindTop KRPBindTrimming=1EdgeCut KRPBindPageSize=Letter "
       "KRPBindCutPageSize=A4 KRPBindCutPositionFore=10mm KRPBindCutPositionTop=4mm",
       Attrs({"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=LETTER", "PBTP=CUSTOM",
              "PBTW=2060", "PBTH=2790", "ISXO=-50", "ISXT=50", "PBCI=OFF"})},
      {"three edges take both positions", binding,
       "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCut KRPBindPageSize=Tabloid "
       "KRPBindCutPositionFore=3mm KRPBindCutPositionTop=5mm",
       Attrs({"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=LEDGER", "PBTP=CUSTOM",
              "PBTW=2760", "PBTH=4220", "ISXO=15", "ISXT=-15", "PBCI=OFF"})},
      {"top position alone writes no width", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeCut KRPBindPageSize=A4 "
       "KRPBindCutPositionTop=5mm",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
              "PBTH=2870", "ISXO=0", "ISXT=0", "PBCI=OFF"})},
      {"no trimming takes the page size", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindPageSize=A5 KRPBindCutPageSize=A3 "
       "KRPBindCutPositionFore=7mm",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=A5", "PBTP=A5", "PBCI=OFF"})},
      {"unknown choices pass through", binding, "KRPBindPosition=Middle KRPBindTrimming=Shave",
       Attrs({"PBRE=Middle", "MSDA=", "PBTC=Shave", "PBTP=CUSTOM", "PBTW=0", "PBTH=0", "ISXO=0",
              "ISXT=0", "PBCI=OFF"})},
      {"page size the PPD does not know", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=1EdgeCut KRPBindPageSize=SRA3 "
       "KRPBindCutPositionFore=4mm",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=SA3", "PBTP=CUSTOM", "PBTW=-40",
              "PBTH=0", "ISXO=-20", "ISXT=20", "PBCI=OFF"})},
      {"position off", binding, "KRPBindPosition=OFF KRPBindPageSize=A4", ""},
      {"every adjustment, right", binding,
       "KRPBindPosition=BindRight KRPBindTrimming=None KRPBindCutPageAdjustmentFore=1 "
       "KRPBindCutPageAdjustmentTB=2 KRPBindRotationAdjustTop=3 KRPBindRotationAdjustBot=4 "
       "KRPBindRotationAdjustFore=5 KRPBindCoverAdjustX=6 KRPBindCoverAdjustY=-7 "
       "KRPBindCutPositionAdjustmentTB=8",
       Attrs({"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBTP=", "PBAW=1", "PBAH=2", "PBAB=3",
              "PBAT=4", "PBAF=-5", "PBAX=-6", "PBAY=-7", "PBAV=-8", "PBCI=OFF"})},
      {"cover adjustments, left", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverAdjustX=5 KRPBindCoverAdjustY=5 "
       "KRPBindRotationAdjustTop=1 KRPBindRotationAdjustBot=2",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAT=1", "PBAB=2", "PBAX=5",
              "PBAY=-5", "PBCI=OFF"})},
      {"top flips the fore edge", binding,
       "KRPBindPosition=BindTop KRPBindTrimming=None KRPBindRotationAdjustFore=5 "
       "KRPBindCoverAdjustY=-7",
       Attrs({"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAF=5", "PBAY=7", "PBCI=OFF"})},
      {"cover DL is ledger", binding,
       "KRPBindPosition=BindTop KRPBindTrimming=None KRPBindPageSize=Letter KRPBindCoverPageSize=DL "
       "KRPBindCoverMediaType=CoatingPaper1A KRPBindCoverMediaColor=Ivory "
       "KRPBindCoverPaperTray=2ndTray",
       Attrs({"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=LETTER", "PBTP=LETTER",
              "PBCP=LEDGER", "PBCQ=COATEDPAPERA", "PBCC=IVORY", "PBCT=INTRAY2", "PBCI=OFF"})},
      {"tray without colour", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverPaperTray=MSI",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCI=OFF"})},
      {"colour without tray", binding,
       "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverMediaColor=Goldenrod "
       "KRPBindCoverPageSize=Shoebox",
       Attrs({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCP=", "PBCC=GOLDENROD",
              "PBCT=", "PBCI=OFF"})},
  });
}

}  // namespace
