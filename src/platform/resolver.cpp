#include "platform/resolver.h"

#include <netdb.h>
#include <unistd.h>

#include <cstring>

namespace {

bool Lookup(const char* name, int flags, std::vector<ResolvedAddress>* addresses) {
  addresses->clear();
  if (name == nullptr) return false;
  addrinfo hints;
  std::memset(&hints, 0, sizeof hints);
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;  // one entry per address, not per socket type
  hints.ai_flags = flags;
  addrinfo* list = nullptr;
  if (getaddrinfo(name, nullptr, &hints, &list) != 0) return false;
  for (addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
    if (entry->ai_addr == nullptr || entry->ai_addrlen > sizeof(sockaddr_storage)) continue;
    ResolvedAddress address;
    std::memset(&address, 0, sizeof address);
    std::memcpy(&address.storage, entry->ai_addr, entry->ai_addrlen);
    address.length = entry->ai_addrlen;
    addresses->push_back(address);
  }
  freeaddrinfo(list);
  return !addresses->empty();
}

}  // namespace

bool ReadLocalHostName(char* buffer, size_t size) {
  if (buffer == nullptr || size == 0) return false;
  std::memset(buffer, 0, size);
  if (gethostname(buffer, size - 1) != 0) {
    std::memset(buffer, 0, size);
    return false;
  }
  buffer[size - 1] = '\0';
  return true;
}

bool ResolveHostName(const char* name, std::vector<ResolvedAddress>* addresses) {
  return Lookup(name, 0, addresses);
}

bool ParseNumericAddress(const char* text, ResolvedAddress* address) {
  std::vector<ResolvedAddress> addresses;
  if (!Lookup(text, AI_NUMERICHOST, &addresses)) return false;
  *address = addresses.front();
  return true;
}

bool NumericHostText(const ResolvedAddress& address, char* text, size_t size) {
  if (text == nullptr || size == 0) return false;
  std::memset(text, 0, size);
  if (getnameinfo(reinterpret_cast<const sockaddr*>(&address.storage), address.length, text,
                  static_cast<socklen_t>(size), nullptr, 0, NI_NUMERICHOST) != 0) {
    std::memset(text, 0, size);
    return false;
  }
  return true;
}
