// The sending computer's host name and address text for the accounting
// attributes.
//
// getHostName fills HostNameStr for every job. The address routines resolve
// the host name and make the compact address text: "I" and eight hex digits
// for IPv4, "6" and hex digit groups for IPv6. A broken invariant (a missing
// address list, a host name that is not ASCII) ends the process with an
// "ERROR:" line on stderr and exit status 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/resolver.h"

constexpr int32_t kHostAddressCapacity = 46;

// The local host name into `destination` (97 bytes): in UTF-8 mode cut to 32
// UTF-16 units, then to 96 bytes. Empty when the system cannot tell.
void getHostName(char* destination);

// `name` as getHostName would store it (97-byte destination).
void CopyHostNameForPrinter(const char* name, bool utf8, char* destination);

// Host name (97 bytes) and address text (40 bytes) of this computer; both
// stay empty on failure, the address also when the name does not resolve.
void GetClientIPAddress(char* hostNameOut, char* addressOut);

// Resolves `name` and writes the chosen numeric address (at most
// capacity - 1 bytes). Returns the result flag of MyPrintAddressArray, or
// false when nothing could be resolved.
bool getHostAddress(const char* name, char* output, int32_t capacity);

// The address choice: the first IPv4 address other than 127.0.0.1 wins;
// otherwise the last IPv6 address not containing "fe80::1" is kept. The
// result is true after an IPv4 choice, else whether the last numeric
// conversion succeeded (even when nothing was chosen).
bool MyPrintAddressArray(const std::vector<ResolvedAddress>* addresses, const char* name,
                         char* output, int32_t capacity);

// The address text of a numeric address into `out` (size bytes; 40 holds
// every form): "10.0.0.5" gives "I0A000005". Empty for anything else.
void FormatClientAddressText(const char* numeric, char* out, size_t size);
