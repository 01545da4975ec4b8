#include "modules/special_pages/special_pages.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/fixed_text.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "engine/table_rows.h"
#include "platform/job_ticket.h"

SpecialPageOption psOptionSpecialPage;

namespace {

constexpr TicketRow kTicketRows[] = {
    Row(JTZ_KEY("ZPIFCoverCountTicket"), psOptionSpecialPage.coverCount, TicketRead::Integer),
    Row(JTZ_KEY("ZPIFInsertionCountTicket"), psOptionSpecialPage.insertionCount,
        TicketRead::Integer),
    Row(JTZ_KEY("ZPIFExceptionCountTicket"), psOptionSpecialPage.exceptionCount,
        TicketRead::Integer),
};
constexpr auto kBindings = MakeBindings(kTicketRows, false);

}  // namespace

const TicketBinding* const SpecialPageTicketData = kBindings.data();
const int32_t SpecialPageTicketDataNum = static_cast<int32_t>(kBindings.size());

const char kSPViewTicketKey[] = JTZ_KEY("ZPIFCommandTicket_");
const char kSPZPCoverValueKey[] = JTZ_KEY("ZPIFCoverValueTicket_");
const char kSPZPInsertionValueKey[] = JTZ_KEY("ZPIFInsertionValueTicket_");
const char kSPZPExceptionValueKey[] = JTZ_KEY("ZPIFExceptionValueTicket_");

const char CustomPapertyeSelectNumber[] = "33";

const char* const CoverTypeZPJLComm[] = {
    "print-none", "PRINTNONE", "print-front", "PRINTFRONT",
    "print-back", "PRINTBACK", "print-both",  "PRINTBOTH",
};
const int32_t CoverTypeZPJLCommValueCount = 8;

const char* const MediaColorZPJLComm[] = {
    "white",    "WHITE",   "blue",     "BLUE",    "buff",     "BUFF",    "goldenrod", "GOLDENROD",
    "gray",     "GRAY",    "green",    "GREEN",   "ivory",    "IVORY",   "orange",    "ORANGE",
    "pink",     "PINK",    "red",      "RED",     "yellow",   "YELLOW",  "no-color",  "CLEAR",
    "custom_1", "CUSTOM1", "custom_2", "CUSTOM2", "custom_3", "CUSTOM3", "custom_4",  "CUSTOM4",
    "custom_5", "CUSTOM5", "other",    "OTHER",
};
const int32_t MediaColorZPJLCommValueCount = 36;

const char* const SidesZPJLComm[] = {
    "one-sided", "SIMPLEX", "two-sided-long-edge", "DUPLEX", "two-sided-short-edge", "TUMBLE",
};
const int32_t SidesZPJLCommValueCount = 6;

namespace {

constexpr size_t kSPKeySize = 256;
constexpr size_t kSPRecordSize = 256;
constexpr size_t kSPLineSize = 256;

// Kind field of a view record.
const char kKindCover[] = "0";
const char kKindInsertion[] = "1";
const char kKindException[] = "2";

// Where the paper-size selection number starts in a view record of each kind.
constexpr int32_t kCoverSizeNumberPosition = 6;
constexpr int32_t kInsertionSizeNumberPosition = 8;
constexpr int32_t kExceptionSizeNumberPosition = 4;

struct Field {
  char text[kSPFieldSize];
};

// One ticket record "<prefix><index>" that is present in the ticket.
struct Record {
  int32_t index;
  char text[kSPRecordSize];
};

void WriteAttribute(const char* attribute, const char* value, FILE* stream) {
  char line[kSPLineSize];
  char safe[kSPLineSize];
  FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@%s=%s\"\n", attribute,
             CleanPJLCopy(safe, sizeof safe, value));
  KZfputs(line, stream);
}

// Reads `count` consecutive fields of `record` starting at `position`,
// stepping by getOneValue's results; returns the position after them.
// The step is 0 after the last field, so a short record repeats its last
// field rather than reading past its end.
int32_t ReadFields(const char* record, int32_t position, Field* fields, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    int step = getOneValue(record + position, fields[i].text, sizeof fields[i].text);
    if (step > 0) position += step;
  }
  return position;
}

// The index written as `digits`, when it is below `limit`. Other spellings
// ("01") drop out later: the key is formed again with "%d" to be read.
bool ParseRecordIndex(const char* digits, int32_t limit, int32_t* index) {
  size_t length = std::strlen(digits);
  if (length == 0 || length > 10) return false;
  int64_t value = 0;
  for (size_t i = 0; i < length; ++i) {
    if (digits[i] < '0' || digits[i] > '9') return false;
    value = value * 10 + (digits[i] - '0');
  }
  if (value >= limit) return false;
  *index = static_cast<int32_t>(value);
  return true;
}

