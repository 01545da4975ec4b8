#include "job/ps_stream.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct KindCase {
  std::string line;
  PSLineKind kind;
};

TEST(ClassifyPSLine, StructuralLinesAndTheirNearMisses) {
  const KindCase cases[] = {
      {"ep", PSLineKind::kEndPage},
      {"endp", PSLineKind::kEndPageAlt},
      {"showpage", PSLineKind::kShowPage},
      {"bp", PSLineKind::kBeginPage},
      {"%%EndSetup", PSLineKind::kEndSetup},
      {"userdict/setpagedevice{pop}bind put", PSLineKind::kSetPageDevice},
      {"%%EndPageSetup", PSLineKind::kEndPageSetup},
      {"%%BeginProlog", PSLineKind::kBeginProlog},
      {"%%EndProlog", PSLineKind::kEndProlog},
      // Whole lines only, exact bytes.
      {"", PSLineKind::kPlain},
      {"e", PSLineKind::kPlain},
      {"ep ", PSLineKind::kPlain},
      {" ep", PSLineKind::kPlain},
      {"EP", PSLineKind::kPlain},
      {"bq", PSLineKind::kPlain},
      {std::string("ep\0", 3), PSLineKind::kPlain},
      {"endpage", PSLineKind::kPlain},
      {"%%EndSetup2", PSLineKind::kPlain},
      {"%%EndPageSetu", PSLineKind::kPlain},
      {"%%BeginProlog ", PSLineKind::kPlain},
      {"userdict/setpagedevice{pop}bind pu", PSLineKind::kPlain},
      {"userdict/setpagedevice{pop}bind put ", PSLineKind::kPlain},
      {"userdict/setpagedevice{pop}bind pUt", PSLineKind::kPlain},
      {std::string(35, 'x'), PSLineKind::kPlain},
      {std::string(9000, 'e'), PSLineKind::kPlain},
  };
  for (const KindCase& c : cases) {
    EXPECT_EQ(ClassifyPSLine(c.line.data(), c.line.size()), c.kind) << '"' << c.line << '"';
  }
}

}  // namespace
