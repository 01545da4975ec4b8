#include "job/module_dispatch.h"

#include "job/job_header.h"
#include "modules/accounting/accounting.h"
#include "modules/device_settings/device_settings.h"
#include "modules/features/features.h"
#include "modules/job_comments/job_comments.h"
#include "modules/perfect_binding/perfect_binding.h"
#include "modules/print_type/print_type.h"
#include "modules/special_pages/special_pages.h"
#include "modules/watermark/watermark.h"

void InializeDescriptionTableFromFilter() {
  PrintTypeInializeDescriptionTableFromFilter();
  JBAInializeDescriptionTableFromFilter();
  FeaturesInializeDescriptionTableFromFilter();
  SpecialPageInializeDescriptionTable();
}

void InializeDescriptionTable() {
  BindFrameTables();
  InializeDescriptionTableFromFilter();
}

int GetTicketFromPDE(char* argv[]) {
  PrintTypeGetTicketFromPDE(argv);
  JBAGetTicketFromPDE(argv);
  FeaturesGetTicketFromPDE(argv);
  WatermarkGetTicketFromPDE(argv);
  PBindGetTicketFromPDE(argv);
  CommentGetTicketFromPDE(argv);
  SpecialPageGetTicketFromPDE(argv);
  return 1;
}

void OutputZPJLCommandFromFilter(char* argv[], FILE* stream) {
  PrintTypeOutputZPJLCommandFromFilter(argv, stream);
  JBAOutputZPJLCommandFromFilter(argv, stream);
  FeaturesOutputZPJLCommandFromFilter(argv, stream);
}

void OutputZPJLCommandFromModules(char* argv[], FILE* stream) {
  OutputZPJLCommandFromFilter(argv, stream);
  OutputZPJLCommandforPerfectBind(stream);
  OutputZPJLCommandforBooklet(stream);
  OutputZPJLCommandForTonerSaver(stream);
  OutputZPJLCommandOthers(stream);
  OutputZPJLCommandForSpecialPage(argv, stream);
  OutputZPJLCommandForJobInformation(stream);
}

void OutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream) {
  WatermarkOutputPSCommandFromFilter(point, page, stream);
  FeaturesOutputPSCommandFromFilter(point, stream);
}

void ResetModuleState() {
  CommentResetOptionRecord();
  ResetWatermarkState();
}

bool PageHookWanted() { return WatermarkWantsPageHook(); }
