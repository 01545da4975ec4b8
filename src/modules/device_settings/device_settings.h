// Image-quality and device-settings lines of the job header (toner saving,
// line weight, render mode) and the table that turns a PPD feature keyword
// and its chosen value into one PJL line. The printer's colour questions are
// in base/printer_color.h, since the job comments ask them too.
//
// The header lines read the settings that the job-comments module filled
// (psoptioncomment); this module has no ticket bindings of its own.
#pragma once

#include <cstdint>
#include <cstdio>

#include <cups/ppd.h>

#include "base/printer_color.h"

// ECONOMODE and REDUCTIONRATE lines from the toner-saver settings. Like
// every header writer, it writes to `stream` through the output channel.
void OutputZPJLCommandForTonerSaver(FILE* stream);

// The line-weight line, then the render-mode line.
void OutputZPJLCommandOthers(FILE* stream);

// The settings ("@PJL SET <name>=") and attributes the two writers above put
// in the header.
inline constexpr char kTonerSaverSettingName[] = "ECONOMODE";
inline constexpr char kReductionRateSettingName[] = "REDUCTIONRATE";
inline constexpr const char* DeviceSettingsSetNames[] = {
    kTonerSaverSettingName, kReductionRateSettingName, "RENDERMODE"};
inline constexpr const char* DeviceSettingsAttributeNames[] = {"LWAD"};

// One row of the device-settings command table: PPD option keyword (without
// its asterisk), choice keyword, complete PJL line with its final "\n".
struct DeviceSettingCommand {
  const char* keyword;
  const char* choice;
  const char* command;
};

extern const DeviceSettingCommand FeaturePPDKeyNameandMarkedValuetoPJLCommand[];
extern const int32_t FeaturePPDKeyNameandMarkedValuetoPJLCommandNum;  // 123

// The PJL line of the first row whose keyword, with an asterisk put in front,
// equals `keyword` and whose choice equals `choice` (both exactly), or nullptr.
const char* GetThePJLCommandfromKeywordsandMarkedValue(const char* keyword, const char* choice);

// A feature keyword and the line written when the PPD lacks that option.
struct PPDKeyDefault {
  const char* keyword;
  const char* defaultCommand;
};

// The six features with default lines, ended by a row of nullptrs.
extern const PPDKeyDefault PPDKeyArray[];

// Walks `keys` (ended by a null keyword) in order and writes the default line
// of every keyword for which `ppd` has no option of that name. Writes nothing
// without a PPD.
void OutputPJLCommandForPPDKeyArray(const PPDKeyDefault* keys, ppd_file_t* ppd);
