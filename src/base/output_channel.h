// The print stream's writers: each byte goes first to the debug job copy
// (gJobFilefp, when open) and then to the given stream, so the copy equals
// the print stream. Write errors are not checked; a broken pipe shows as
// SIGPIPE.
#pragma once

#include <cstddef>
#include <cstdio>

void KZfwrite(const void* buffer, size_t itemSize, size_t itemCount, FILE* stream);
void KZfputs(const char* text, FILE* stream);
int KZfputc(int character, FILE* stream);

// Writes one ready-made string; it is never taken as a format.
void KZfprintf(FILE* stream, const char* text);

// A stream whose bytes are held back to be written out later: the writers
// do not mirror it, so the copy gets those bytes when they are written out
// (nullptr: none).
void SetHeldStream(FILE* stream);
