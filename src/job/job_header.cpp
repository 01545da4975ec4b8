#include "job/job_header.h"

#include "base/fixed_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "engine/table_rows.h"
#include "job/module_dispatch.h"
#include "platform/job_ppd.h"

namespace {

const char prtfmtStrZPJLHead[] = "%c%c-12345X";
const char prtfmtStrZPJLJobMode[] = "@PJL JOB MODE=PRINTER%c%c";
const char prtfmtStrEnterPS[] = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
const char prtfmtStrZPJLTrailer[] = "%c%c-12345X@PJL EOJ\n";

constexpr ParamPointer cmdParaListZPJLHead[] = {&CTRLSym_ESC, &CTRLSym_PERCENTAGE};
constexpr int32_t cmdParaNumZPJLHead = 2;
constexpr ParamPointer cmdParaListZPJLJobMode[] = {&CTRLSym_CR, &CTRLSym_LF};
constexpr int32_t cmdParaNumZPJLJobMode = 2;
// Four parameters, of which the format uses the first two.
constexpr ParamPointer cmdParaListZPJLTrailer[] = {&CTRLSym_ESC, &CTRLSym_PERCENTAGE, &CTRLSym_CR,
                                                   &CTRLSym_LF};
constexpr int32_t cmdParaNumZPJLTrailer = 4;

}  // namespace

constexpr ParamTable symParaZPJLHead = Params(cmdParaListZPJLHead);
constexpr ParamTable symParaZPJLJobMode = Params(cmdParaListZPJLJobMode);
constexpr ParamTable symParaZPJLTrailer = Params(cmdParaListZPJLTrailer);

const FormatEntry prtFmtTableZPJLHead[] = {{prtfmtStrZPJLHead, &symParaZPJLHead, nullptr}};
const int32_t numFmtTableZPJLHead = 1;
const FormatEntry prtFmtTableZPJLJobMode[] = {{prtfmtStrZPJLJobMode, &symParaZPJLJobMode, nullptr}};
const int32_t numFmtTableZPJLJobMode = 1;
const FormatEntry prtFmtTableEnterPS[] = {{prtfmtStrEnterPS, nullptr, nullptr}};
const int32_t numFmtTableEnterPS = 1;
const FormatEntry prtFmtTableZPJLTrailer[] = {{prtfmtStrZPJLTrailer, &symParaZPJLTrailer, nullptr}};
const int32_t numFmtTableZPJLTrailer = 1;

void BindFrameTables() {
  RequireCmdParaTable(symParaZPJLHead, cmdParaNumZPJLHead, cmdParaListZPJLHead);
  RequireCmdParaTable(symParaZPJLJobMode, cmdParaNumZPJLJobMode, cmdParaListZPJLJobMode);
  RequireCmdParaTable(symParaZPJLTrailer, cmdParaNumZPJLTrailer, cmdParaListZPJLTrailer);
}

void OutputZPJLCommandLanguageEncodingForKQM4T2A(FILE* stream) {
  char line[256];
  ZeroText(line, sizeof line);
  ppd_file_t* ppd = JobPPD();
  if (PPDAttrEquals(ppd, "KRPrinterLanguageEncoding", "UTF-8")) {
    FormatText(line, sizeof line, "@PJL SET %s=%s\n", kEncodingSettingName, "UTF8");
  }
  KZfprintf(stream, line);
}

void OutputZPJLCommand(char* argv[], FILE* stream) {
  OutputZPJLCommandFromArray(argv, prtFmtTableZPJLHead, numFmtTableZPJLHead, stream);
  OutputZPJLCommandLanguageEncodingForKQM4T2A(stream);
  OutputZPJLCommandFromArray(argv, prtFmtTableZPJLJobMode, numFmtTableZPJLJobMode, stream);
  OutputZPJLCommandFromModules(argv, stream);

  ppd_file_t* ppd = JobPPD();
  // In the PPD-feature insertion mode the language switch comes after the
  // PJL derived from the job's feature code, so it is written there.
  if (!PPDAttrEquals(ppd, "KRPSDecompMode", "1")) {
    OutputZPJLCommandFromArray(argv, prtFmtTableEnterPS, numFmtTableEnterPS, stream);
  }
}
