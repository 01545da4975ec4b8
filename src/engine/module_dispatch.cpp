#include "engine/module_dispatch.h"

#include "engine/job_header.h"

void InializeDescriptionTableFromFilter() {
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  (void)argv;
  return 1;
}

void OutputZPJLCommandFromFilter(char* argv[]) {
  (void)argv;
}

void OutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream) {
  (void)point;
  (void)page;
  (void)stream;
}
