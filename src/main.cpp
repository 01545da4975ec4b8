// pstozpjl: CUPS filter from PostScript to a PJL-wrapped print stream.
#include "job/job_flow.h"

int main(int argc, char* argv[]) { return FilterMain(argc, argv); }
