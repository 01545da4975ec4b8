// Raster documents (PWG and URF raster, JPEG, PNG: PAPPL renders them)
// become PostScript for the printer: each page one image, run-length coded
// and written in ASCII85, then the job goes through the filter like
// any other.
#pragma once

#include <pappl/pappl.h>

bool StartRasterJob(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device);
bool StartRasterPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device,
                     unsigned page);
bool WriteRasterLine(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device,
                     unsigned y, const unsigned char* line);
bool EndRasterPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device,
                   unsigned page);
bool EndRasterJob(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device);
