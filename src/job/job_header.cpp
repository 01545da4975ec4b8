#include "job/job_header.h"

#include <cstring>

#include "base/fixed_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "job/module_dispatch.h"
#include "modules/device_settings/device_settings.h"
#include "modules/features/features.h"
#include "modules/job_comments/job_comments.h"
#include "modules/perfect_binding/perfect_binding.h"
#include "modules/special_pages/special_pages.h"
#include "platform/job_ppd.h"

namespace {

const char prtfmtStrZPJLHead[] = "%c%c-12345X";
const char prtfmtStrZPJLJobMode[] = "@PJL JOB MODE=PRINTER%c%c";
const char prtfmtStrEnterPS[] = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
const char prtfmtStrZPJLTrailer[] = "%c%c-12345X@PJL EOJ\n";

const ParamPointer cmdParaListZPJLHead[] = {&CTRLSym_ESC, &CTRLSym_PERCENTAGE};
const int32_t cmdParaNumZPJLHead = 2;
const ParamPointer cmdParaListZPJLJobMode[] = {&CTRLSym_CR, &CTRLSym_LF};
const int32_t cmdParaNumZPJLJobMode = 2;
// Four parameters, of which the format uses the first two.
const ParamPointer cmdParaListZPJLTrailer[] = {&CTRLSym_ESC, &CTRLSym_PERCENTAGE, &CTRLSym_CR,
                                               &CTRLSym_LF};
const int32_t cmdParaNumZPJLTrailer = 4;

}  // namespace

ParamTable symParaZPJLHead;
ParamTable symParaZPJLJobMode;
ParamTable symParaZPJLTrailer;

const FormatEntry prtFmtTableZPJLHead[] = {{prtfmtStrZPJLHead, &symParaZPJLHead, nullptr}};
const int32_t numFmtTableZPJLHead = 1;
const FormatEntry prtFmtTableZPJLJobMode[] = {{prtfmtStrZPJLJobMode, &symParaZPJLJobMode, nullptr}};
const int32_t numFmtTableZPJLJobMode = 1;
const FormatEntry prtFmtTableEnterPS[] = {{prtfmtStrEnterPS, nullptr, nullptr}};
const int32_t numFmtTableEnterPS = 1;
const FormatEntry prtFmtTableZPJLTrailer[] = {{prtfmtStrZPJLTrailer, &symParaZPJLTrailer, nullptr}};
const int32_t numFmtTableZPJLTrailer = 1;

const char* const kCommentedModelList[] = {
    "ZA200JP", "ZA205JP", "ZA210JP", "ZA215JP", "ZA220JP", "ZA225JP", "ZA230JP", "ZA235JP",
    "ZA240JP", "ZA245JP", "ZA250JP", "ZA255JP", "ZA260JP", "ZA265JP", "ZA270JP", "ZA275JP",
    "ZB200JP", "ZB205JP", "ZB210JP", "ZB215JP", "ZB220JP", "ZB225JP", "ZB230JP", "ZB235JP",
    "ZB240JP", "ZB245JP", "ZB250JP", "ZB255JP", "ZB260JP", "ZB265JP", "ZB270JP", "ZB275JP",
    "ZC200JP", "ZC205JP", "ZC210JP", "ZC215JP", "ZC220JP", "ZC225JP", "ZC230JP", "ZC235JP",
    "ZC240JP", "ZC245JP", "ZC250JP", "ZC255JP", "ZC260JP", "ZC265JP", "ZC270JP", "ZC275JP",
    "ZD200JP", "ZD205JP", "ZD210JP", "ZD215JP", "ZD220JP", "ZD225JP", "ZD230JP", "ZD235JP",
    "ZD240JP", "ZD245JP", "ZD250JP", "ZD255JP", "ZD260JP", "ZD265JP", "ZD270JP", "ZD275JP",
    "",
};

void BindFrameTables() {
  InitializeCmdParaTable(&symParaZPJLHead, cmdParaNumZPJLHead, cmdParaListZPJLHead);
  InitializeCmdParaTable(&symParaZPJLJobMode, cmdParaNumZPJLJobMode, cmdParaListZPJLJobMode);
  InitializeCmdParaTable(&symParaZPJLTrailer, cmdParaNumZPJLTrailer, cmdParaListZPJLTrailer);
}

void OutputZPJLCommandLanguageEncodingForKQM4T2A() {
  char line[256];
  ZeroText(line, sizeof line);
  ppd_file_t* ppd = AcquireJobPPD();
  if (PPDAttrEquals(ppd, "KRPrinterLanguageEncoding", "UTF-8")) {
    FormatText(line, sizeof line, "@PJL SET STRINGCODESET=%s\n", "UTF8");
  }
  ReleaseJobPPD(ppd);
  KZfprintf(stdout, line);
}

namespace {

void OutputJobInformationBlock(bool advanced) {
  if (advanced) {
    OutputZPJLCommandforCommentVersionHigh();
  } else {
    OutputZPJLCommandforCommentVersionLow();
  }
  OutputZPJLCommandforCommentBegin();
  OutputZPJLCommandforCommentBasic();
  if (advanced) OutputZPJLCommandforCommentAdvanced();
  OutputZPJLCommandforCommentEnd();
}

bool IsCommentedModel(const char* pcFileName) {
  for (const char* const* code = kCommentedModelList; (*code)[0] != '\0'; ++code) {
    if (std::strstr(pcFileName, *code) != nullptr) return true;
  }
  return false;
}

// The PRINTJOBINFO block: version 1.3.0 for legacy-encoding printers and the
// listed models, version 1.5.0 with the advanced lines where CommentOn asks.
void OutputZPJLCommandForJobInformation(ppd_file_t* ppd) {
  ppd_attr_t* encoding = ppdFindAttr_ALT(ppd, "KRPrinterLanguageEncoding");
  if (encoding != nullptr) {
    if (encoding->value == nullptr || std::strcmp(encoding->value, "UTF-8") != 0) {
      OutputJobInformationBlock(false);
      return;
    }
  } else {
    ppd_attr_t* pcFileName = ppdFindAttr_ALT(ppd, "PCFileName");
    if (pcFileName == nullptr) return;
    if (pcFileName->value != nullptr && IsCommentedModel(pcFileName->value)) {
      OutputJobInformationBlock(false);
      return;
    }
  }
  if (PPDAttrEquals(ppd, "CommentOn", "True")) OutputJobInformationBlock(true);
}

}  // namespace

void OutputZPJLCommand(char* argv[]) {
  OutputZPJLCommandFromArray(argv, prtFmtTableZPJLHead, numFmtTableZPJLHead);
  OutputZPJLCommandLanguageEncodingForKQM4T2A();
  OutputZPJLCommandFromArray(argv, prtFmtTableZPJLJobMode, numFmtTableZPJLJobMode);
  OutputZPJLCommandFromFilter(argv);
  OutputZPJLCommandforPerfectBind();
  OutputZPJLCommandforBooklet();
  OutputZPJLCommandForTonerSaver();
  OutputZPJLCommandOthers();
  OutputZPJLCommandForSpecialPage(argv);

  ppd_file_t* ppd = AcquireJobPPD();
  OutputZPJLCommandForJobInformation(ppd);
  // In the PPD-feature insertion mode the language switch comes after the
  // PJL derived from the job's feature code, so it is written there.
  if (!PPDAttrEquals(ppd, "KRPSDecompMode", "1")) {
    OutputZPJLCommandFromArray(argv, prtFmtTableEnterPS, numFmtTableEnterPS);
  }
  ReleaseJobPPD(ppd);
}
