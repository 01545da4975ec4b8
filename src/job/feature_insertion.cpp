#include "job/feature_insertion.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <cups/cups.h>

#include "base/byte_search.h"
#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "job/job_header.h"
#include "job/line_scanner.h"
#include "job/ps_stream.h"
#include "modules/device_settings/device_settings.h"
#include "platform/job_ppd.h"
#include "platform/job_ticket.h"

const char* const TRCSCRCommand[] = {"TTRC", "GTRC", "ITRC", "TSCR", "GSCR", "ISCR", ""};
const char* const CPRCommand[] = {"TCPR", "GCPR", "ICPR", ""};

char g_DLOutputMode[255];

namespace {

constexpr char KPPDOutputModeKey[] = "*KROutputMode";
constexpr char KPPDHalfToneKey[] = "*KRHalftone";
constexpr char kFeaturePrefix[] = "%%BeginFeature:";
constexpr size_t kFeatureCopySize = 100;
constexpr size_t kDigitPositions = 100;
constexpr size_t kNameLength = 4;
constexpr char kEndOfJob = 0x04;

char PPDPJLOutFilePath[255];

void WriteOut(const char* line) { KZfputs(line, stdout); }

void OutputHalftoneLines(const char* value) {
  const char* level = std::strcmp(value, "Fineness") == 0    ? "64"
                      : std::strcmp(value, "Gradation") == 0 ? "66"
                                                             : nullptr;
  if (level == nullptr) return;
  char line[kFeatureCopySize];
  for (const char* const* name = TRCSCRCommand; (*name)[0] != '\0'; ++name) {
    FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@%s=%s\"\n", *name, level);
    WriteOut(line);
  }
}

// Whether the line's text (up to a NUL, as a C string search sees it) holds every name.
bool ContainsAll(const char* line, size_t length, const char* const* names) {
  size_t text = strnlen(line, length);
  for (const char* const* name = names; (*name)[0] != '\0'; ++name) {
    if (memmem(line, text, *name, std::strlen(*name)) == nullptr) return false;
  }
  return true;
}

}  // namespace

void OutputPJLForFeatureLine(FeatureScanState& state, const char* line, size_t length) {
  char copy[kFeatureCopySize];
  CopyTextPrefix(copy, sizeof copy, line, length);
  char* save = nullptr;
  strtok_r(copy, " ", &save);
  const char* keyword = strtok_r(nullptr, " ", &save);
  const char* value = strtok_r(nullptr, " ", &save);
  if (keyword == nullptr) keyword = "";
  if (value == nullptr) value = "";

  if (std::strcmp(keyword, KPPDOutputModeKey) == 0) {
    if (std::strcmp(value, "600x600") == 0) state.resolution = 600;
    if (std::strcmp(value, "1200x1200") == 0) state.resolution = 1200;
  }

  ppd_file_t* ppd = JobPPD();
  if (PPDAttrEquals(ppd, "ColorDevice", "False") && std::strcmp(keyword, KPPDHalfToneKey) == 0) {
    OutputHalftoneLines(value);
  } else if (ppd != nullptr && state.colorDefaultsPending &&
             PPDAttrEquals(ppd, "ColorDevice", "True")) {
    OutputPJLCommandForPPDKeyArray(PPDKeyArray, ppd);
    state.colorDefaultsPending = false;
  }

  if (state.resolutionPending && (state.resolution == 600 || state.resolution == 1200)) {
    WriteOut(state.resolution == 600 ? kResolution600Line : kResolution1200Line);
    for (const char* line : kRasterLines) WriteOut(line);
    state.resolutionPending = false;
  }

  if (const char* command = GetThePJLCommandfromKeywordsandMarkedValue(keyword, value)) {
    WriteOut(command);
  }
}

void OutputPJLForScreenLine(const char* line, size_t length) {
  if (!ContainsAll(line, length, TRCSCRCommand) && !ContainsAll(line, length, CPRCommand)) return;
  size_t positions[kDigitPositions];
  size_t count = 0;
  for (size_t i = 0; i < length && count < kDigitPositions; ++i) {
    if (line[i] >= '0' && line[i] <= '9') positions[count++] = i;
  }
  char out[kFeatureCopySize];
  for (size_t i = 0; i < count;) {
    size_t p = positions[i];
    bool pair = i + 1 < count && positions[i + 1] == p + 1;
    if (p < kNameLength + 1) {  // no complete name before it
      ++i;
      continue;
    }
    char name[kNameLength + 1];
    CopyTextPrefix(name, sizeof name, line + p - 5, kNameLength);
    CleanPJLText(name);  // four bytes of the job's PostScript
    char value[3] = {line[p], pair ? line[p + 1] : '\0', '\0'};
    FormatText(out, sizeof out, "@PJL SET JOBATTR=\"@%s=%s\"\n", name, value);
    WriteOut(out);
    i += pair ? 2 : 1;
  }
}

