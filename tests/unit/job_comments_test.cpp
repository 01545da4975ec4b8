#include "modules/job_comments/job_comments.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "frame/fixed_text.h"

namespace {

const char kPrefix[] = "@PJL COMMENT PRINTJOBINFO ";

std::string FixturePPD(const char* name) {
  return std::string(ZPJL_FIXTURES) + "/ppd/" + name;
}

void UsePPD(const char* name) { setenv("PPD", FixturePPD(name).c_str(), 1); }

std::string Capture(const std::function<void()>& write) {
  testing::internal::CaptureStdout();
  write();
  return testing::internal::GetCapturedStdout();
}

// The comment lines for the given items, in order.
std::string Lines(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text += kPrefix + item + "\n";
  return text;
}

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
  void TearDown() override {
    unsetenv("PPD");
    CommentResetOptionRecord();
  }
};

TEST_F(CommentLinesTest, BeginLines) {
  EXPECT_EQ(Capture(OutputZPJLCommandforCommentBegin),
            Lines({"BEGIN", "PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]", "JOBTYPE=PRINT"}));
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
      {"collated copies", With([](Job& j) { j.collate = "collate"; j.copies = 3; }),
       {"JOBCOPIES=3", "PAGECOPIES=1", gray}},
      {"uncollated copies", With([](Job& j) { j.collate = "nocollate"; j.copies = 3; }),
       {"PAGECOPIES=3", "JOBCOPIES=1", gray}},
      {"copies absent", With([](Job& j) { j.collate = "collate"; }),
       {"JOBCOPIES=-1", "PAGECOPIES=1", gray}},
      {"long edge", With([](Job& j) { j.sides = "two-sided-long-edge"; }),
       {"DUPLEXTYPE=DUPLEX", gray}},
      {"edge 2 beats one-sided", With([](Job& j) { j.sides = "one-sided"; j.edge = 2; }),
       {"DUPLEXTYPE=DUPLEX", gray}},
      {"short edge", With([](Job& j) { j.sides = "two-sided-short-edge"; }),
       {"DUPLEXTYPE=TUMBLE", gray}},
      {"edge 3 beats one-sided", With([](Job& j) { j.sides = "one-sided"; j.edge = 3; }),
       {"DUPLEXTYPE=TUMBLE", gray}},
      {"one-sided", With([](Job& j) { j.sides = "one-sided"; }), {"DUPLEXTYPE=SIMPLEX", gray}},
      {"edge 1", With([](Job& j) { j.sides = "other"; j.edge = 1; }),
       {"DUPLEXTYPE=SIMPLEX", gray}},
      {"unknown sides", With([](Job& j) { j.sides = "other"; }), {gray}},
      {"colour", With([](Job& j) { j.colorMode = "Color"; }), {"COLORMODE=COLOR"}},
      {"printer's choice", With([](Job& j) { j.colorMode = "Auto"; }), {}},
      {"device default", With([](Job& j) { j.colorMode = ""; }), {"COLORMODE=COLOR"}},
      {"n-up", With([](Job& j) { j.numberUp = "4"; }), {gray, "NUP=4"}},
      {"no staple", With([](Job& j) { j.staple = "None"; }), {gray, "STAPLE=OFF"}},
      {"saddle is no staple", With([](Job& j) { j.staple = "SaddleStaple"; }),
       {gray, "STAPLE=OFF"}},
      {"staple", With([](Job& j) { j.staple = "UpperLeftSingle"; }), {gray, "STAPLE=ON"}},
      {"no punch", With([](Job& j) { j.punch = "None"; }), {gray, "PUNCH=OFF"}},
      {"punch", With([](Job& j) { j.punch = "Left"; }), {gray, "PUNCH=ON"}},
      {"no booklet", With([](Job& j) { j.signature = "None"; j.volume = "10Sheets"; }),
       {gray, "BOOKLETTYPE=TYPE[NOBOOKLET]"}},
      {"booklet without volume", With([](Job& j) { j.signature = "LeftSig"; }),
       {gray, "BOOKLETTYPE=TYPE[NOBOOKLET]"}},
      {"undivided booklet", With([](Job& j) { j.signature = "LeftSig"; j.volume = "None"; }),
       {gray, "BOOKLETTYPE=TYPE[NONEDIVIDE]"}},
      {"divided booklet", With([](Job& j) { j.signature = "RightSig"; j.volume = "10Sheets"; }),
       {gray, "BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[10]"}},
      {"one sheet", With([](Job& j) { j.signature = "RightSig"; j.volume = "1Sheet"; }),
       {gray, "BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[1]"}},
      {"everything",
       With([](Job& j) {
         j.collate = "collate";
         j.copies = 2;
         j.sides = "two-sided-short-edge";
         j.colorMode = "Color";
         j.numberUp = "2";
         j.staple = "LeftDouble";
         j.punch = "Left";
         j.signature = "LeftSigCenterStaple";
         j.volume = "5Sheets";
       }),
       {"JOBCOPIES=2", "PAGECOPIES=1", "DUPLEXTYPE=TUMBLE", "COLORMODE=COLOR", "NUP=2",
        "STAPLE=ON", "PUNCH=ON", "BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[5]"}},
  };
  for (const BasicCase& c : cases) {
    SCOPED_TRACE(c.name);
    Fill(c.job);
    EXPECT_EQ(Capture(OutputZPJLCommandforCommentBasic), Lines(c.items));
  }
}

