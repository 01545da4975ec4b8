// Whole job headers through the built filter, from the first byte to the
// language switch: the envelope each kind of PPD gets, the module lines in
// their order, and the PRINTJOBINFO block.
#include <string>
#include <vector>

#include "filter_runner.h"
#include "sealed_blob.h"

namespace {

const std::string kJobMode = "@PJL JOB MODE=PRINTER\r\n";
const std::string kUtf8 = "@PJL SET STRINGCODESET=UTF8\n";
const std::string kEnterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";

// The accounting lines of a job without accounting keys: host, login user,
// N-up, owner (the login user, as no user ID came) and document name.
std::string Accounting(bool utf8, const std::string& nup) {
  return "@PJL SET JOBATTR=\"@CNAM=" + ClientHostName(utf8) + "\"\n" +
         "@PJL SET JOBATTR=\"@LUNA=alice\"\n@PJL SET JOBATTR=\"@NLPP=" + nup + "\"\n" +
         "@PJL SET JOBATTR=\"@JOAU=alice\"\r\n@PJL SET JOBATTR=\"@ACNA=report\"\r\n";
}

const std::vector<std::string> kBegin = {"BEGIN", "PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]",
                                         "JOBTYPE=PRINT"};

std::vector<std::string> Block(const char* version, std::vector<std::string> lines) {
  std::vector<std::string> items = {std::string("VERSION=") + version};
  items.insert(items.end(), kBegin.begin(), kBegin.end());
  items.insert(items.end(), lines.begin(), lines.end());
  items.push_back("END");
  return items;
}

struct HeaderCase {
  const char* name;
  const char* ppd;  // "": no PPD
  std::string options;
  std::string expected;  // sealed password fields opened
  std::string title = "report";
};

void CheckWholeHeader(const HeaderCase& c) {
  FilterJob job;
  if (c.ppd[0] != '\0') job.ppd = Fixture(std::string("ppd/") + c.ppd);
  job.options = c.options;
  job.title = c.title;
  job.input = "%!PS\nshowpage\n";
  FilterRun run = RunFilter(job);
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(SameStream(c.expected, WithOpenedFields(SplitStream(run.out).header)));
}

const char kLegacyTicket[] =
    "collate com.apple.print.PrintSettings.PMCopies..n.=2 sides=two-sided-long-edge "
    "number-up=4 KRStaple=UpperLeftSingle KRPunch=Left KRNumPunchHoles=2Holes "
    "KRTonerSaver=Mode2 KRLineWeightAdjustment=Strongly2";

const char kFullTicket[] =
    "nocollate com.apple.print.PrintSettings.PMCopies..n.=3 KRSignature=LeftSigCenterStaple "
    "KRSigVol=10Sheets number-up=2 com.apple.print.PrintSettings.PMLayoutDirection..n.=5 "
    "orientation-requested=4 KRStaple=None KRPunch=Top KRNumPunchHoles=3Holes KRColorMode=Color "
    "KRTonerSaver=UserInput KRTonerReductionRate=Reduce_150 KRLineWeightAdjustment=Weakly1";

const char kStapleTicket[] =
    "sides=two-sided-long-edge DuplexBindingEdge..n.=0 KRStaple=LowerRightSingle "
    "KRPunch=RightEdge KRNumPunchHoles=CoilPunch number-up=9 "
    "com.apple.print.PrintSettings.PMLayoutDirection..n.=6 orientation-requested=5 "
    "KRColorMode=Auto KRTonerSaver=True KRLineWeightAdjustment=Normal";

// Every header module in one job: features rows, perfect binding, booklet,
// device settings, special pages and the block.
const std::string kSP = " com.korvanel.qd.jtz.printsettings.ZPIF";
const std::string kAllModulesTicket =
    "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindPageSize=A4" + kSP +
    "CoverCountTicket=1" + kSP + "CommandTicket_0=0,0,0,5" + kSP +
    "CoverValueTicket_0=0,0,print-front KRTonerSaver=Mode1 KRLineWeightAdjustment=Weakly3 "
    "number-up=2 collate KRSignature=BookLeft KRSigVol=None " +
    Key("TabMarginSwitchTicket", "1") + Key("TabMarginMMShiftTicket", "12") +
    Key("EjectOptionsListTicket", "3");

// A typical secure-print job with accounting.
const std::string kSecurePrintTicket =
    Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "alice") +
    Key("PrintTypePasswordTicketKey", StoredPasswordText("1234")) +
    Key("DocumentNameTypeTicketKey", "1") + Key("JBAManageTypeListTicketKey", "2") +
    Key("JBAUserSettingRadioBtnTicket", "1") + Key("JBAUserIDListCtrlTicket", "2") +
    Key("JBAUserIDTextEditTicket", "u100") +
    Key("JBAUserPasswordTextEditTicket", StoredPasswordText("pw100")) +
    Key("JBAAccountIDTextEditTicket", "acct7") + Key("JBAInfoListTicketKey", "0") +
    Key("JBAIPAddressStringTicket", "192.0.2.7");