namespace {

bool IsFeatureLine(const char* line, size_t length) {
  return length >= sizeof kFeaturePrefix - 1 &&
         std::memcmp(line, kFeaturePrefix, sizeof kFeaturePrefix - 1) == 0;
}

bool IsScreenLine(const char* line, size_t length) {
  return ContainsAll(line, length, TRCSCRCommand) || ContainsAll(line, length, CPRCommand);
}

// A screen line holds every name of one list, so "TTRC" or "TCPR": a line
// with neither cannot be one.
constexpr BytePattern kScreenHintFirst = {{'T', 'T', 'R', 'C'}};
constexpr BytePattern kScreenHintSecond = {{'T', 'C', 'P', 'R'}};

// Pass 1: lines go to the spool file, the derived PJL to stdout.
//
// Almost every line is only spooled. Which may be more is told by its first
// bytes and length (feature and structural lines) and, for screen lines,
// by where the block holds "TTRC" or "TCPR", found once per block.
class SpoolSink : public LineSink {
 public:
  SpoolSink(char* argv[], FILE* spool) : argv_(argv), spool_(spool) {
    known_ = StructuralLineCandidates();
    known_.AddLengthsFrom(kFeaturePrefix, sizeof kFeaturePrefix - 1);
    lines_.Start();
  }
  void Chunk(const char* bytes, size_t length) override {
    lines_.WriteChunk(bytes, length, spool_);
  }
  bool Line(const char* line, size_t length, char terminator) override {
    if (IsFeatureLine(line, length)) {
      OutputPJLForFeatureLine(features_, line, length);
    } else {
      OutputPJLForScreenLine(line, length);
    }
    return HandlePSLine(lines_, line, length, terminator, argv_, spool_);
  }
  void Block(const char* bytes, size_t length) override {
    block_ = bytes;
    hints_ = FindPatterns(bytes, length, kScreenHintFirst, kScreenHintSecond, hintOffsets_,
                          kHintCapacity);
    candidates_ = hints_ == 0 && !lines_.SeekingCode() ? known_ : LineCandidates();
  }
  bool Plain(const char* line, size_t length) override {
    if (IsFeatureLine(line, length) || ClassifyPSLine(line, length) != PSLineKind::kPlain) {
      return false;
    }
    if (lines_.SeekingCode() && length > 0 && line[0] != '%') return false;
    return !(MayBeScreenLine(line, length) && IsScreenLine(line, length));
  }
  void Span(const char* bytes, size_t length) override {
    KZfwrite(bytes, 1, length, lines_.Target(spool_));
    lines_.CheckHeld(spool_);
  }
  void Finish(bool stopped) { FinishPSLines(lines_, argv_, spool_, stopped); }

 private:
  static constexpr size_t kHintCapacity = 64;

  bool MayBeScreenLine(const char* line, size_t length) const {
    if (hints_ > kHintCapacity) return true;  // too many to list: look at every line
    const uint32_t* end = hintOffsets_ + hints_;
    const uint32_t* next = std::lower_bound(hintOffsets_, end, static_cast<uint32_t>(line - block_));
    return next != end && *next < static_cast<size_t>(line - block_) + length;
  }

  char** argv_;
  FILE* spool_;
  FeatureScanState features_;
  PSLineState lines_;
  LineCandidates known_ = LineCandidates::None();
  const char* block_ = nullptr;
  size_t hints_ = 0;
  uint32_t hintOffsets_[kHintCapacity];
};

bool IsPageEnd(PSLineKind kind) {
  return kind == PSLineKind::kEndPage || kind == PSLineKind::kEndPageAlt ||
         kind == PSLineKind::kShowPage;
}

// Pass 2: the spooled lines to stdout, without the debug copy; only the
// page ends, where a cancel is seen, are more than copied.
class CopyOutSink : public LineSink {
 public:
  CopyOutSink() { candidates_ = StructuralLineCandidates(); }
  void Chunk(const char* bytes, size_t length) override { fwrite(bytes, 1, length, stdout); }
  bool Line(const char* line, size_t length, char terminator) override {
    PSLineKind kind = ClassifyPSLine(line, length);
    if (kind == PSLineKind::kEndPage || kind == PSLineKind::kEndPageAlt) marks_.endsPages = true;
    // A job that does not end its pages in "ep"/"endp" stops before its next page.
    if (marks_.EndsPage(kind) && CancelJob == 1) return false;
    fwrite(line, 1, length, stdout);
    fputc(static_cast<unsigned char>(terminator), stdout);
    return !(IsPageEnd(kind) && CancelJob == 1);
  }
  bool Plain(const char* line, size_t length) override {
    return ClassifyPSLine(line, length) == PSLineKind::kPlain;
  }
  void Span(const char* bytes, size_t length) override { fwrite(bytes, 1, length, stdout); }

