#include "modules/job_comments/job_comments.h"

#include <cstdio>

#include "frame/output_channel.h"

void OutputZPJLCommandforCommentVersionLow() {
  KZfputs("@PJL COMMENT PRINTJOBINFO VERSION=1.3.0\n", stdout);
}

void OutputZPJLCommandforCommentVersionHigh() {
  KZfputs("@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n", stdout);
}

void OutputZPJLCommandforCommentBegin() {
  KZfputs("@PJL COMMENT PRINTJOBINFO BEGIN\n", stdout);
  KZfputs("@PJL COMMENT PRINTJOBINFO PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]\n", stdout);
  KZfputs("@PJL COMMENT PRINTJOBINFO JOBTYPE=PRINT\n", stdout);
}

// The job-describing lines come with the comments record (job information module).
void OutputZPJLCommandforCommentBasic() {}
void OutputZPJLCommandforCommentAdvanced() {}

void OutputZPJLCommandforCommentEnd() { KZfputs("@PJL COMMENT PRINTJOBINFO END\n", stdout); }