TEST(JobHeader, WholeHeaders) {
  for (const HeaderCase& c : std::vector<HeaderCase>{
        // Legacy encoding: the basic block whatever CommentOn says.
        HeaderCase{"LegacyBasicBlock", "jobinfo-legacy-mono.ppd", kLegacyTicket,
                   kUEL + kJobMode + Accounting(false, "N4") +
                       "@PJL SET ECONOMODE=MODE2\n"
                       "@PJL SET REDUCTIONRATE=0\n"
                       "@PJL SET JOBATTR=\"@LWAD=-2\"\n"
                       "@PJL SET RENDERMODE=GRAYSCALE\n" +
                       InfoLines(Block("1.3.0",
                                       {"JOBCOPIES=2", "PAGECOPIES=1", "DUPLEXTYPE=DUPLEX",
                                        "COLORMODE=GRAYSCALE", "NUP=4", "STAPLE=ON", "PUNCH=ON"})) +
                       kEnterPS},
        // UTF-8 with CommentOn: the full block with the advanced lines.
        HeaderCase{
            "Utf8FullBlock", "jobinfo-utf8-color.ppd", kFullTicket,
            kUEL + kUtf8 + kJobMode + Accounting(true, "N2") +
                "@PJL SET JOBATTR=\"@DIND=PORTRAIT\"\n"
                "@PJL SET JOBATTR=\"@DIBB=LEFT\"\n"
                "@PJL SET JOBATTR=\"@DIBK=MANUALDIVIDE\"\n"
                "@PJL SET ECONOMODE=ON\n"
                "@PJL SET REDUCTIONRATE=99\n"
                "@PJL SET JOBATTR=\"@LWAD=1\"\n"
                "@PJL SET RENDERMODE=COLOR\n" +
                InfoLines(Block("1.5.0", {"PAGECOPIES=3", "JOBCOPIES=1", "DUPLEXTYPE=TUMBLE",
                                          "COLORMODE=COLOR", "NUP=2", "STAPLE=OFF", "PUNCH=ON",
                                          "BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[10]",
                                          "ORIENTATION=LANDSCAPE", "NUPEX=RIGHTTODOWN",
                                          "SADDLESTAPLE=ON", "PUNCHEX=HOLES[THREE]:LOCATION[TOP]",
                                          "MIXEDSIZETYPE=NONE", "CUD=OFF"})) +
                kEnterPS},
        // A binding edge of 0 turns two-sided into one-sided; "Auto" leaves the
        // colour to a printer whose PPD offers it.
        HeaderCase{"Utf8StapleAndPunch", "jobinfo-utf8-color.ppd", kStapleTicket,
                   kUEL + kUtf8 + kJobMode + Accounting(true, "N9") +
                       "@PJL SET JOBATTR=\"@DIND=LANDSCAPE\"\n"
                       "@PJL SET REDUCTIONRATE=0\n"
                       "@PJL SET JOBATTR=\"@LWAD=0\"\n" +
                       InfoLines(Block("1.5.0", {"DUPLEXTYPE=SIMPLEX", "NUP=9", "STAPLE=ON",
                                                 "PUNCH=ON", "ORIENTATION=LANDSCAPE",
                                                 "NUPEX=DOWNTHENLEFT", "STAPLEEX=BOTTOMRIGHT",
                                                 "PUNCHEX=HOLES[COIL]:LOCATION[RIGHT]",
                                                 "MIXEDSIZETYPE=NONE", "CUD=OFF"})) +
                       kEnterPS},
        // No encoding attribute, a listed model: the basic block even with CommentOn.
        HeaderCase{
            "ListedModelBasicBlock", "jobinfo-listed-model.ppd", "",
            kUEL + kJobMode + Accounting(false, "1") + "@PJL SET RENDERMODE=COLOR\n" +
                InfoLines(Block("1.3.0", {"DUPLEXTYPE=SIMPLEX", "COLORMODE=COLOR", "NUP=1"})) +
                kEnterPS},
        // A listed model gets the block even with CommentOn "False".
        HeaderCase{"ListedModelCommentOffBasicBlock", "listed-model.ppd", "",
                   kUEL + kJobMode + Accounting(false, "1") + "@PJL SET RENDERMODE=GRAYSCALE\n" +
                       InfoLines(Block("1.3.0", {"DUPLEXTYPE=SIMPLEX", "COLORMODE=GRAYSCALE",
                                                 "NUP=1"})) +
                       kEnterPS},
        HeaderCase{"UnlistedModelFullBlock", "jobinfo-unlisted-model.ppd", "",
                   kUEL + kJobMode + Accounting(false, "1") + "@PJL SET RENDERMODE=COLOR\n" +
                       InfoLines(Block("1.5.0",
                                       {"DUPLEXTYPE=SIMPLEX", "COLORMODE=COLOR", "NUP=1",
                                        "ORIENTATION=PORTRAIT", "MIXEDSIZETYPE=NONE", "CUD=OFF"})) +
                       kEnterPS},
        HeaderCase{
            "AllModulesInOrder", "jobinfo-utf8-color.ppd", kAllModulesTicket,
            kUEL + kUtf8 + kJobMode + Accounting(true, "N2") +
                Attrs({"TABS=12", "FACE=UP", "PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=A4",
                       "PBTP=A4", "PBCI=OFF", "DIND=LANDSCAPE", "DIBB=LEFT", "DIBK=NONEDIVIDE"}) +
                "@PJL SET ECONOMODE=MODE1\n"
                "@PJL SET REDUCTIONRATE=0\n" +
                Attr("LWAD=3") + "@PJL SET RENDERMODE=COLOR\n" +
                Attrs({"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"}) +
                // No copies key in the ticket: the copies read as -1.
                InfoLines(Block("1.5.0", {"JOBCOPIES=-1", "PAGECOPIES=1", "DUPLEXTYPE=TUMBLE",
                                          "COLORMODE=COLOR", "NUP=2",
                                          "BOOKLETTYPE=TYPE[NONEDIVIDE]", "NUPEX=RIGHTTODOWN",
                                          "SADDLESTAPLE=OFF", "MIXEDSIZETYPE=NONE", "CUD=OFF"})) +
                kEnterPS},
        // No block: CommentOn off, or no encoding and no PCFileName.
        HeaderCase{"Utf8CommentOffNoBlock", "jobinfo-utf8-color-black-default.ppd",
                   "KRStaple=LeftDouble",
                   kUEL + kUtf8 + kJobMode + Accounting(true, "1") +
                       "@PJL SET JOBATTR=\"@DIND=PORTRAIT\"\n"
                       "@PJL SET RENDERMODE=GRAYSCALE\n" +
                       kEnterPS},
        HeaderCase{"NoEncodingNoPCFileNameNoBlock", "jobinfo-no-encoding-no-pcfilename.ppd",
                   "KRColorMode=Auto KRTonerSaver=UserInput KRTonerReductionRate=Reduce_",
                   kUEL + kJobMode + Accounting(false, "1") + "@PJL SET RENDERMODE=GRAYSCALE\n" +
                       kEnterPS},
        // The print type lines follow the job mode line, the accounting
        // lines follow them; the sealed passwords open with the test key.
        HeaderCase{
            "SecurePrintWithAccounting", "modules-utf8.ppd", kSecurePrintTicket,
            kUEL + kUtf8 + kJobMode +
                "@PJL SET HOLD=STORE\n"
                "@PJL SET HOLDTYPE=PRIVATE\n"
                "@PJL SET USERNAME=\"alice\"\r\n"
                "@PJL SET HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n"
                "@PJL SET JOBNAME=\"Quarterly report\"\r\n" +
                Attrs({"CNAM=" + ClientHostName(true), "LUNA=alice", "HOAD=192.0.2.7", "NLPP=1"}) +
                AttrCRLF("JOAU=u100") + AttrCRLF("JOEP=<sealed:pw100>") + AttrCRLF("DAID=acct7") +
                AttrCRLF("ACNA=Quarterly report") + Attr("DIND=PORTRAIT") +
                "@PJL SET RENDERMODE=GRAYSCALE\n" + kEnterPS,
            "Quarterly report"},
        // Without a PPD, or with a file that is none, the plainest header.
        HeaderCase{"NoPPD", "", "",
                   kUEL + kJobMode + Accounting(false, "1") + "@PJL SET RENDERMODE=GRAYSCALE\n" +
                       kEnterPS},
        HeaderCase{"UnreadablePPD", "../ps/simple.ps", "",
                   kUEL + kJobMode + Accounting(false, "1") + "@PJL SET RENDERMODE=GRAYSCALE\n" +
                       kEnterPS},
        // Decomposition mode: the header has no language switch of its own;
        // the insertion pass writes it after the lines it derives (none here).
        HeaderCase{"DecompositionMode", "decomp.ppd", "",
                   kUEL + kUtf8 + kJobMode + Accounting(true, "1") + Attr("DIND=PORTRAIT") +
                       "@PJL SET RENDERMODE=GRAYSCALE\n" + kEnterPS}}) {
    SCOPED_TRACE(c.name);
    CheckWholeHeader(c);
  }
}

}  // namespace
