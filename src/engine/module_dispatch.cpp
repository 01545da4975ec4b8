#include "engine/module_dispatch.h"

#include "engine/job_header.h"
#include "modules/job_comments/job_comments.h"
#include "modules/perfect_binding/perfect_binding.h"
#include "modules/special_pages/special_pages.h"

void InializeDescriptionTableFromFilter() {
  // Print type, accounting and finishing features come first.
  SpecialPageInializeDescriptionTable();
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  // Print type, accounting, finishing features and watermark come first.
  PBindGetTicketFromPDE(argv);
  CommentGetTicketFromPDE(argv);
  SpecialPageGetTicketFromPDE(argv);
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
