// The debug job copy: when the flag file exists, the whole print stream is
// also written to a file named from the local time, for support.
#pragma once

#include <cstddef>
#include <ctime>

constexpr size_t kJobCopyPathSize = 1035;

// Expands a copy-name pattern whose only conversions are "%%" and exactly
// one "%s" (the time stamp) into `out`. Returns false, writing nothing, for
// any other pattern: a pattern is never handed to printf.
bool ExpandJobCopyPattern(const char* pattern, const char* stamp, char* out, size_t size);

// The copy's path for a job started at `now`: $TMPDIR/kr<stamp>.job on
// systems from 10.10 on, else the legacy pattern. An unset TMPDIR, or one
// with other conversions than "%%" and "%s", takes the legacy pattern.
// Returns false when no name can be made.
bool MakeJobCopyPath(time_t now, char* path, size_t size);

// Opens gJobFilefp when the flag file exists; a failed open is silent.
void OpenJobCopy(char* path, size_t size);

// Closes gJobFilefp and gives the file mode 0676.
void CloseJobCopy(const char* path);
