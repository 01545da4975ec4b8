#include "platform/job_ticket.h"

#include <string>

namespace {

struct CachedTicket {
  bool valid = false;
  std::string text;
  int count = 0;
  cups_option_t* options = nullptr;
};

}  // namespace

int ParseJobTicket(const char* ticket, cups_option_t** options) {
  static CachedTicket cache;
  const char* text = ticket != nullptr ? ticket : "";
  if (!cache.valid || cache.text != text) {
    if (cache.options != nullptr) cupsFreeOptions(cache.count, cache.options);
    cache.options = nullptr;
    cache.count = cupsParseOptions(text, 0, &cache.options);
    cache.text = text;
    cache.valid = true;
  }
  *options = cache.options;
  return cache.count;
}
