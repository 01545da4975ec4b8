// The file: device: file:///directory writes every job's print stream into
// a new file of that directory, named after the time it was printed, and
// never overwrites a file that is already there.
#pragma once

// Registers the scheme with PAPPL (before any printer opens its device).
void RegisterFileDevice();
