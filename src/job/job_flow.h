// One print job from start to exit status: the filter's main.
#pragma once

// Runs the job for the CUPS filter arguments
// (job-id user title copies options [file]). Returns the exit status:
// 1 after SIGPIPE or a usage error, else 0.
int FilterMain(int argc, char* argv[]);

// Puts every process-wide record, flag and cache (job state, module state,
// the cached PPD) back to its start value, so that tests and fuzzing can run
// many jobs in one process.
void ResetProcessState();

void SignalHandler(int signalNumber);      // SIGTERM: cancel at the next page end
void SignalPipeHandler(int signalNumber);  // SIGPIPE: remember for the exit status
