// The devices: file:///directory writes every job's print stream into a new
// file of that directory, named after the time it was printed, and never
// overwrites a file that is already there; socket://host:port sends it to
// the printer's AppSocket port.
//
// A job writes through a JobOutput of its own, never through the device
// PAPPL 1.3.1 opens for the printer: PAPPL closes and frees that device when
// a job ends, while the next job of the printer may already be writing to
// it. So PAPPL's device only checks its URI and opens the file or the
// connection at its first write (Identify-Printer): it never holds the
// printer's one AppSocket connection while a job waits for it.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

#include <pappl/pappl.h>

// Registers the schemes with PAPPL (before any printer opens its device).
void RegisterFileDevice();

class JobOutput {
 public:
  // The job's printer's device: a new file, or a connection. Jobs of one
  // printer take turns. A device that cannot be opened is tried again every
  // 5 seconds (logged once) until it opens or the job is cancelled (nullptr).
  static std::unique_ptr<JobOutput> Open(pappl_job_t* job);
  // Closes the device; a file with nothing written is removed.
  ~JobOutput();
  bool Write(const void* data, size_t length);

 private:
  JobOutput(std::unique_lock<std::mutex> turn, int fd, std::string path);
  std::unique_lock<std::mutex> turn_;
  int fd_;
  std::string path_;
  bool written_ = false;
};
