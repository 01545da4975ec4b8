#include "engine/module_dispatch.h"

#include "engine/job_header.h"
#include "modules/features/features.h"
#include "modules/watermark/watermark.h"

void InializeDescriptionTableFromFilter() {
  FeaturesInializeDescriptionTableFromFilter();
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  FeaturesGetTicketFromPDE(argv);
  WatermarkGetTicketFromPDE(argv);
  return 1;
}

void OutputZPJLCommandFromFilter(char* argv[]) {
  FeaturesOutputZPJLCommandFromFilter(argv);
}

void OutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream) {
  WatermarkOutputPSCommandFromFilter(point, page, stream);
  FeaturesOutputPSCommandFromFilter(point, stream);
}
