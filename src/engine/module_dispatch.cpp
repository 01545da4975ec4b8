#include "engine/module_dispatch.h"

#include "engine/job_header.h"
#include "modules/accounting/accounting.h"
#include "modules/job_comments/job_comments.h"
#include "modules/perfect_binding/perfect_binding.h"
#include "modules/print_type/print_type.h"
#include "modules/special_pages/special_pages.h"

void InializeDescriptionTableFromFilter() {
  PrintTypeInializeDescriptionTableFromFilter();
  JBAInializeDescriptionTableFromFilter();
  // Finishing features come here.
  SpecialPageInializeDescriptionTable();
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  PrintTypeGetTicketFromPDE(argv);
  JBAGetTicketFromPDE(argv);
  // Finishing features and watermark come here.
  PBindGetTicketFromPDE(argv);
  CommentGetTicketFromPDE(argv);
  SpecialPageGetTicketFromPDE(argv);
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
