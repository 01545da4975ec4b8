#include "base/output_channel.h"

#include "base/job_state.h"

namespace {

FILE* gHeldStream = nullptr;

bool Mirrored(FILE* stream) { return gJobFilefp != nullptr && stream != gHeldStream; }

}  // namespace

void SetHeldStream(FILE* stream) { gHeldStream = stream; }

void KZfwrite(const void* buffer, size_t itemSize, size_t itemCount, FILE* stream) {
  if (Mirrored(stream)) fwrite(buffer, itemSize, itemCount, gJobFilefp);
  fwrite(buffer, itemSize, itemCount, stream);
}

void KZfputs(const char* text, FILE* stream) {
  if (Mirrored(stream)) fputs(text, gJobFilefp);
  fputs(text, stream);
}

int KZfputc(int character, FILE* stream) {
  if (Mirrored(stream)) fputc(character, gJobFilefp);
  return fputc(character, stream);
}

void KZfprintf(FILE* stream, const char* text) {
  if (Mirrored(stream)) fputs(text, gJobFilefp);
  fprintf(stream, "%s", text);
}
