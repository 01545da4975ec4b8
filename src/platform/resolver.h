// Host name and address resolution over the system resolver
// (gethostname, getaddrinfo, getnameinfo). Synchronous: a lookup returns
// when the system resolver has answered.
#pragma once

#include <sys/socket.h>

#include <cstddef>
#include <vector>

// One socket address as the resolver gave it.
struct ResolvedAddress {
  sockaddr_storage storage;
  socklen_t length;
};

// The local host name, NUL-terminated in `buffer` (size bytes). False, with
// `buffer` empty, when the system cannot tell.
bool ReadLocalHostName(char* buffer, size_t size);

// The addresses of `name`, IPv4 and IPv6, one entry per address in the
// order the resolver lists them. False when the name does not resolve.
bool ResolveHostName(const char* name, std::vector<ResolvedAddress>* addresses);

// A numeric address text ("10.0.0.5", "fe80::1") as a socket address,
// without any lookup. False when `text` is not such a text.
bool ParseNumericAddress(const char* text, ResolvedAddress* address);

// The numeric host text of `address` (getnameinfo), NUL-terminated in
// `text` (size bytes). False, with `text` empty, on failure.
bool NumericHostText(const ResolvedAddress& address, char* text, size_t size);
