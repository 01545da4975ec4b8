// Where the printer application finds the filter, the print system's
// pstops and the sample PPDs: beside it in the build tree, or installed.
#pragma once

#include <string>

std::string SamplePpdDirectory();
std::string FilterProgram();  // pstozpjl
std::string PstopsProgram();
std::string PdfToPsProgram();
