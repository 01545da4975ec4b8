// Injection point codes: the structural line of the PostScript at which the
// pass-through calls the modules (OutputPSCommandFromFilter).
#pragma once

#include <cstdint>

constexpr int32_t kPointBeginProlog = 13;    // "%%BeginProlog"
constexpr int32_t kPointEndProlog = 14;      // "%%EndProlog"
constexpr int32_t kPointEndSetup = 16;       // "%%EndSetup"
constexpr int32_t kPointSetPageDevice = 21;  // "userdict/setpagedevice{pop}bind put"
constexpr int32_t kPointBeginPage = 23;      // "bp"
constexpr int32_t kPointEndPageSetup = 24;   // "%%EndPageSetup"
constexpr int32_t kPointEndPage = 27;        // "ep"
constexpr int32_t kPointEndPageAlt = 28;     // "endp"
// Handled by the watermark, though the pass-through never reports it.
constexpr int32_t kPointPageSaveRestore = 29;
// For jobs that do not end their pages in "ep"/"endp": the page-device hook,
// before the job's first line of code, and its removal, before the first
// "ep"/"endp" of a job that got it all the same.
constexpr int32_t kPointPageHook = 40;
constexpr int32_t kPointPageHookOff = 41;
