// What the inspector knows about header lines: the rows it takes from the
// filter's tables, the names written by code, and the plain words for both.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "inspect/line_catalog.h"

namespace {

const LineCatalog& Catalog() { return LineCatalog::Get(); }

// Every name a table row or a code-written line carries has plain words and
// a group; a row added to a filter table without words fails here.
TEST(InspectCatalog, EveryKnownNameHasWordsAndAGroup) {
  for (const LineTemplate& row : Catalog().templates()) {
    std::string text = row.bytes;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    const PJLLine line = ParsePJLLine(text);
    EXPECT_NE(LineCatalog::Words(line.kind, line.name), nullptr) << row.origin << ": " << line.name;
    EXPECT_NE(row.group, LineGroup::kUnknown) << row.origin;
    EXPECT_LE(std::count(row.bytes.begin(), row.bytes.end(), kValueMark), 1) << row.origin;
  }
  for (const LineTemplate& row : Catalog().insertionLines()) {
    std::string text = row.bytes;
    text.pop_back();
    const PJLLine line = ParsePJLLine(text);
    EXPECT_NE(LineCatalog::Words(line.kind, line.name), nullptr) << row.origin << ": " << line.name;
  }
  for (const LineCatalog::NamedLine& named : LineCatalog::NamesWrittenByCode()) {
    EXPECT_NE(LineCatalog::Words(named.kind, named.name), nullptr) << named.name;
  }
}

// The rows come from the filter's tables: each table attribute appears, in
// its group, with the line end its rows have.
TEST(InspectCatalog, RowsOfEveryTableAreThere) {
  const struct {
    std::string bytes;
    LineGroup group;
    bool sealed;
  } kRows[] = {
      {"@PJL SET HOLD=STORE\n", LineGroup::kPrintType, false},
      {"@PJL SET BOXNUMBER=\x01\r\n", LineGroup::kPrintType, false},
      {"@PJL SET HOLDENCRYPTKEY=\"\x01\"\r\n", LineGroup::kPrintType, true},
      {"@PJL SET BOXENCRYPTKEY=\"\x01\"\r\n", LineGroup::kPrintType, true},
      {"@PJL SET USERNAME=\"\x01\"\r\n", LineGroup::kPrintType, false},
      {"@PJL SET JOBATTR=\"@PRTM=\x01\"\r\n", LineGroup::kPrintType, false},
      {"@PJL SET JOBATTR=\"@JOAU=\x01\"\r\n", LineGroup::kAccounting, false},
      {"@PJL SET JOBATTR=\"@JOAU=UnknownUser\"\n", LineGroup::kAccounting, false},
      {"@PJL SET JOBATTR=\"@JOEP=\x01\"\r\n", LineGroup::kAccounting, true},
      {"@PJL SET JOBATTR=\"@JOEP=\"\n", LineGroup::kAccounting, false},
      {"@PJL SET JOBATTR=\"@ACEP=\x01\"\r\n", LineGroup::kAccounting, true},
      {"@PJL SET JOBATTR=\"@CNAM=\x01\"\n", LineGroup::kAccounting, false},
      {"@PJL SET JOBATTR=\"@TABS=\x01\"\n", LineGroup::kFinishing, false},
      {"@PJL SET JOBOFFSET=PAGES\n", LineGroup::kFinishing, false},
      {"@PJL SET JOBATTR=\"@FACE=DOWN_REVERSE\"\n", LineGroup::kFinishing, false},
  };
  for (const auto& expected : kRows) {
    bool found = false;
    for (const LineTemplate& row : Catalog().templates()) {
      if (row.bytes != expected.bytes) continue;
      found = true;
      EXPECT_EQ(row.group, expected.group) << row.origin;
      EXPECT_EQ(row.sealed, expected.sealed) << row.origin;
    }
    EXPECT_TRUE(found) << expected.bytes;
  }
}

TEST(InspectCatalog, EnvelopeComesFromTheFrameTables) {
  const EnvelopeBytes& env = Catalog().envelope();
  EXPECT_EQ(env.uel, "\x1b%-12345X");
  EXPECT_EQ(env.jobMode, "@PJL JOB MODE=PRINTER\r\n");
  EXPECT_EQ(env.enterLanguage, "@PJL ENTER LANGUAGE=POSTSCRIPT\n");
  EXPECT_EQ(env.trailer, "\x1b%-12345X@PJL EOJ\n");
}

TEST(InspectCatalog, ParsesTheFormsOfPJLLines) {
  const struct {
    const char* text;
    LineKind kind;
    const char* name;
    const char* value;
    bool quoted;
    bool wellFormed;
  } kCases[] = {
      {"@PJL SET JOBATTR=\"@JOAU=bob\"", LineKind::kJobAttr, "@JOAU", "bob", true, true},
      {"@PJL SET JOBATTR=\"@JOEP=\"", LineKind::kJobAttr, "@JOEP", "", true, true},
      {"@PJL SET JOBATTR=\"@ACNA=a=b\"", LineKind::kJobAttr, "@ACNA", "a=b", true, true},
      {"@PJL SET JOBATTR=@JOAU=bob", LineKind::kJobAttr, "@JOAU", "bob", false, false},
      {"@PJL SET JOBATTR=\"@JOAUX=bob\"", LineKind::kJobAttr, "@JOAUX", "bob", true, false},
      {"@PJL SET USERNAME=\"alice\"", LineKind::kSet, "USERNAME", "alice", true, true},
      {"@PJL SET BOXNUMBER=12", LineKind::kSet, "BOXNUMBER", "12", false, true},
      {"@PJL SET USERNAME=\"alice", LineKind::kSet, "USERNAME", "alice", false, false},
      {"@PJL SET JOBATTR=\"@JOEP=abc", LineKind::kJobAttr, "@JOEP", "abc", false, false},
      {"@PJL SET HOLD", LineKind::kSet, "HOLD", "", false, false},
      {"@PJL COMMENT PRINTJOBINFO NUP=4", LineKind::kComment, "NUP", "4", false, true},
      {"@PJL COMMENT PRINTJOBINFO BEGIN", LineKind::kComment, "BEGIN", "", false, true},
      {"@PJL JOB MODE=PRINTER", LineKind::kCommand, "JOB MODE", "PRINTER", false, true},
      {"@PJL EOJ", LineKind::kCommand, "EOJ", "", false, true},
      {"%!PS-Adobe-3.0", LineKind::kOther, "", "", false, false},
  };
  for (const auto& c : kCases) {
    const PJLLine line = ParsePJLLine(c.text);
    EXPECT_EQ(line.kind, c.kind) << c.text;
    EXPECT_EQ(line.name, c.name) << c.text;
    EXPECT_EQ(line.value, c.value) << c.text;
    EXPECT_EQ(line.quoted, c.quoted) << c.text;
    EXPECT_EQ(line.wellFormed, c.wellFormed) << c.text;
  }
}

TEST(InspectCatalog, TemplatesNeedTheirTextAroundAValue) {
  const struct {
    const char* pattern;
    const char* line;
    bool matches;
    const char* value;
  } kCases[] = {
      {"@PJL SET HOLD=STORE\n", "@PJL SET HOLD=STORE\n", true, ""},
      {"@PJL SET HOLD=STORE\n", "@PJL SET HOLD=STORE\r\n", false, ""},
      {"A=\x01\"\r\n", "A=bob\"\r\n", true, "bob"},
      {"A=\x01\"\r\n", "A=\"\r\n", false, ""},  // the filter never writes an empty value here
      {"A=\x01\"\r\n", "A=bob\"\n", false, ""},
      {"A=\x01\"\r\n", "B=bob\"\r\n", false, ""},
      {"A=\x01\"\n", "A=x\ny\"\n", false, ""},
      {"A=\x01\x01\n", "A=xy\n", false, ""},
  };
  for (const auto& c : kCases) {
    std::string value = "unset";
    EXPECT_EQ(MatchTemplate(c.pattern, c.line, &value), c.matches) << c.line;
    if (c.matches) {
      EXPECT_EQ(value, c.value) << c.line;
    }
  }
}

TEST(InspectCatalog, ClassifiesHeaderLines) {
  const struct {
    const char* bytes;
    LineGroup group;
    bool exact;
    bool sealed;
    const char* words;
  } kCases[] = {
      {"@PJL SET HOLD=STORE\n", LineGroup::kPrintType, true, false, "hold the job"},
      {"@PJL SET HOLD=STORE\r\n", LineGroup::kPrintType, false, false, "hold the job"},
      {"@PJL SET HOLDENCRYPTKEY=\"QUJD\"\r\n", LineGroup::kPrintType, true, true,
       "secure print password"},
      {"@PJL SET JOBATTR=\"@JOAU=bob\"\r\n", LineGroup::kAccounting, true, false, "job owner"},
      {"@PJL SET JOBATTR=\"@JOAU=bob\"\n", LineGroup::kAccounting, false, false, "job owner"},
      {"@PJL SET JOBATTR=\"@JOEP=\"\r\n", LineGroup::kAccounting, true, false,
       "job owner password"},
      {"@PJL SET JOBATTR=\"@TRMR=0\"\n", LineGroup::kFinishing, true, false, "trimmer cut (mm)"},
      {"@PJL SET JOBATTR=\"@PBRE=LEFT\"\n", LineGroup::kPerfectBinding, true, false,
       "binding edge"},
      {"@PJL SET JOBATTR=\"@PBRE=LEFT\"\r\n", LineGroup::kPerfectBinding, false, false,
       "binding edge"},
      {"@PJL SET JOBATTR=\"@DIND=PORTRAIT\"\n", LineGroup::kBooklet, true, false,
       "booklet direction"},
      {"@PJL SET REDUCTIONRATE=0\n", LineGroup::kDeviceSettings, true, false,
       "toner reduction rate (%)"},
      {"@PJL SET JOBATTR=\"@EFCV=PRINTFRONT\"\n", LineGroup::kSpecialPages, true, false,
       "front cover"},
      {"@PJL COMMENT PRINTJOBINFO NUP=1\n", LineGroup::kJobInformation, true, false,
       "pages per sheet"},
      {"@PJL JOB MODE=PRINTER\r\n", LineGroup::kEnvelope, true, false, "job mode"},
      {"@PJL SET JOBATTR=\"@ZZZZ=1\"\n", LineGroup::kUnknown, false, false, nullptr},
      // Only the insertion mode writes trapping.
      {"@PJL SET JOBATTR=\"@TRAP=ON\"\n", LineGroup::kUnknown, false, false, "trapping"},
  };
  for (const auto& c : kCases) {
    const LineClass cls = Catalog().ClassifyHeaderLine(c.bytes);
    EXPECT_EQ(cls.group, c.group) << c.bytes;
    EXPECT_EQ(cls.exactRow, c.exact) << c.bytes;
    EXPECT_EQ(cls.sealed, c.sealed) << c.bytes;
    EXPECT_STREQ(cls.words, c.words) << c.bytes;
  }
}

TEST(InspectCatalog, InsertionLinesNameTheFeatureTheyCameFrom) {
  const struct {
    const char* bytes;
    bool known;
    const char* source;
    bool onlyInsertion;
  } kCases[] = {
      {"@PJL SET JOBATTR=\"@TRAP=ON\"\n", true, "*KRSetTrapMode True", true},
      {"@PJL SET JOBATTR=\"@AJKH=6\"\n", true, "*KRColorDensityBlackHigh +3", true},
      {"@PJL SET JOBATTR=\"@RGBG=22\"\n", true,
       "*KRRGBBCorrection Dark, or default: the PPD has no KRRGBBCorrection", true},
      {"@PJL SET RESOLUTION=1200\n", true, "*KROutputMode 1200x1200", true},
      {"@PJL SET JOBATTR=\"@TTRC=64\"\n", true, "screen and tone-curve settings in the PostScript",
       true},
      // The header's toner saver writes the same line.
      {"@PJL SET ECONOMODE=OFF\n", true,
       "*KRTonerSaver False, or default: the PPD has no KRTonerSaver", false},
      {"@PJL SET JOBATTR=\"@PSBR=9\"\n", false, "", false},
      {"@PJL SET JOBATTR=\"@TRAP=ON\"\r\n", false, "", false},
  };
  for (const auto& c : kCases) {
    const LineClass cls = Catalog().ClassifyInsertionLine(c.bytes);
    EXPECT_EQ(cls.group == LineGroup::kInsertion, c.known) << c.bytes;
    EXPECT_EQ(cls.source, c.source) << c.bytes;
    EXPECT_EQ(Catalog().OnlyInInsertionMode(c.bytes), c.onlyInsertion) << c.bytes;
  }
}

// Printer words read back into the names the dialog and the PPD use, from
// the modules' own maps.
TEST(InspectCatalog, ValueWordsComeFromTheModulesMaps) {
  const struct {
    const char* name;
    const char* value;
    const char* words;
  } kCases[] = {
      {"HOLD", "PROOF", "sample print: one set now, the rest held"},
      {"@PBCQ", "COATEDPAPER", "PPD choice CoatingPaper1"},
      {"@PBCT", "INTRAY6", "PPD choice 6thTrayOverSized or HCF1"},
      {"@PBCP", "LEDGER", "PPD choice Tabloid"},
      {"@EFCV", "PRINTBOTH", "dialog value print-both"},
      {"@EMCC", "CLEAR", "dialog value no-color"},
      {"@EMDP", "TUMBLE", "dialog value two-sided-short-edge"},
      {"@EMDP", "SIDEWAYS", ""},
      {"@JOAU", "bob", ""},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Catalog().ValueWords(c.name, c.value), c.words) << c.name << "=" << c.value;
  }
}

}  // namespace