// The records "<prefix>0" .. "<prefix><limit - 1>" present in the ticket, in
// index order. Counts come from the ticket and may be huge, so the indices
// are taken from the keys actually present rather than probed one by one:
// the result is the same, and the work is bounded by the ticket's size.
// Ticket keys match without regard to case, as the option lookup does.
std::vector<Record> ReadPresentRecords(const char* prefix, int32_t limit, int optionCount,
                                       cups_option_t* options) {
  std::vector<int32_t> indices;
  size_t prefixLength = std::strlen(prefix);
  for (int i = 0; i < optionCount; ++i) {
    const char* name = options[i].name;
    if (name == nullptr || strncasecmp(name, prefix, prefixLength) != 0) continue;
    int32_t index = 0;
    if (ParseRecordIndex(name + prefixLength, limit, &index)) indices.push_back(index);
  }
  std::sort(indices.begin(), indices.end());
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());

  std::vector<Record> records;
  for (int32_t index : indices) {
    char key[kSPKeySize];
    FormatText(key, sizeof key, "%s%d", prefix, index);
    Record record;
    record.index = index;
    if (GetTicketStringConvertedToPrtLang(key, optionCount, options, record.text,
                                          sizeof record.text) == 1) {
      records.push_back(record);
    }
  }
  return records;
}

// The paper-size selection numbers of the view records of one kind, in
// index order: the k-th entry belongs to the k-th value record of that kind.
std::vector<Field> SizeNumbersOfKind(const std::vector<Record>& views, const char* kind,
                                     int32_t position) {
  std::vector<Field> numbers;
  for (const Record& view : views) {
    Field viewKind;
    getOneValue(view.text, viewKind.text, sizeof viewKind.text);
    if (std::strcmp(viewKind.text, kind) != 0) continue;
    Field number;
    ZeroText(number.text, sizeof number.text);
    if (static_cast<size_t>(position) <= std::strlen(view.text)) {
      getOneValue(view.text + position, number.text, sizeof number.text);
    }
    numbers.push_back(number);
  }
  return numbers;
}

const char* SizeNumberFor(const std::vector<Field>& numbers, int32_t index) {
  if (index < 0 || static_cast<size_t>(index) >= numbers.size()) return "";
  return numbers[static_cast<size_t>(index)].text;
}

// @EMCP, @EMCW, @EMCH, @EMCQ and, when the colour maps, @EMCC.
void OutputMediaLines(const char* sizeNumber, const char* width, const char* height,
                      const char* mediaType, const char* colourName, char* colour, FILE* stream) {
  bool custom = std::strcmp(sizeNumber, CustomPapertyeSelectNumber) == 0;
  WriteAttribute("EMCP", custom ? "CUSTOM" : "FORMALSIZE", stream);
  WriteAttribute("EMCW", width, stream);
  WriteAttribute("EMCH", height, stream);
  WriteAttribute("EMCQ", mediaType, stream);
  if (getSpecialPageZPJLValue(colourName, MediaColorZPJLComm, MediaColorZPJLCommValueCount, colour,
                              kSPFieldSize) == 0) {
    WriteAttribute("EMCC", colour, stream);
  }
}

void OutputCover(const Record& record, const char* sizeNumber, int32_t coverCount, FILE* stream) {
  Field fields[3];  // front or back, media source, cover type
  int32_t position = ReadFields(record.text, 0, fields, 3);
  const char* side = fields[0].text;
  const char* mediaSource = fields[1].text;
  Field coverType;
  bool typeMaps =
      getSpecialPageZPJLValue(fields[2].text, CoverTypeZPJLComm, CoverTypeZPJLCommValueCount,
                              coverType.text, sizeof coverType.text) == 0;
  Field colour;
  if (std::strcmp(side, "0") == 0) {
    if (typeMaps) WriteAttribute("EFCV", coverType.text, stream);
    OutputSPMediaSizeAndColor(mediaSource, position, record.text, sizeNumber, colour.text, stream);
    if (coverCount == 1) WriteAttribute("EBCV", "NONE", stream);
  } else if (std::strcmp(side, "1") == 0) {
    if (coverCount == 1) WriteAttribute("EFCV", "NONE", stream);
    if (typeMaps) WriteAttribute("EBCV", coverType.text, stream);
    OutputSPMediaSizeAndColor(mediaSource, position, record.text, sizeNumber, colour.text, stream);
  }
}

void OutputInsertion(const Record& record, const char* sizeNumber, FILE* stream) {
  // media source, position, count; then colour, width, height, media type
  Field fields[7];
  int32_t position = ReadFields(record.text, 0, fields, 3);
  const char* mediaSource = fields[0].text;
  WriteAttribute("EIST", fields[1].text, stream);
  if (std::strcmp(mediaSource, "0") == 0) {
    WriteAttribute("EMCT", "TRAYT1", stream);
  } else if (std::strcmp(mediaSource, "1") == 0) {
    ReadFields(record.text, position, fields + 3, 4);
    Field colour;
    OutputMediaLines(sizeNumber, fields[4].text, fields[5].text, fields[6].text, fields[3].text,
                     colour.text, stream);
  }
  WriteAttribute("EISC", fields[2].text, stream);
}

