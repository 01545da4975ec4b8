// Small queries the whole filter makes of the PPD and of the running system.
#pragma once

#include <cstdint>

#include <cups/ppd.h>

// The first attribute, in the PPD's attribute order, whose name begins with
// `keyword` (a longer name with that prefix matches too), or nullptr.
// Accepts a null PPD.
ppd_attr_t* ppdFindAttr_ALT(ppd_file_t* ppd, const char* keyword);

// 1 when `keyword` is found and its value contains `word`, else 0.
int CheckIfPPDKeywordSupported(ppd_file_t* ppd, const char* keyword, const char* word);

// True when the PPD has `keyword` with exactly the value `value`.
bool PPDAttrEquals(ppd_file_t* ppd, const char* keyword, const char* value);

// True when the job's PPD declares UTF-8 as the printer's language encoding.
bool IsUTF8PrinterEncoding();

// Selectors of Gestalt_ALT.
constexpr uint32_t kGestaltSystemVersion = 0x73797376;        // 'sysv'
constexpr uint32_t kGestaltSystemVersionMajor = 0x73797331;   // 'sys1'
constexpr uint32_t kGestaltSystemVersionMinor = 0x73797332;   // 'sys2'
constexpr uint32_t kGestaltSystemVersionBugFix = 0x73797333;  // 'sys3'

// The packed system version 0x10MB for a Darwin kernel release string
// ("19.6.0" gives 0x10F6). Kernel 20 and later wrap around on purpose.
uint32_t PackSystemVersion(const char* release);

// 0 and *result on success; -1 (and a line on stderr) for an unknown selector.
int Gestalt_ALT(uint32_t selector, int32_t* result);
