// One job through the filter: the document as PostScript, the print
// system's pstops (page size, duplex and the PPD's option code, as under a
// CUPS queue), then pstozpjl, whose print stream goes to the device.
//
// The filter runs as a child process per job, never in the server's own
// process: it keeps its job in process-wide state (identity buffers, option
// records, signal flags, standard output), which concurrent jobs would
// share, and a fault in one job must not take the server down.
#pragma once

#include <string>
#include <vector>

#include <pappl/pappl.h>

#include "printer_app/ticket_mapping.h"

// The directory for the children's temporary files (inside the spool).
void SetJobTempDirectory(const std::string& directory);

// The IPP side of a job as the mapping table reads it.
JobRequest ReadJobRequest(pappl_job_t* job, pappl_pr_options_t* options);

// Runs converter stages (empty for PostScript), pstops and pstozpjl on the
// input file, writing the print stream to the job's own output (never to
// PAPPL's device, see JobOutput).
bool PrintThroughFilter(pappl_job_t* job, pappl_pr_options_t* options,
                        const std::vector<std::vector<std::string>>& converters,
                        const std::string& inputPath);

// The driver's callback for PostScript jobs.
bool PrintPostScriptFile(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device);

// The MIME filter for PDF jobs.
bool PrintPdfFile(pappl_job_t* job, pappl_device_t* device, void* data);
