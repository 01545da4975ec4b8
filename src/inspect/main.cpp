// zpjl-inspect: reads a print stream back, for the people who run printers.
#include <cstdio>

#include "inspect/inspect_cli.h"

int main(int argc, char* argv[]) { return RunInspector(argc, argv, stdout, stderr); }
