// Every line the job header can hold is one the inspector knows: whole
// headers written in-process by the filter's own header sequence, for
// tickets that drive each module through its many lines, are read back and
// each line must be known, in its group, in the form the filter writes it.
// A module that starts writing a new attribute fails here until the
// inspector has words for it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "inspect/stream_inspection.h"
#include "job/job_header.h"
#include "job/module_dispatch.h"
#include "modules/job_comments/job_comments.h"
#include "sealed_blob.h"
#include "test_support.h"

namespace {

std::string Jtz(const std::string& suffix, const std::string& value) {
  return " com.korvanel.qd.jtz.printsettings." + suffix + "=" + value;
}

// The header the filter writes for `ticket` on `ppd`, as a whole stream
// with a two-page job and the trailer.
std::string HeaderStream(const std::string& ppd, const std::string& ticket) {
  ResetJobState();
  CommentResetOptionRecord();
  setenv("PPD", (std::string(ZPJL_FIXTURES) + "/ppd/" + ppd).c_str(), 1);
  CopyText(StdUserName, sizeof StdUserName, "bob");
  CopyText(StdJBAUserName, sizeof StdJBAUserName, "bob");
  CopyText(StdDocumentName, sizeof StdDocumentName, "report");
  CopyText(PTStdDocumentName, sizeof PTStdDocumentName, "report");
  CopyText(HostNameStr, sizeof HostNameStr, "mac1");
  InializeDescriptionTable();
  FilterArguments args(ticket);
  GetTicketFromPDE(args.argv);
  const std::string header = CaptureStdout([&] { OutputZPJLCommand(args.argv); });
  return header + "%!PS\nbp\nep\nbp\nep\n\x04\x1b%-12345X@PJL EOJ\n";
}

struct HeaderCase {
  const char* name;
  const char* ppd;
  std::string ticket;
  std::map<LineGroup, int> atLeast;  // lines each group must have
};

TEST(InspectModuleLines, EveryLineOfEveryModuleIsKnown) {
  const std::string stored = StoredPasswordText("pw");
  ASSERT_FALSE(stored.empty());
  const HeaderCase kCases[] = {
      {"secure print and user accounting",
       "modules-utf8.ppd",
       Jtz("PrintTypeTicketKey", "2") + Jtz("PrintTypeUserNameTicketKey", "alice") +
           Jtz("PrintTypePasswordTicketKey", stored) + Jtz("DocumentNameTypeTicketKey", "1") +
           Jtz("JBAManageTypeListTicketKey", "2") + Jtz("JBAUserSettingRadioBtnTicket", "1") +
           Jtz("JBAUserIDListCtrlTicket", "2") + Jtz("JBAUserIDTextEditTicket", "u1") +
           Jtz("JBAUserPasswordTextEditTicket", stored) + Jtz("JBADomainNameTextEditTicket", "d") +
           Jtz("JBAAccountIDTextEditTicket", "a") + Jtz("JBAStorageIDTextEditTicket", "s") +
           Jtz("JBAStoragePasswordTextEditTicket", stored) +
           Jtz("JBAIPAddressStringTicket", "192.0.2.1"),
       {{LineGroup::kPrintType, 5}, {LineGroup::kAccounting, 11}}},
      {"mailbox, and administrator accounting entered at print time",
       "legacy-mono.ppd",
       Jtz("PrintTypeTicketKey", "5") + Jtz("PrintTypeMBNTicketKey", "7") +
           Jtz("PrintTypeMBNPasswordTicketKey", stored) + Jtz("JBAManageTypeListTicketKey", "1") +
           Jtz("JBAAdminUserInputRadioBtnTicket", "1") + Jtz("JBAInputAuthRadioBtnTicketKey", "1") +
           Jtz("JBAInputUserIDTextEditTicket", "in") +
           Jtz("JBAInputUserPasswordTextEditTicket", stored) +
           Jtz("JBAInputDomainNameTextEditTicket", "dom") +
           Jtz("JBAInputAccountIDTextEditTicket", "acc") +
           Jtz("JBAInputStrgRadioBtnTicketKey", "1") +
           Jtz("JBAInputStorageIDTextEditTicket", "st") +
           Jtz("JBAInputStoragePasswordTextEditTicket", stored) + Jtz("JBAInfoListTicketKey", "1"),
       {{LineGroup::kPrintType, 4}, {LineGroup::kAccounting, 10}, {LineGroup::kJobInformation, 5}}},
      {"sample print and hidden owner",
       "modules-utf8.ppd",
       Jtz("PrintTypeTicketKey", "3") + Jtz("PrintTypeUserNameTicketKey", "alice") +
           Jtz("JBAManageTypeListTicketKey", "2") + Jtz("JBAUserSettingRadioBtnTicket", "1") +
           Jtz("JBAUserIDListCtrlTicket", "1") + Jtz("JBAInfoListTicketKey", "2") +
           Jtz("JBAInfoSetListTicketKey", "8"),
       {{LineGroup::kPrintType, 2}, {LineGroup::kAccounting, 4}}},
      {"delayed print and device settings",
       "jobinfo-utf8-color.ppd",
       Jtz("PrintTypeTicketKey", "4") + Jtz("DelayPrintTicketKey", "1230") +
           Jtz("DocumentNameTypeTicketKey", "2") + Jtz("DocumentNameTicketKey", "Plan") +
           " KRTonerSaver=UserInput KRTonerReductionRate=Reduce050 KRLineWeightAdjustment=Weakly1"
           " KRColorMode=Black",
       {{LineGroup::kPrintType, 2}, {LineGroup::kDeviceSettings, 4}}},
      {"finishing, every kind of row",
       "modules-utf8.ppd",
       Jtz("TabMarginSwitchTicket", "0") + Jtz("TrimmerSwitchTicket", "1") +
           Jtz("TrimmerMMCuttingSizeTicket", "30") +
           " com.korvanel.qd.etz.printsettings.TrimmerSelectTicket=3"
           " com.korvanel.qd.etz.printsettings.TrimmerWidthMMSizeTicket=7"
           " com.korvanel.qd.etz.printsettings.TrimmerHeightMMSizeTicket=8"
           " com.korvanel.qd.etz.printsettings.TrimmerAdjustMMSizeTicket=1" +
           Jtz("NumInSequenceSwitchTicket", "0") + Jtz("OffsetStackingListTicket", "5") +
           Jtz("OffsetStackingUnitsLArrowTicket", "3") + Jtz("EjectOptionsListTicket", "1") +
           " KRNumPunchHoles=Coil" + Jtz("CoilPunchFaceTicket", "true") +
           Jtz("featuresMediaTypeTabTicket", "true") + Jtz("whetherMediaTypeTabTicket", "0"),
       {{LineGroup::kFinishing, 8}, {LineGroup::kBooklet, 1}}},
      {"perfect binding with a trimmed cut size",
       "perfect_binding.ppd",
       " KRPBindPosition=BindLeft KRPBindTrimming=3EdgeSpecifySize KRPBindPageSize=A3"
       " KRPBindCutPageSize=A4 KRPBindCutPositionTop=5mm KRPBindCutPositionFore=7mm"
       " KRPBindCutPageAdjustmentFore=1 KRPBindCutPageAdjustmentTB=-2 KRPBindRotationAdjustTop=3"
       " KRPBindRotationAdjustBot=4 KRPBindRotationAdjustFore=5 KRPBindCoverAdjustX=6"
       " KRPBindCoverAdjustY=7 KRPBindCutPositionAdjustmentTB=8 KRPBindCoverPageSize=DL"
       " KRPBindCoverMediaType=ThickPaper KRPBindCoverMediaColor=Pink KRPBindCoverPaperTray=MSI",
       {{LineGroup::kPerfectBinding, 22}}},
      {"perfect binding cut at the fore edge, bound right",
       "perfect_binding.ppd",
       " KRPBindPosition=BindRight KRPBindTrimming=3EdgeCut KRPBindPageSize=A4"
       " KRPBindCutPositionTop=5mm KRPBindCutPositionFore=7mm",
       {{LineGroup::kPerfectBinding, 10}}},
      {"special pages of every kind",
       "perfect_binding.ppd",
       Jtz("ZPIFCoverCountTicket", "2") + Jtz("ZPIFInsertionCountTicket", "1") +
           Jtz("ZPIFExceptionCountTicket", "1") + Jtz("ZPIFCommandTicket_0", "0,0,0,5") +
           Jtz("ZPIFCommandTicket_1", "0,1,0,33") + Jtz("ZPIFCommandTicket_2", "1,0,0,0,33") +
           Jtz("ZPIFCommandTicket_3", "2,0,7") + Jtz("ZPIFCoverValueTicket_0", "0,0,print-both") +
           Jtz("ZPIFCoverValueTicket_1", "1,1,print-front,Plain,custom_2,2159,2794") +
           Jtz("ZPIFInsertionValueTicket_0", "1,4,2,orange,1000,1500,Recycled") +
           Jtz("ZPIFExceptionValueTicket_0",
               "0,1,0,2,5,two-sided-short-edge,Plain,no-color,2970,4200"),
       {{LineGroup::kSpecialPages, 22}}},
      {"job information with booklet, staple and punch",
       "jobinfo-utf8-color.ppd",
       " sides=two-sided-long-edge collate number-up=2 orientation-requested=4"
       " com.apple.print.PrintSettings.PMLayoutDirection..n.=1 DuplexBindingEdge..n.=2"
       " com.apple.print.PrintSettings.PMCopies..n.=3 KRStaple=UpperLeftSingle KRPunch=Left"
       " KRNumPunchHoles=2Holes KRSignature=LeftSigCenterStaple KRSigVol=10Sheets",
       {{LineGroup::kJobInformation, 18}, {LineGroup::kBooklet, 3}}},
  };
  for (const HeaderCase& c : kCases) {
    const std::string stream = HeaderStream(c.ppd, c.ticket);
    InspectOptions options;
    const StreamReport report = InspectStream(stream, options);
    EXPECT_FALSE(report.Malformed()) << c.name;
    EXPECT_TRUE(report.findings.empty()) << c.name << ": " << report.findings.front().text;
    std::map<LineGroup, int> counts;
    for (const HeaderLine& line : report.header) {
      ++counts[line.meaning.group];
      EXPECT_NE(line.meaning.group, LineGroup::kUnknown) << c.name << ": " << line.bytes;
      EXPECT_TRUE(line.meaning.exactRow) << c.name << ": " << line.bytes;
      EXPECT_NE(line.meaning.words, nullptr) << c.name << ": " << line.bytes;
      if (line.sealed) {
        EXPECT_TRUE(line.sealed->blob) << c.name << ": " << line.parsed.name;
      }
    }
    for (const auto& [group, least] : c.atLeast) {
      EXPECT_GE(counts[group], least) << c.name << ": " << GroupTitle(group);
    }
  }
  unsetenv("PPD");
  ResetJobState();
  CommentResetOptionRecord();
}

}  // namespace
