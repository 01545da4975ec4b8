#include "modules/job_comments/job_comments.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "base/fixed_text.h"
#include "test_support.h"

namespace {

const char kPrefix[] = "@PJL COMMENT PRINTJOBINFO ";

// The items of the lines whose item starts with `key` ("ORIENTATION=").
std::vector<std::string> ItemsWithKey(const std::string& output, const std::string& key) {
  std::vector<std::string> items;
  std::istringstream stream(output);
  std::string line;
  while (std::getline(stream, line)) {
    if (line.rfind(kPrefix, 0) != 0) continue;
    std::string item = line.substr(sizeof kPrefix - 1);
    if (item.rfind(key, 0) == 0) items.push_back(item);
  }
  return items;
}

void Set(char* field, const char* text) { CopyText(field, kCommentTextSize, text); }

// Settings of one job as the comments record holds them after reading.
struct Job {
  const char* collate = "";
  int32_t copies = -1;
  const char* sides = "";
  int32_t edge = -1;
  const char* colorMode = "Black";
  const char* numberUp = "";
  const char* staple = "";
  const char* punch = "";
  const char* punchHoles = "";
  const char* signature = "";
  const char* volume = "";
  int32_t orientation = 1;
  int32_t direction = 1;
};

void Fill(const Job& job) {
  CommentResetOptionRecord();
  CommentOptionRecord& r = psoptioncomment;
  Set(r.collate, job.collate);
  r.copies = job.copies;
  Set(r.sides, job.sides);
  r.duplexBindingEdge = job.edge;
  Set(r.colorMode, job.colorMode);
  Set(r.numberUp, job.numberUp);
  Set(r.staple, job.staple);
  Set(r.punch, job.punch);
  Set(r.punchHoles, job.punchHoles);
  Set(r.signature, job.signature);
  Set(r.signatureVolume, job.volume);
  r.orientation = job.orientation;
  r.layoutDirection = job.direction;
}

class CommentLinesTest : public testing::Test {
 protected:
  void SetUp() override { UsePPD("jobinfo-utf8-color.ppd"); }
  static std::string Basic() { return CaptureStdout(OutputZPJLCommandforCommentBasic); }
  static std::string Advanced() { return CaptureStdout(OutputZPJLCommandforCommentAdvanced); }
  void TearDown() override {
    unsetenv("PPD");
    CommentResetOptionRecord();
  }
};

TEST_F(CommentLinesTest, BeginLines) {
  EXPECT_EQ(CaptureStdout(OutputZPJLCommandforCommentBegin),
            InfoLines({"BEGIN", "PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]", "JOBTYPE=PRINT"}));
}

// ---- Basic lines ------------------------------------------------------------------

struct BasicCase {
  const char* name;
  Job job;
  std::vector<std::string> items;
};

Job With(std::function<void(Job&)> change) {
  Job job;
  change(job);
  return job;
}

TEST_F(CommentLinesTest, BasicLines) {
  const std::string gray = "COLORMODE=GRAYSCALE";
  const BasicCase cases[] = {
      {"nothing set", Job(), {gray}},
      {"edge 2 beats one-sided", With([](Job& j) { j.sides = "one-sided"; j.edge = 2; }),
       {"DUPLEXTYPE=DUPLEX", gray}},
      {"edge 3 beats one-sided", With([](Job& j) { j.sides = "one-sided"; j.edge = 3; }),
       {"DUPLEXTYPE=TUMBLE", gray}},
      {"unknown sides", With([](Job& j) { j.sides = "other"; }), {gray}},
      {"printer's choice", With([](Job& j) { j.colorMode = "Auto"; }), {}},
      {"device default", With([](Job& j) { j.colorMode = ""; }), {"COLORMODE=COLOR"}},
      {"no staple", With([](Job& j) { j.staple = "None"; }), {gray, "STAPLE=OFF"}},
      {"saddle is no staple", With([](Job& j) { j.staple = "SaddleStaple"; }),
       {gray, "STAPLE=OFF"}},
      {"no punch", With([](Job& j) { j.punch = "None"; }), {gray, "PUNCH=OFF"}},
      {"no booklet", With([](Job& j) { j.signature = "None"; j.volume = "10Sheets"; }),
       {gray, "BOOKLETTYPE=TYPE[NOBOOKLET]"}},
      {"booklet without volume", With([](Job& j) { j.signature = "LeftSig"; }),
       {gray, "BOOKLETTYPE=TYPE[NOBOOKLET]"}},
      {"one sheet", With([](Job& j) { j.signature = "RightSig"; j.volume = "1Sheet"; }),
       {gray, "BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[1]"}},
  };
  for (const BasicCase& c : cases) {
    SCOPED_TRACE(c.name);
    Fill(c.job);
    EXPECT_EQ(Basic(), InfoLines(c.items));
  }
}

TEST_F(CommentLinesTest, BookletVolumeIsCutAtTheWordInTheRecord) {
  Fill(With([](Job& j) { j.signature = "LeftSig"; j.volume = "12SheetsSheet"; }));
  Basic();
  EXPECT_STREQ(psoptioncomment.signatureVolume, "12");
  for (size_t i = 2; i < kCommentTextSize; ++i) ASSERT_EQ(psoptioncomment.signatureVolume[i], 0);
}

TEST_F(CommentLinesTest, LongTextIsCutToTheLineBuffer) {
  std::string longNup(200, '7');
  Fill(With([&](Job& j) { j.numberUp = longNup.c_str(); j.colorMode = "Color"; }));
  std::string output = Basic();
  std::string nupLine = output.substr(output.find("@PJL COMMENT PRINTJOBINFO NUP="));
  EXPECT_EQ(nupLine.size(), 99u);
  EXPECT_EQ(nupLine, std::string(kPrefix) + "NUP=" + std::string(99 - 30, '7'));
}

// ---- Advanced lines ------------------------------------------------------------------

// Expected orientation item for the orientations 1, 4, 5, 6 and for 2 (never).
struct OrientationCase {
  const char* signature;
  const char* numberUp;
  const char* items[4];  // empty: no orientation line
};

TEST_F(CommentLinesTest, OrientationTable) {
  const char* P = "ORIENTATION=PORTRAIT";
  const char* L = "ORIENTATION=LANDSCAPE";
  const char* RP = "ORIENTATION=ROTATEDPORTRAIT";
  const char* RL = "ORIENTATION=ROTATEDLANDSCAPE";
  const OrientationCase cases[] = {
      // Left-bound booklets.
      {"LeftSig", "", {L, RP, RP, L}},
      {"LeftSigCenterStaple", "1", {L, RP, RP, L}},
      {"LeftSigCenterStaple", "2", {RP, L, L, RP}},
      // Right-bound booklets.
      {"RightSig", "", {RL, P, P, RL}},
      {"RightSigCenterStaple", "2", {P, RL, RL, P}},
      // No booklet, several pages per sheet.
      {"None", "2", {L, P, P, L}},
      {"", "6", {L, P, P, L}},
      {"None", "4", {P, L, L, P}},
      {"", "16", {P, L, L, P}},
      // No booklet, one page per sheet: one to one.
      {"", "", {P, L, RL, RP}},
      {"None", "1", {P, L, RL, RP}},
      // Everything else writes nothing.
      {"LeftSig", "3", {"", "", "", ""}},
      {"None", "5", {"", "", "", ""}},
      {"", "17", {"", "", "", ""}},
      {"Booklet", "", {"", "", "", ""}},
      {"leftsig", "2", {"", "", "", ""}},
  };
  const int32_t orientations[] = {1, 4, 5, 6, 2, 3, 0};
  for (const OrientationCase& c : cases) {
    for (size_t i = 0; i < sizeof orientations / sizeof orientations[0]; ++i) {
      SCOPED_TRACE(std::string(c.signature) + " / " + c.numberUp + " / " +
                   std::to_string(orientations[i]));
      Fill(With([&](Job& j) {
        j.signature = c.signature;
        j.numberUp = c.numberUp;
        j.orientation = orientations[i];
      }));
      std::vector<std::string> expected;
      if (i < 4 && c.items[i][0] != '\0') expected.push_back(c.items[i]);
      EXPECT_EQ(ItemsWithKey(Advanced(), "ORIENTATION="),
                expected);
    }
  }
}

// Each advanced item by the settings it reads; "" for no line of that key.
TEST_F(CommentLinesTest, AdvancedItems) {
  using J = Job&;
  const struct {
    Job job;
    const char* key;
    const char* item;
  } cases[] = {
      // N-up order by layout direction.
      {With([](J j) { j.numberUp = "2"; j.direction = 3; }), "NUPEX=", "NUPEX=LEFTTOUP"},
      {With([](J j) { j.numberUp = "2"; j.direction = 2; }), "NUPEX=", ""},
      {With([](J j) { j.numberUp = "3"; j.direction = 1; }), "NUPEX=", "NUPEX=RIGHTTHENDOWN"},
      {With([](J j) { j.numberUp = "4"; j.direction = 3; }), "NUPEX=", "NUPEX=LEFTTHENDOWN"},
      {With([](J j) { j.numberUp = "9"; j.direction = 5; }), "NUPEX=", "NUPEX=DOWNTHENRIGHT"},
      {With([](J j) { j.numberUp = "4"; j.direction = 4; }), "NUPEX=", ""},
      {With([](J j) { j.numberUp = "1"; }), "NUPEX=", ""},
      // Saddle stitch by signature.
      {With([](J j) { j.signature = "RightSigCenterStaple"; }), "SADDLE", "SADDLESTAPLE=ON"},
      {With([](J j) { j.signature = "LeftSigFold"; }), "SADDLE", "SADDLESTAPLE=OFF"},
      {Job(), "SADDLE", ""},
      // Staple position: a contained word is enough; the table's order
      // decides between two.
      {With([](J j) { j.staple = "LeftDouble"; }), "STAPLEEX=", "STAPLEEX=LEFTDUAL"},
      {With([](J j) { j.staple = "UpperLeftSingle"; }), "STAPLEEX=", "STAPLEEX=TOPLEFT"},
      {With([](J j) { j.staple = "UpperRightSingle"; }), "STAPLEEX=", "STAPLEEX=TOPRIGHT"},
      {With([](J j) { j.staple = "Staple-BottomDouble-Fine"; }), "STAPLEEX=", "STAPLEEX=BOTTOMDUAL"},
      {With([](J j) { j.staple = "TopDoubleLeftDouble"; }), "STAPLEEX=", "STAPLEEX=LEFTDUAL"},
      {With([](J j) { j.staple = "None"; }), "STAPLEEX=", ""},
      {Job(), "STAPLEEX=", ""},
      // Punch: the holes must match exactly, and both parts must be found.
      {With([](J j) { j.punch = "Left"; j.punchHoles = "2Holes"; }), "PUNCHEX=",
       "PUNCHEX=HOLES[TWO]:LOCATION[LEFT]"},
      {With([](J j) { j.punch = "Bottom"; j.punchHoles = "CoilPunch"; }), "PUNCHEX=",
       "PUNCHEX=HOLES[COIL]:LOCATION[BOTTOM]"},
      {With([](J j) { j.punch = "PunchBottomEdge"; j.punchHoles = "2Holes"; }), "PUNCHEX=",
       "PUNCHEX=HOLES[TWO]:LOCATION[BOTTOM]"},
      {With([](J j) { j.punch = "TopLeft"; j.punchHoles = "2Holes"; }), "PUNCHEX=",
       "PUNCHEX=HOLES[TWO]:LOCATION[LEFT]"},
      {With([](J j) { j.punch = "Left"; j.punchHoles = "2holes"; }), "PUNCHEX=", ""},
      {With([](J j) { j.punch = "Left"; }), "PUNCHEX=", ""},
      {With([](J j) { j.punch = "None"; j.punchHoles = "2Holes"; }), "PUNCHEX=", ""},
  };
  for (const auto& c : cases) {
    Fill(c.job);
    std::vector<std::string> expected;
    if (c.item[0] != '\0') expected.push_back(c.item);
    EXPECT_EQ(ItemsWithKey(Advanced(), c.key), expected) << c.item << " / " << c.job.staple;
  }
}

TEST_F(CommentLinesTest, AdvancedLinesInOrder) {
  Fill(With([](Job& j) {
    j.signature = "LeftSigCenterStaple";
    j.numberUp = "4";
    j.orientation = 4;
    j.direction = 5;
    j.staple = "UpperRightSingle";
    j.punch = "Right";
    j.punchHoles = "3Holes";
  }));
  EXPECT_EQ(Advanced(), InfoLines({"ORIENTATION=ROTATEDPORTRAIT", "NUPEX=DOWNTHENRIGHT", "SADDLESTAPLE=ON",
                   "STAPLEEX=TOPRIGHT", "PUNCHEX=HOLES[THREE]:LOCATION[RIGHT]",
                   "MIXEDSIZETYPE=NONE", "CUD=OFF"}));

  // With nothing set (orientation absent reads as 1 after the ticket is read).
  Fill(Job());
  EXPECT_EQ(Advanced(), InfoLines({"ORIENTATION=PORTRAIT", "MIXEDSIZETYPE=NONE", "CUD=OFF"}));
}

// ---- Reading the ticket ----------------------------------------------------------------

struct TicketCase {
  const char* ticket;
  const char* sides;
  const char* collate;
  int32_t orientation;
  int32_t direction;
};

TEST_F(CommentLinesTest, TicketReadingNormalisesTheRecord) {
  const TicketCase cases[] = {
      // Nothing in the ticket: one-sided, no collate, orientation and direction 1.
      {"", "one-sided", "", 1, 1},
      // A binding edge of 0 means one-sided, whatever the sides say.
      {"sides=two-sided-long-edge DuplexBindingEdge..n.=0", "one-sided", "", 1, 1},
      // A booklet signature forces the short edge; "None" is no booklet.
      {"sides=one-sided KRSignature=LeftSig", "two-sided-short-edge", "", 1, 1},
      {"sides=two-sided-long-edge KRSignature=None", "two-sided-long-edge", "", 1, 1},
      // Collate comes from the raw option text; "nocollate" is tested first.
      {"collate=true", "one-sided", "collate", 1, 1},
      {"collate nocollate", "one-sided", "nocollate", 1, 1},
      {"orientation-requested=4 com.apple.print.PrintSettings.PMLayoutDirection..n.=6",
       "one-sided", "", 4, 6},
      {"orientation-requested=0", "one-sided", "", 0, 1},
  };
  for (const TicketCase& c : cases) {
    SCOPED_TRACE(c.ticket);
    CommentResetOptionRecord();
    FilterArguments job(c.ticket);
    CommentGetTicketFromPDE(job.argv);
    EXPECT_STREQ(psoptioncomment.sides, c.sides);
    EXPECT_STREQ(psoptioncomment.collate, c.collate);
    EXPECT_EQ(psoptioncomment.orientation, c.orientation);
    EXPECT_EQ(psoptioncomment.layoutDirection, c.direction);
  }
}

}  // namespace
