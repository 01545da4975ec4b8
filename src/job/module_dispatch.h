// The four operations through which the frame drives the option modules,
// each calling the modules in a fixed order.
#pragma once

#include <cstdint>
#include <cstdio>

// Binds every parameter and condition table: the frame's, then the modules'.
void InializeDescriptionTable();
void InializeDescriptionTableFromFilter();

// Reads the job ticket into every module's option record. Always returns 1.
int GetTicketFromPDE(char* argv[]);

// The table-driven header lines of the print type, accounting and finishing modules.
void OutputZPJLCommandFromFilter(char* argv[]);

// Lets the PostScript modules write at an injection point of the job.
void OutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream);

// Whether a module draws on every page it asks for, so that jobs which end
// their pages in other ways than the application shape need the page-device
// hook (injection point 40).
bool PageHookWanted();
