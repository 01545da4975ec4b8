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