 private:
  PageMarks marks_;
};

int OpenInput(int argc, char* argv[]) {
  if (argc != 7) return STDIN_FILENO;
  int fd = open(argv[6], O_RDONLY);
  if (fd < 0) fprintf(stderr, "ERROR: Unable to open print file \"%s\": %s\n", argv[6], strerror(errno));
  return fd;
}

// Reads `fd` to its end holding back the last byte, which is never part of a
// line. Returns false when the scan was stopped; *last is the held byte or -1.
bool SpoolWithLookAhead(int fd, LineScanner& scanner, int* last) {
  char block[kReadBlockSize];
  *last = -1;
  for (;;) {
    ssize_t got = read(fd, block, sizeof block);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fprintf(stderr, "DEBUG: Read error on the print job: %s\n", strerror(errno));
    if (got <= 0) return true;
    if (*last >= 0) {
      char held = static_cast<char>(*last);
      if (!scanner.Feed(&held, 1)) return false;
    }
    if (!scanner.Feed(block, static_cast<size_t>(got) - 1)) return false;
    *last = static_cast<unsigned char>(block[got - 1]);
  }
}

void CopySpoolOut(const char* pending, size_t pendingLength) {
  int fd = open(PPDPJLOutFilePath, O_RDONLY);
  if (fd < 0) return;
  CopyOutSink sink;
  LineScanner scanner(sink);
  // The unfinished last line of pass 1 leads the first line copied.
  bool going = scanner.Feed(pending, pendingLength);
  char block[kReadBlockSize];
  while (going) {
    ssize_t got = read(fd, block, sizeof block);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    going = scanner.Feed(block, static_cast<size_t>(got));
  }
  close(fd);
  remove(PPDPJLOutFilePath);
}

}  // namespace

void OutputPSStreamtoFileandInsertPJLforFeaturePDE(int argc, char* argv[]) {
  int input = OpenInput(argc, argv);
  if (input < 0) return;
  ZeroText(PPDPJLOutFilePath, sizeof PPDPJLOutFilePath);
  int spoolFd = cupsTempFd(PPDPJLOutFilePath, sizeof PPDPJLOutFilePath);
  FILE* spool = spoolFd >= 0 ? fdopen(spoolFd, "wb") : nullptr;
  if (spool == nullptr) {
    fprintf(stderr, "ERROR: Unable to create a temporary file: %s\n", strerror(errno));
    if (spoolFd >= 0) close(spoolFd);
    if (input != STDIN_FILENO) close(input);
    return;
  }

  SpoolSink sink(argv, spool);
  LineScanner scanner(sink);
  int last = -1;
  // On cancel everything stops here: no language switch, no second pass.
  if (!SpoolWithLookAhead(input, scanner, &last)) {
    sink.Finish(true);
    return;
  }
  sink.Finish(false);
  if (last >= 0) KZfputc(last, spool);
  if (last != kEndOfJob) KZfputc(kEndOfJob, spool);
  if (input != STDIN_FILENO) close(input);
  fclose(spool);

  OutputZPJLCommandFromArray(argv, prtFmtTableEnterPS, numFmtTableEnterPS);
  CopySpoolOut(scanner.pending(), scanner.pendingLength());
}

int GetDLOutputMode(char* argv[]) {
  cups_option_t* options = nullptr;
  int count = ParseJobTicket(argv[5], &options);
  const char* value = cupsGetOption("KROutputMode", count, options);
  if (value == nullptr) return 0;
  ZeroText(g_DLOutputMode, sizeof g_DLOutputMode);
  CopyText(g_DLOutputMode, sizeof g_DLOutputMode, value);
  return 1;
}

void outputZPJLCommandFromArray(const char* const* names, const int32_t* values) {
  char line[kFeatureCopySize];
  for (size_t i = 0; names[i][0] != '\0'; ++i) {
    FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@%s=%d\"\n", names[i], values[i]);
    WriteOut(line);
  }
}
