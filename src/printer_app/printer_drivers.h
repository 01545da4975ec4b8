// The printer application's drivers: one per sample PPD, each advertising in
// IPP what its PPD offers (media, trays, duplex, colour, finishing).
#pragma once

#include <string>
#include <vector>

#include <pappl/pappl.h>

#include "printer_app/ticket_mapping.h"

// A page size of the PPD with its PWG name.
struct PrinterMedia {
  std::string ppdName;  // PageSize choice, e.g. "A4"
  std::string pwgName;  // e.g. "iso_a4_210x297mm"
  int widthPoints = 0;
  int lengthPoints = 0;
};

// Everything the app keeps about one driver, read once from its PPD.
struct PrinterDriver {
  std::string name;
  std::string ppdPath;
  std::string makeAndModel;
  int pagesPerMinute = 0;
  bool duplex = false;
  std::vector<PrinterMedia> media;
  std::string defaultPageSize;
  std::vector<std::string> sources;  // PWG media-source names
  PrinterProfile profile;
};

// The driver list for papplMainloop (names and descriptions).
extern pappl_pr_driver_t kPrinterDrivers[];
extern const int kPrinterDriverCount;

// Reads a PPD into a driver; false when the PPD cannot be read.
bool ReadPrinterDriver(const std::string& name, const std::string& ppdPath, PrinterDriver& out);

// The driver of a printer (loaded when the printer was created), or nullptr.
const PrinterDriver* DriverOfPrinter(pappl_printer_t* printer);

// The PWG size name's PPD page size, or nullptr.
const PrinterMedia* FindMedia(const PrinterDriver& driver, const std::string& pwgName);

// The printer-created callback: reports the supplies.
void ReportSupplies(pappl_printer_t* printer, void* data);

// papplMainloop's driver callback.
bool ConfigurePrinterDriver(pappl_system_t* system, const char* driverName, const char* deviceUri,
                            const char* deviceId, pappl_pr_driver_data_t* data,
                            ipp_t** attributes, void* context);