TEST_F(CommentLinesTest, BookletVolumeIsCutAtTheWordInTheRecord) {
  Fill(With([](Job& j) { j.signature = "LeftSig"; j.volume = "12SheetsSheet"; }));
  Capture(OutputZPJLCommandforCommentBasic);
  EXPECT_STREQ(psoptioncomment.signatureVolume, "12");
  for (size_t i = 2; i < kCommentTextSize; ++i) ASSERT_EQ(psoptioncomment.signatureVolume[i], 0);
}

TEST_F(CommentLinesTest, LongTextIsCutToTheLineBuffer) {
  std::string longNup(200, '7');
  Fill(With([&](Job& j) { j.numberUp = longNup.c_str(); j.colorMode = "Color"; }));
  std::string output = Capture(OutputZPJLCommandforCommentBasic);
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
      {"LeftSigFold", "16", {L, RP, RP, L}},
      {"LeftSig", "9", {L, RP, RP, L}},
      {"LeftSigCenterStaple", "2", {RP, L, L, RP}},
      {"LeftSigFold", "6", {RP, L, L, RP}},
      // Right-bound booklets.
      {"RightSig", "", {RL, P, P, RL}},
      {"RightSigFold", "4", {RL, P, P, RL}},
      {"RightSigCenterStaple", "2", {P, RL, RL, P}},
      {"RightSig", "6", {P, RL, RL, P}},
      // No booklet, several pages per sheet.
      {"None", "2", {L, P, P, L}},
      {"", "6", {L, P, P, L}},
      {"None", "4", {P, L, L, P}},
      {"", "9", {P, L, L, P}},
      {"", "16", {P, L, L, P}},
      // No booklet, one page per sheet: one to one.
      {"", "", {P, L, RL, RP}},
      {"None", "1", {P, L, RL, RP}},
      // Everything else writes nothing.
      {"LeftSig", "3", {"", "", "", ""}},
      {"RightSig", "8", {"", "", "", ""}},
      {"None", "5", {"", "", "", ""}},
      {"", "17", {"", "", "", ""}},
      {"", "-4", {"", "", "", ""}},
      {"", "0", {"", "", "", ""}},
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
      EXPECT_EQ(ItemsWithKey(Capture(OutputZPJLCommandforCommentAdvanced), "ORIENTATION="),
                expected);
    }
  }
}

struct NupOrderCase {
  const char* numberUp;
  int32_t direction;
  const char* item;
};

TEST_F(CommentLinesTest, NupOrder) {
  const NupOrderCase cases[] = {
      {"2", 1, "NUPEX=RIGHTTODOWN"},     {"2", 5, "NUPEX=RIGHTTODOWN"},
      {"2", 3, "NUPEX=LEFTTOUP"},        {"2", 6, "NUPEX=LEFTTOUP"},
      {"2", 2, ""},                      {"3", 1, "NUPEX=RIGHTTHENDOWN"},
      {"4", 3, "NUPEX=LEFTTHENDOWN"},    {"9", 5, "NUPEX=DOWNTHENRIGHT"},
      {"16", 6, "NUPEX=DOWNTHENLEFT"},   {"4", 4, ""},
      {"1", 1, ""},                      {"", 1, ""},
  };
  for (const NupOrderCase& c : cases) {
    SCOPED_TRACE(std::string(c.numberUp) + " / " + std::to_string(c.direction));
    Fill(With([&](Job& j) { j.numberUp = c.numberUp; j.direction = c.direction; }));
    std::vector<std::string> expected;
    if (c.item[0] != '\0') expected.push_back(c.item);
    EXPECT_EQ(ItemsWithKey(Capture(OutputZPJLCommandforCommentAdvanced), "NUPEX="), expected);
  }
}

struct WordCase {
  const char* setting;
  const char* item;
};

