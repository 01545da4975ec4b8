#include "engine/module_dispatch.h"

#include "engine/job_header.h"
#include "modules/accounting/accounting.h"
#include "modules/print_type/print_type.h"

void InializeDescriptionTableFromFilter() {
  PrintTypeInializeDescriptionTableFromFilter();
  JBAInializeDescriptionTableFromFilter();
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  PrintTypeGetTicketFromPDE(argv);
  JBAGetTicketFromPDE(argv);
  return 1;
}

void OutputZPJLCommandFromFilter(char* argv[]) {
  PrintTypeOutputZPJLCommandFromFilter(argv);
  JBAOutputZPJLCommandFromFilter(argv);
}

void OutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream) {
  (void)point;
  (void)page;
  (void)stream;
}
