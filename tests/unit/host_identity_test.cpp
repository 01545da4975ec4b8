#include "identity/host_identity.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/job_state.h"

namespace {

// Socket addresses from numeric texts; "bad" is an address of no family,
// which getnameinfo refuses.
std::vector<ResolvedAddress> Addresses(const std::vector<std::string>& texts) {
  std::vector<ResolvedAddress> addresses;
  for (const std::string& text : texts) {
    ResolvedAddress address;
    std::memset(&address, 0, sizeof address);
    if (text == "bad") {
      address.length = sizeof(sockaddr_in);
    } else {
      EXPECT_TRUE(ParseNumericAddress(text.c_str(), &address)) << text;
    }
    addresses.push_back(address);
  }
  return addresses;
}

std::string Zeros(size_t groups) { return std::string(groups * 4, '0'); }

}  // namespace

TEST(MyPrintAddressArray, AddressChoice) {
  struct Case {
    const char* name;
    std::vector<std::string> addresses;
    int32_t capacity;
    std::string expected;
    bool result;
  };
  const Case cases[] = {
      {"loopback first, then IPv4", {"127.0.0.1", "10.0.0.5"}, 46, "10.0.0.5", true},
      {"first IPv4 wins and stops the walk", {"10.0.0.5", "192.168.1.20", "2001:db8::1"}, 46,
       "10.0.0.5", true},
      {"IPv6 then IPv4: IPv4 replaces it", {"2001:db8::1", "192.168.1.20"}, 46, "192.168.1.20",
       true},
      {"only fe80::1: nothing chosen, flag still set", {"fe80::1"}, 46, "", true},
      {"fe80::1 is matched as a substring", {"fe80::1234"}, 46, "", true},
      {"IPv6 loopback is chosen", {"::1"}, 46, "::1", true},
      {"last conversion failed", {"2001:db8::1", "bad"}, 46, "2001:db8::1", false},
      {"empty list", {}, 46, "", false},
      {"cut to the capacity", {"192.168.1.20"}, 8, "192.168", true},
  };
  for (const Case& c : cases) {
    std::vector<ResolvedAddress> addresses = Addresses(c.addresses);
    std::vector<char> output(static_cast<size_t>(c.capacity) + 1, 'x');
    std::memset(output.data(), 0, static_cast<size_t>(c.capacity));
    EXPECT_EQ(MyPrintAddressArray(&addresses, "host", output.data(), c.capacity), c.result)
        << c.name;
    EXPECT_EQ(std::string(output.data()), c.expected) << c.name;
    EXPECT_EQ(output.back(), 'x') << c.name;
  }
}

TEST(FormatClientAddressText, IPv4AndIPv6Texts) {
  struct Case {
    const char* numeric;
    std::string expected;
  };
  const Case cases[] = {
      {"10.0.0.5", "I0A000005"},
      {"192.168.1.20", "IC0A80114"},
      {"255.255.255.255", "IFFFFFFFF"},
      {"256.1.1.1", ""},
      {"2001:db8:0:0:1:2:3:4", "620010db8000000000001000200030004"},
      // Three padded groups gain seven zero groups: nine groups in all.
      {"fe80::1", "6fe80" + Zeros(7) + "0001"},
      {"::1", "6" + Zeros(8) + "0001"},
      // Four groups gain six: again one more than eight.
      {"2001:db8::", "620010db8" + Zeros(7)},
      // Five to seven groups come out at exactly eight.
      {"2001:db8::5:6", "620010db8" + Zeros(4) + "00050006"},
      // No "0000" group at all (the last group is never searched).
      {"2001:db8:1:2:3:4:5:6", "6"},
      {"localhost", ""},
  };
  for (const Case& c : cases) {
    char out[kIPAddressStrSize + 1];
    std::memset(out, 'x', sizeof out);
    FormatClientAddressText(c.numeric, out, kIPAddressStrSize);
    EXPECT_EQ(std::string(out), c.expected) << c.numeric;
    EXPECT_EQ(out[kIPAddressStrSize], 'x') << c.numeric;
  }
}

TEST(HostName, CutToThePrinterLimits) {
  struct Case {
    const char* name;
    std::string host;
    bool utf8;
    std::string expected;
  };
  const std::string kana = "\xE3\x81\x82";
  std::string kana40;
  for (int i = 0; i < 40; ++i) kana40 += kana;
  const Case cases[] = {
      {"short", "print-host", true, "print-host"},
      {"UTF-8: 40 characters cut to 32", std::string(40, 'h'), true, std::string(32, 'h')},
      {"UTF-8: 32 characters kept", std::string(32, 'h'), true, std::string(32, 'h')},
      {"UTF-8: units, not bytes", kana40, true, kana40.substr(0, 96)},
      {"Shift-JIS: cut to 96 bytes", std::string(200, 'h'), false, std::string(96, 'h')},
  };
  for (const Case& c : cases) {
    char destination[kHostNameStrSize + 1];
    std::memset(destination, 'x', sizeof destination);
    CopyHostNameForPrinter(c.host.c_str(), c.utf8, destination);
    EXPECT_EQ(std::string(destination), c.expected) << c.name;
    EXPECT_EQ(destination[kHostNameStrSize], 'x') << c.name;
  }
}

TEST(GetHostAddress, ResolvesNumericNames) {
  struct Case {
    const char* name;
    bool result;
    std::string expected;
  };
  const Case cases[] = {
      {"10.0.0.5", true, "10.0.0.5"},
      {"2001:db8:0:0:1:2:3:4", true, "2001:db8::1:2:3:4"},
      {"127.0.0.1", true, ""},  // nothing chosen, yet the flag is set
      {"", false, ""},
  };
  for (const Case& c : cases) {
    char output[kHostAddressCapacity];
    std::memset(output, 'x', sizeof output);
    EXPECT_EQ(getHostAddress(c.name, output, sizeof output), c.result) << c.name;
    EXPECT_EQ(std::string(output), c.expected) << c.name;
  }
  char output[4] = {'x', 'x', 'x', 'x'};
  EXPECT_FALSE(getHostAddress(nullptr, output, sizeof output));
  EXPECT_FALSE(getHostAddress("10.0.0.5", nullptr, 46));
  EXPECT_FALSE(getHostAddress("10.0.0.5", output, -1));
  EXPECT_EQ(std::string(output, 4), "xxxx");
}

TEST(HostIdentityDeathTest, BrokenInvariantsExitCleanly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  char output[kHostAddressCapacity];
  EXPECT_EXIT(getHostAddress("h\xC3\xB6st", output, sizeof output),
              ::testing::ExitedWithCode(1), "ERROR: assertion failed: inputString != NULL");
  EXPECT_EXIT(MyPrintAddressArray(nullptr, "host", output, sizeof output),
              ::testing::ExitedWithCode(1), "ERROR: assertion failed: addresses != NULL");
  std::vector<ResolvedAddress> none;
  EXPECT_EXIT(MyPrintAddressArray(&none, nullptr, output, sizeof output),
              ::testing::ExitedWithCode(1), "ERROR: assertion failed: name != NULL");
}
