#include "engine/module_dispatch.h"

#include "engine/job_header.h"
#include "modules/job_comments/job_comments.h"

void InializeDescriptionTableFromFilter() {
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  // Order: print type, accounting, features, watermark, perfect binding,
  // comments, special pages.
  CommentGetTicketFromPDE(argv);
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
