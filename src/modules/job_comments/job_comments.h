// The PRINTJOBINFO comment block that describes the job to the printer, and
// the job settings it is made from.
//
// CommentGetTicketFromPDE fills `psoptioncomment` once per job.
// OutputZPJLCommandForJobInformation decides from the PPD whether the block
// is written and in which form (basic, or basic and advanced), with the
// version line first and the END line last. The device-settings lines and
// the booklet attributes read the same record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "ticket/ticket_access.h"

constexpr size_t kCommentTextSize = 256;

// Text fields are NUL-terminated and in the printer's encoding, empty when
// the ticket lacks the option; integers are -1 when absent (orientation and
// layout direction are turned into 1 after reading).
struct CommentOptionRecord {
  char sides[kCommentTextSize];               // "sides"
  char colorMode[kCommentTextSize];           // "KRColorMode"
  char collate[kCommentTextSize];             // "collate" / "nocollate" from the raw ticket
  char numberUp[kCommentTextSize];            // "number-up", comment form ("4", or "1")
  char staple[kCommentTextSize];              // "KRStaple"
  char punch[kCommentTextSize];               // "KRPunch"
  char punchHoles[kCommentTextSize];          // "KRNumPunchHoles"
  char signature[kCommentTextSize];           // "KRSignature"
  char signatureVolume[kCommentTextSize];     // "KRSigVol"
  char lineWeightAdjustment[kCommentTextSize];  // "KRLineWeightAdjustment"
  char tonerSaver[kCommentTextSize];          // "KRTonerSaver"
  char tonerReductionRate[kCommentTextSize];  // "KRTonerReductionRate"
  int32_t duplexBindingEdge;                  // 1 simplex, 2 long edge, 3 short edge; 0 one-sided
  int32_t copies;
  int32_t orientation;                        // "orientation-requested": 1, 4, 5 or 6
  int32_t layoutDirection;                    // 1, 3, 5 or 6
};

// The job's comment settings (one per process, zero at start).
extern CommentOptionRecord psoptioncomment;

// The ticket bindings of the record: every field in order except collate.
extern const TicketBinding* const CommentticketData;
extern const int32_t CommentticketDataNum;  // 15

// Reads the ticket (argv[5]) into psoptioncomment and normalises it: collate
// from the raw option text, one-sided when there is no binding edge, short
// edge for a booklet signature, orientation and layout direction 1 when absent.
void CommentGetTicketFromPDE(char* argv[]);

// Zeroes the whole record, collate included (tests run many jobs per process).
void CommentResetOptionRecord();

void OutputZPJLCommandforCommentVersionLow(FILE* stream);   // VERSION=1.3.0
void OutputZPJLCommandforCommentVersionHigh(FILE* stream);  // VERSION=1.5.0
void OutputZPJLCommandforCommentBegin(FILE* stream);
// Copies, duplex, colour, N-up, staple, punch and booklet lines. May cut the
// signature volume at "Sheet" in the record.
void OutputZPJLCommandforCommentBasic(FILE* stream);
// Orientation, N-up order, saddle stitch, staple and punch positions, and the
// two fixed closing lines.
void OutputZPJLCommandforCommentAdvanced(FILE* stream);
void OutputZPJLCommandforCommentEnd(FILE* stream);

// Product codes whose PPD (PCFileName) gets the version 1.3.0 block; ended
// by an empty entry.
extern const char* const kCommentedModelList[];

// The PRINTJOBINFO block, or nothing: version 1.3.0 for legacy-encoding
// printers and the listed models, version 1.5.0 with the advanced lines
// where the PPD's CommentOn asks.
void OutputZPJLCommandForJobInformation(FILE* stream);

// The items of the block's lines ("@PJL COMMENT PRINTJOBINFO <item>=...").
inline constexpr char kCommentVersionItem[] = "VERSION";
inline constexpr char kCommentEndItem[] = "END";
inline constexpr const char* CommentItemNames[] = {
    kCommentVersionItem, "BEGIN", "PDLTYPE", "JOBTYPE", "JOBCOPIES", "PAGECOPIES", "DUPLEXTYPE",
    "COLORMODE", "NUP", "STAPLE", "PUNCH", "BOOKLETTYPE", "ORIENTATION", "NUPEX", "SADDLESTAPLE",
    "STAPLEEX", "PUNCHEX", "MIXEDSIZETYPE", "CUD", kCommentEndItem,
};
