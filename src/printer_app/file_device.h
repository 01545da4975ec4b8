// The devices: file:///directory writes every job's print stream into a new
// file of that directory, named after the time it was printed, and never
// overwrites a file that is already there; socket://host:port sends it to
// the printer's AppSocket port.
#pragma once

// Registers the schemes with PAPPL (before any printer opens its device).
void RegisterFileDevice();
