// zpjl-printer-app: IPP Everywhere printers around the pstozpjl filter.
#include <cstdio>
#include <string>
#include <vector>

#include <pappl/pappl.h>

#include "printer_app/app_system.h"
#include "printer_app/printer_drivers.h"

int main(int argc, char* argv[]) {
  std::vector<std::string> args = PrepareMainloop(std::vector<std::string>(argv, argv + argc));
  if (args.empty()) {
    fputs("zpjl-printer-app: unable to create the spool directory.\n", stderr);
    return 1;
  }
  std::vector<char*> passed;
  for (std::string& arg : args) passed.push_back(arg.data());
  passed.push_back(nullptr);
  return papplMainloop(static_cast<int>(args.size()), passed.data(), ZPJL_VERSION, kFooterHtml,
                       kPrinterDriverCount, kPrinterDrivers, nullptr, ConfigurePrinterDriver,
                       nullptr, nullptr, CreateAppSystem, nullptr, nullptr);
}