void OutputException(const Record& record, const char* sizeNumber, FILE* stream) {
  // three unused fields, first page, last page, sides, media type, colour,
  // width, height
  Field fields[10];
  ReadFields(record.text, 0, fields, 10);
  WriteAttribute("EOVS", fields[3].text, stream);
  Field colour;
  OutputMediaLines(sizeNumber, fields[8].text, fields[9].text, fields[6].text, fields[7].text,
                   colour.text, stream);
  Field sides;
  if (getSpecialPageZPJLValue(fields[5].text, SidesZPJLComm, SidesZPJLCommValueCount, sides.text,
                              sizeof sides.text) == 0) {
    WriteAttribute("EMDP", sides.text, stream);
  }
  WriteAttribute("EOVE", fields[4].text, stream);
}

}  // namespace

int getOneValue(const char* text, char* out, size_t outSize) {
  if (text == nullptr || out == nullptr) return -1;
  ZeroText(out, outSize);
  const char* comma = std::strchr(text, ',');
  if (comma == nullptr) {
    CopyText(out, outSize, text);
    return 0;
  }
  size_t length = static_cast<size_t>(comma - text);
  CopyTextPrefix(out, outSize, text, length);
  return static_cast<int>(length) + 1;
}

int getSpecialPageZPJLValue(const char* name, const char* const* map, int32_t count, char* out,
                            size_t outSize) {
  if (name == nullptr || map == nullptr || out == nullptr || count < 1) return -1;
  for (int32_t i = 0; i + 1 < count; i += 2) {
    if (std::strcmp(name, map[i]) == 0) {
      CopyText(out, outSize, map[i + 1]);
      return 0;
    }
  }
  return -1;
}

void OutputSPMediaSizeAndColor(const char* mediaSource, int32_t position, const char* record,
                               const char* sizeNumber, char* colour, FILE* stream) {
  ZeroText(colour, kSPFieldSize);
  if (std::strcmp(mediaSource, "0") == 0) {
    WriteAttribute("EMCT", "TRAYT1", stream);
  } else if (std::strcmp(mediaSource, "1") == 0) {
    if (position < 0 || static_cast<size_t>(position) > std::strlen(record)) position = 0;
    Field fields[4];  // media type, colour, width, height
    ReadFields(record, position, fields, 4);
    OutputMediaLines(sizeNumber, fields[2].text, fields[3].text, fields[0].text, fields[1].text,
                     colour, stream);
  }
}

void SpecialPageInializeDescriptionTable() {
  psOptionSpecialPage.coverCount = 0;
  psOptionSpecialPage.insertionCount = 0;
  psOptionSpecialPage.exceptionCount = 0;
}

int SpecialPageGetTicketFromPDE(char* argv[]) {
  return GetTicketFromArray(argv, SpecialPageTicketData, SpecialPageTicketDataNum);
}

void OutputZPJLCommandForSpecialPage(char* argv[], FILE* stream) {
  int32_t covers = std::max(psOptionSpecialPage.coverCount, 0);
  int32_t insertions = std::max(psOptionSpecialPage.insertionCount, 0);
  int32_t exceptions = std::max(psOptionSpecialPage.exceptionCount, 0);
  int64_t total = static_cast<int64_t>(covers) + insertions + exceptions;
  if (total == 0 || total > INT32_MAX) return;

  cups_option_t* options = nullptr;
  int optionCount = ParseJobTicket(argv[5], &options);

  std::vector<Record> views =
      ReadPresentRecords(kSPViewTicketKey, static_cast<int32_t>(total), optionCount, options);

  std::vector<Field> coverSizes = SizeNumbersOfKind(views, kKindCover, kCoverSizeNumberPosition);
  for (const Record& record :
       ReadPresentRecords(kSPZPCoverValueKey, covers, optionCount, options)) {
    OutputCover(record, SizeNumberFor(coverSizes, record.index), covers, stream);
  }

  std::vector<Field> insertionSizes =
      SizeNumbersOfKind(views, kKindInsertion, kInsertionSizeNumberPosition);
  for (const Record& record :
       ReadPresentRecords(kSPZPInsertionValueKey, insertions, optionCount, options)) {
    OutputInsertion(record, SizeNumberFor(insertionSizes, record.index), stream);
  }

  std::vector<Field> exceptionSizes =
      SizeNumbersOfKind(views, kKindException, kExceptionSizeNumberPosition);
  for (const Record& record :
       ReadPresentRecords(kSPZPExceptionValueKey, exceptions, optionCount, options)) {
    OutputException(record, SizeNumberFor(exceptionSizes, record.index), stream);
  }
}