TEST_F(CommentLinesTest, SaddleStitch) {
  const WordCase cases[] = {
      {"LeftSigCenterStaple", "SADDLESTAPLE=ON"},
      {"RightSigCenterStaple", "SADDLESTAPLE=ON"},
      {"LeftSigFold", "SADDLESTAPLE=OFF"},
      {"None", "SADDLESTAPLE=OFF"},
      {"", ""},
  };
  for (const WordCase& c : cases) {
    SCOPED_TRACE(c.setting);
    Fill(With([&](Job& j) { j.signature = c.setting; }));
    std::vector<std::string> expected;
    if (c.item[0] != '\0') expected.push_back(c.item);
    EXPECT_EQ(ItemsWithKey(Capture(OutputZPJLCommandforCommentAdvanced), "SADDLESTAPLE="),
              expected);
  }
}

TEST_F(CommentLinesTest, StaplePosition) {
  const WordCase cases[] = {
      {"LeftDouble", "STAPLEEX=LEFTDUAL"},
      {"UpperLeftSingle", "STAPLEEX=TOPLEFT"},
      {"TopDouble", "STAPLEEX=TOPDUAL"},
      {"UpperRightSingle", "STAPLEEX=TOPRIGHT"},
      {"RightDouble", "STAPLEEX=RIGHTDUAL"},
      {"LowerRightSingle", "STAPLEEX=BOTTOMRIGHT"},
      {"BottomDouble", "STAPLEEX=BOTTOMDUAL"},
      {"LowerLeftSingle", "STAPLEEX=BOTTOMLEFT"},
      // A contained word is enough; the table's order decides between two.
      {"Staple-BottomDouble-Fine", "STAPLEEX=BOTTOMDUAL"},
      {"TopDoubleLeftDouble", "STAPLEEX=LEFTDUAL"},
      {"None", ""},
      {"SaddleStaple", ""},
      {"", ""},
  };
  for (const WordCase& c : cases) {
    SCOPED_TRACE(c.setting);
    Fill(With([&](Job& j) { j.staple = c.setting; }));
    std::vector<std::string> expected;
    if (c.item[0] != '\0') expected.push_back(c.item);
    EXPECT_EQ(ItemsWithKey(Capture(OutputZPJLCommandforCommentAdvanced), "STAPLEEX="), expected);
  }
}

struct PunchCase {
  const char* punch;
  const char* holes;
  const char* item;
};

TEST_F(CommentLinesTest, PunchPosition) {
  const PunchCase cases[] = {
      {"Left", "2Holes", "PUNCHEX=HOLES[TWO]:LOCATION[LEFT]"},
      {"Top", "3Holes", "PUNCHEX=HOLES[THREE]:LOCATION[TOP]"},
      {"Right", "4Holes", "PUNCHEX=HOLES[FOUR]:LOCATION[RIGHT]"},
      {"Bottom", "CoilPunch", "PUNCHEX=HOLES[COIL]:LOCATION[BOTTOM]"},
      {"PunchBottomEdge", "2Holes", "PUNCHEX=HOLES[TWO]:LOCATION[BOTTOM]"},
      {"TopLeft", "2Holes", "PUNCHEX=HOLES[TWO]:LOCATION[LEFT]"},
      // Holes must match exactly, and both parts must be found.
      {"Left", "2holes", ""},
      {"Left", "2HolesWide", ""},
      {"Left", "", ""},
      {"None", "2Holes", ""},
      {"", "2Holes", ""},
  };
  for (const PunchCase& c : cases) {
    SCOPED_TRACE(std::string(c.punch) + " / " + c.holes);
    Fill(With([&](Job& j) { j.punch = c.punch; j.punchHoles = c.holes; }));
    std::vector<std::string> expected;
    if (c.item[0] != '\0') expected.push_back(c.item);
    EXPECT_EQ(ItemsWithKey(Capture(OutputZPJLCommandforCommentAdvanced), "PUNCHEX="), expected);
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
  EXPECT_EQ(Capture(OutputZPJLCommandforCommentAdvanced),
            Lines({"ORIENTATION=ROTATEDPORTRAIT", "NUPEX=DOWNTHENRIGHT", "SADDLESTAPLE=ON",
                   "STAPLEEX=TOPRIGHT", "PUNCHEX=HOLES[THREE]:LOCATION[RIGHT]",
                   "MIXEDSIZETYPE=NONE", "CUD=OFF"}));

  // With nothing set (orientation absent reads as 1 after the ticket is read).
  Fill(Job());
  EXPECT_EQ(Capture(OutputZPJLCommandforCommentAdvanced),
            Lines({"ORIENTATION=PORTRAIT", "MIXEDSIZETYPE=NONE", "CUD=OFF"}));
}

}  // namespace

