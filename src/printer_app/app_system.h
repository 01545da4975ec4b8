// The printer application's system: its options, its spool directory
// (which holds the state file, the control socket, TLS credentials and the
// jobs, and nothing of it lives elsewhere), and the capture of job-password.
#pragma once

#include <string>
#include <vector>

#include <pappl/pappl.h>

// The spool directory named by "-o spool-directory=DIR" in the arguments,
// else the one of the client subcommand that started this server, else the
// default one (root: /var/spool/zpjl-printer-app; other users: under their
// home directory).
std::string SpoolDirectoryOf(const std::vector<std::string>& args);

// Prepares the process for papplMainloop: creates the spool directory and
// points PAPPL's control socket into it. Returns the arguments to pass on
// (the spool-directory option is the server's alone); empty on failure.
std::vector<std::string> PrepareMainloop(const std::vector<std::string>& args);

// papplMainloop's system callback.
pappl_system_t* CreateAppSystem(int numOptions, cups_option_t* options, void* data);

// The log level for a "log-level" value. Debug is refused: at that level
// PAPPL writes every request attribute, job-password included, to the log.
pappl_loglevel_t LogLevelOf(const char* value, bool* loweredFromDebug);

// The authentication callback: PAPPL calls it for every request once the
// request is read. Takes job-password out (see CaptureJobPassword) and
// keeps administrative operations to local clients.
http_status_t AuthorizeRequest(pappl_client_t* client, const char* group, gid_t groupId,
                               void* data);

// Hands a captured password to the job PAPPL creates for the request, and
// drops it when the job ends unprinted.
void HandleEvent(pappl_system_t* system, pappl_printer_t* printer, pappl_job_t* job,
                 pappl_event_t event, void* data);

// Takes job-password out of a request: seals it into sealed, wipes the
// plain bytes and deletes the attribute. False when the request carries a
// password that cannot be used (encryption other than "none", empty or
// longer than the printer's field).
bool CaptureJobPassword(ipp_t* request, std::string& sealed);

extern const char kFooterHtml[];
