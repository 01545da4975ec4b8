// The PRINTJOBINFO comment block that describes the job to the printer.
#pragma once

void OutputZPJLCommandforCommentVersionLow();   // VERSION=1.3.0
void OutputZPJLCommandforCommentVersionHigh();  // VERSION=1.5.0
void OutputZPJLCommandforCommentBegin();
void OutputZPJLCommandforCommentBasic();
void OutputZPJLCommandforCommentAdvanced();
void OutputZPJLCommandforCommentEnd();