// ---- Reading the ticket ----------------------------------------------------------------

// A filter argument vector whose options (argv[5]) are `ticket`.
struct JobArguments {
  explicit JobArguments(const char* ticket) { CopyText(options, sizeof options, ticket); }
  char program[9] = "pstozpjl";
  char jobId[2] = "1";
  char user[5] = "user";
  char title[6] = "title";
  char copies[2] = "1";
  char options[512];
  char* argv[7] = {program, jobId, user, title, copies, options, nullptr};
};

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
      {"sides=two-sided-long-edge", "two-sided-long-edge", "", 1, 1},
      // A binding edge of 0 means one-sided, whatever the sides say.
      {"sides=two-sided-long-edge DuplexBindingEdge..n.=0", "one-sided", "", 1, 1},
      {"sides=two-sided-long-edge DuplexBindingEdge..n.=2", "two-sided-long-edge", "", 1, 1},
      // A booklet signature forces the short edge; "None" is no booklet.
      {"sides=one-sided KRSignature=LeftSig", "two-sided-short-edge", "", 1, 1},
      {"KRSignature=RightSigFold DuplexBindingEdge..n.=0", "two-sided-short-edge", "", 1, 1},
      {"sides=two-sided-long-edge KRSignature=None", "two-sided-long-edge", "", 1, 1},
      // Collate comes from the raw option text; "nocollate" is tested first.
      {"collate=true", "one-sided", "collate", 1, 1},
      {"nocollate", "one-sided", "nocollate", 1, 1},
      {"collate nocollate", "one-sided", "nocollate", 1, 1},
      {"orientation-requested=4 com.apple.print.PrintSettings.PMLayoutDirection..n.=6",
       "one-sided", "", 4, 6},
      {"orientation-requested=0", "one-sided", "", 0, 1},
  };
  for (const TicketCase& c : cases) {
    SCOPED_TRACE(c.ticket);
    CommentResetOptionRecord();
    JobArguments job(c.ticket);
    CommentGetTicketFromPDE(job.argv);
    EXPECT_STREQ(psoptioncomment.sides, c.sides);
    EXPECT_STREQ(psoptioncomment.collate, c.collate);
    EXPECT_EQ(psoptioncomment.orientation, c.orientation);
    EXPECT_EQ(psoptioncomment.layoutDirection, c.direction);
  }
}

TEST_F(CommentLinesTest, TicketFillsEveryField) {
  CommentResetOptionRecord();
  char ticket[] =
      "sides=two-sided-short-edge KRColorMode=Color number-up=4 KRStaple=LeftDouble "
      "KRPunch=Left KRNumPunchHoles=2Holes KRSignature=LeftSig KRSigVol=10Sheets "
      "KRLineWeightAdjustment=Weakly1 KRTonerSaver=UserInput KRTonerReductionRate=Reduce_40 "
      "DuplexBindingEdge..n.=3 com.apple.print.PrintSettings.PMCopies..n.=7 "
      "orientation-requested=5 com.apple.print.PrintSettings.PMLayoutDirection..n.=3";
  JobArguments job(ticket);
  CommentGetTicketFromPDE(job.argv);
  const CommentOptionRecord& r = psoptioncomment;
  EXPECT_STREQ(r.colorMode, "Color");
  EXPECT_STREQ(r.numberUp, "4");
  EXPECT_STREQ(r.staple, "LeftDouble");
  EXPECT_STREQ(r.punch, "Left");
  EXPECT_STREQ(r.punchHoles, "2Holes");
  EXPECT_STREQ(r.signature, "LeftSig");
  EXPECT_STREQ(r.signatureVolume, "10Sheets");
  EXPECT_STREQ(r.lineWeightAdjustment, "Weakly1");
  EXPECT_STREQ(r.tonerSaver, "UserInput");
  EXPECT_STREQ(r.tonerReductionRate, "Reduce_40");
  EXPECT_EQ(r.duplexBindingEdge, 3);
  EXPECT_EQ(r.copies, 7);
  EXPECT_EQ(r.orientation, 5);
  EXPECT_EQ(r.layoutDirection, 3);
  EXPECT_EQ(CommentticketDataNum, 15);

  // A second job's ticket without those keys leaves no trace of the first.
  JobArguments second("");
  CommentGetTicketFromPDE(second.argv);
  EXPECT_STREQ(r.colorMode, "");
  EXPECT_STREQ(r.staple, "");
  EXPECT_STREQ(r.signatureVolume, "");
  EXPECT_STREQ(r.tonerReductionRate, "");
  EXPECT_EQ(r.copies, -1);
  EXPECT_EQ(r.duplexBindingEdge, -1);
}
