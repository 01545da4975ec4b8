// The operations through which the job drives the option modules, each
// calling the modules in a fixed order. This is the one place that names the
// modules: a new module is a folder under modules/ plus its lines here.
#pragma once

#include <cstdint>
#include <cstdio>

// Binds every parameter and condition table: the frame's, then the modules'.
void InializeDescriptionTable();
void InializeDescriptionTableFromFilter();

// Reads the job ticket into every module's option record. Always returns 1.
int GetTicketFromPDE(char* argv[]);

// The table-driven header lines of the print type, accounting and finishing
// modules, to `stream`.
void OutputZPJLCommandFromFilter(char* argv[], FILE* stream);

// Every module's header lines in the header's order, to `stream`: the
// table-driven lines above, perfect binding, booklet, toner saver, line
// weight and render mode, special pages, then the PRINTJOBINFO block.
void OutputZPJLCommandFromModules(char* argv[], FILE* stream);

// Lets the PostScript modules write at an injection point of the job.
void OutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream);

// Puts the modules' process-wide state back to its start value.
void ResetModuleState();

// Whether a module draws on every page it asks for, so that jobs which end
// their pages in other ways than the application shape need the page-device
// hook (injection point 40).
bool PageHookWanted();
