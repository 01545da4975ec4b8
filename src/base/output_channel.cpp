#include "base/output_channel.h"

#include "base/job_state.h"

void KZfwrite(const void* buffer, size_t itemSize, size_t itemCount, FILE* stream) {
  if (gJobFilefp != nullptr) fwrite(buffer, itemSize, itemCount, gJobFilefp);
  fwrite(buffer, itemSize, itemCount, stream);
}

void KZfputs(const char* text, FILE* stream) {
  if (gJobFilefp != nullptr) fputs(text, gJobFilefp);
  fputs(text, stream);
}

int KZfputc(int character, FILE* stream) {
  if (gJobFilefp != nullptr) fputc(character, gJobFilefp);
  return fputc(character, stream);
}

void KZfprintf(FILE* stream, const char* text) {
  if (gJobFilefp != nullptr) fputs(text, gJobFilefp);
  fprintf(stream, "%s", text);
}
