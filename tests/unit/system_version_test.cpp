// The system version the page log and the debug copy's directory depend on,
// packed from the kernel release as the build configures it.
#include "base/ppd_queries.h"

#include <gtest/gtest.h>

TEST(PackSystemVersion, FromKernelReleases) {
  const struct {
    const char* release;
    uint32_t packed;
  } cases[] = {
      {"13.4.0", 0x1094}, {"19.6.0", 0x10F6}, {"14.0.0", 0x10A0}, {"11.4.2", 0x1074},
      // Kernel 20 and later wrap around into the 10.0 range.
      {"20.6.0", 0x1006}, {"21.0.1", 0x1010},
      {"", 0x1000},       {"abc", 0x1000},    {"19", 0x10F0},     {"0.5", 0x1005},
      {"10.31", 0x106F},  // the minor release keeps its low four bits
  };
  for (const auto& c : cases) EXPECT_EQ(PackSystemVersion(c.release), c.packed) << c.release;
}
