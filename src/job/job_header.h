// The PJL job header and trailer: the fixed order of everything written
// before and after the PostScript data.
#pragma once

#include <cstdint>
#include <cstdio>

#include "engine/command.h"
#include "engine/condition.h"
#include "engine/row_writer.h"

// The frame's own one-row format tables (always emitted).
extern const FormatEntry prtFmtTableZPJLHead[];
extern const int32_t numFmtTableZPJLHead;
extern const FormatEntry prtFmtTableZPJLJobMode[];
extern const int32_t numFmtTableZPJLJobMode;
extern const FormatEntry prtFmtTableEnterPS[];
extern const int32_t numFmtTableEnterPS;
extern const FormatEntry prtFmtTableZPJLTrailer[];
extern const int32_t numFmtTableZPJLTrailer;

extern const ParamTable symParaZPJLHead;
extern const ParamTable symParaZPJLJobMode;
extern const ParamTable symParaZPJLTrailer;

// Checks the frame's constant parameter tables against their lists and
// counts (called by InializeDescriptionTable).
void BindFrameTables();

// "@PJL SET STRINGCODESET=UTF8\n" when the PPD declares UTF-8, else nothing.
void OutputZPJLCommandLanguageEncodingForKQM4T2A(FILE* stream);

// The names of the envelope's lines: its one setting and its two commands
// ("@PJL <command>=...").
inline constexpr char kEncodingSettingName[] = "STRINGCODESET";
inline constexpr char kJobModeCommandName[] = "JOB MODE";
inline constexpr char kEnterLanguageCommandName[] = "ENTER LANGUAGE";
inline constexpr const char* EnvelopeCommandNames[] = {kJobModeCommandName,
                                                       kEnterLanguageCommandName};

// The whole job header, from the universal exit language to the language
// switch, to `stream` through the output channel; without a stream, to
// standard output.
void OutputZPJLCommand(char* argv[], FILE* stream);
inline void OutputZPJLCommand(char* argv[]) { OutputZPJLCommand(argv, stdout); }
