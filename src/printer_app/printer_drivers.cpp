#include "printer_app/printer_drivers.h"

#include <cctype>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include <cups/ppd.h>

#include "printer_app/app_paths.h"
#include "printer_app/print_job.h"
#include "printer_app/raster_postscript.h"
#include "printer_app/sealed_password.h"

pappl_pr_driver_t kPrinterDrivers[] = {
    {"zpjl-color-production", "ZPJL Color Production", nullptr, nullptr},
    {"zpjl-mono-office-sjis", "ZPJL Mono Office", nullptr, nullptr},
    {"zpjl-color-office-insertion", "ZPJL Color Office", nullptr, nullptr},
};
const int kPrinterDriverCount = sizeof kPrinterDrivers / sizeof kPrinterDrivers[0];

namespace {

constexpr int kResolution = 300;
constexpr int kMargin = 423;  // hundredths of millimetres: the sheet's unprintable sixth of an inch

std::vector<std::string> ChoicesOf(ppd_file_t* ppd, const char* option, bool withNone) {
  std::vector<std::string> choices;
  ppd_option_t* found = ppdFindOption(ppd, option);
  for (int i = 0; found != nullptr && i < found->num_choices; ++i) {
    if (withNone || std::strcmp(found->choices[i].choice, "None") != 0)
      choices.push_back(found->choices[i].choice);
  }
  return choices;
}

// A tray's PWG name from its PPD choice: lower case, words joined by '-'.
std::string SourceName(const char* choice) {
  std::string name;
  for (const char* c = choice; *c != '\0'; ++c) {
    const unsigned char byte = static_cast<unsigned char>(*c);
    if (std::isalnum(byte)) {
      if (std::isupper(byte) && !name.empty() && name.back() != '-' &&
          std::islower(static_cast<unsigned char>(c[-1])))
        name += '-';
      name += static_cast<char>(std::tolower(byte));
    } else if (!name.empty() && name.back() != '-') {
      name += '-';
    }
  }
  return name.empty() ? "auto" : name;
}

void ReadMedia(ppd_file_t* ppd, PrinterDriver& out) {
  for (int i = 0; i < ppd->num_sizes; ++i) {
    const ppd_size_t& size = ppd->sizes[i];
    pwg_media_t* pwg = pwgMediaForPPD(size.name);
    if (pwg == nullptr)
      pwg = pwgMediaForSize(PWG_FROM_POINTS(size.width), PWG_FROM_POINTS(size.length));
    if (pwg == nullptr || pwg->pwg == nullptr) continue;
    out.media.push_back({size.name, pwg->pwg, static_cast<int>(size.width),
                         static_cast<int>(size.length)});
  }
  ppd_choice_t* marked = ppdFindMarkedChoice(ppd, "PageSize");
  out.defaultPageSize = marked != nullptr ? marked->choice : "";
}

std::mutex driversMutex;
std::map<std::string, std::unique_ptr<PrinterDriver>>& Drivers() {
  static std::map<std::string, std::unique_ptr<PrinterDriver>> drivers;
  return drivers;
}

// Loads a driver once; its strings stay in place for PAPPL's pointers.
const PrinterDriver* LoadDriver(const std::string& name) {
  std::lock_guard<std::mutex> lock(driversMutex);
  auto found = Drivers().find(name);
  if (found != Drivers().end()) return found->second.get();
  bool known = false;
  for (int i = 0; i < kPrinterDriverCount; ++i) known = known || name == kPrinterDrivers[i].name;
  auto driver = std::make_unique<PrinterDriver>();
  if (!known || !ReadPrinterDriver(name, SamplePpdDirectory() + "/" + name + ".ppd", *driver))
    return nullptr;
  return (Drivers()[name] = std::move(driver)).get();
}

void SetMediaCol(const PrinterMedia& media, const char* source, pappl_media_col_t& col) {
  col = {};
  col.bottom_margin = col.top_margin = col.left_margin = col.right_margin = kMargin;
  col.size_width = PWG_FROM_POINTS(media.widthPoints);
  col.size_length = PWG_FROM_POINTS(media.lengthPoints);
  papplCopyString(col.size_name, media.pwgName.c_str(), sizeof col.size_name);
  papplCopyString(col.source, source, sizeof col.source);
  papplCopyString(col.type, "stationery", sizeof col.type);
}

void FillMedia(const PrinterDriver& driver, pappl_pr_driver_data_t* data) {
  data->num_media = 0;
  for (const PrinterMedia& media : driver.media) {
    if (data->num_media == PAPPL_MAX_MEDIA) break;
    data->media[data->num_media++] = media.pwgName.c_str();
  }
  data->num_source = 0;
  for (const std::string& source : driver.sources) {
    if (data->num_source == PAPPL_MAX_SOURCE) break;
    data->source[data->num_source++] = source.c_str();
  }
  data->num_type = 1;
  data->type[0] = "stationery";
  data->left_right = data->bottom_top = kMargin;
  const PrinterMedia* standard = &driver.media.front();
  for (const PrinterMedia& media : driver.media)
    if (media.ppdName == driver.defaultPageSize) standard = &media;
  for (int i = 0; i < data->num_source; ++i)
    SetMediaCol(*standard, data->source[i], data->media_ready[i]);
  data->media_default = data->media_ready[0];
}

void FillColor(const PrinterDriver& driver, pappl_pr_driver_data_t* data) {
  if (driver.profile.colorDevice) {
    data->color_supported =
        PAPPL_COLOR_MODE_AUTO | PAPPL_COLOR_MODE_COLOR | PAPPL_COLOR_MODE_MONOCHROME;
    data->color_default = PAPPL_COLOR_MODE_AUTO;
    data->raster_types = PAPPL_PWG_RASTER_TYPE_SGRAY_8 | PAPPL_PWG_RASTER_TYPE_SRGB_8;
  } else {
    data->color_supported = PAPPL_COLOR_MODE_MONOCHROME;
    data->color_default = PAPPL_COLOR_MODE_MONOCHROME;
    data->raster_types = PAPPL_PWG_RASTER_TYPE_SGRAY_8;
  }
}

void FillSidesAndFinishing(const PrinterDriver& driver, pappl_pr_driver_data_t* data) {
  data->sides_default = PAPPL_SIDES_ONE_SIDED;
  data->sides_supported = PAPPL_SIDES_ONE_SIDED;
  if (driver.duplex) {
    data->duplex = PAPPL_DUPLEX_NORMAL;
    data->sides_supported |= PAPPL_SIDES_TWO_SIDED_LONG_EDGE | PAPPL_SIDES_TWO_SIDED_SHORT_EDGE;
  }
  data->finishings = PAPPL_FINISHINGS_NONE;
  if (!driver.profile.stapleChoices.empty()) data->finishings |= PAPPL_FINISHINGS_STAPLE;
  if (!driver.profile.punchChoices.empty()) data->finishings |= PAPPL_FINISHINGS_PUNCH;
}

// Job attributes that PAPPL does not know: accounting, secure print and
// the watermark.
ipp_t* DriverAttributes() {
  ipp_t* attrs = ippNew();
  ippAddBoolean(attrs, IPP_TAG_PRINTER, "job-account-id-supported", 1);
  ippAddBoolean(attrs, IPP_TAG_PRINTER, "job-accounting-user-id-supported", 1);
  ippAddOutOfBand(attrs, IPP_TAG_PRINTER, IPP_TAG_NOVALUE, "job-account-id-default");
  ippAddOutOfBand(attrs, IPP_TAG_PRINTER, IPP_TAG_NOVALUE, "job-accounting-user-id-default");
  ippAddInteger(attrs, IPP_TAG_PRINTER, IPP_TAG_INTEGER, "job-password-supported",
                static_cast<int>(kMaxJobPasswordLength));
  ippAddString(attrs, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "job-password-encryption-supported",
               nullptr, "none");
  ippAddInteger(attrs, IPP_TAG_PRINTER, IPP_TAG_INTEGER, "zpjl-watermark-text-supported", 63);
  static const char* const kPages[] = {"every-page", "first-page"};
  ippAddStrings(attrs, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "zpjl-watermark-pages-supported", 2,
                nullptr, kPages);
  ippAddString(attrs, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "zpjl-watermark-pages-default", nullptr,
               "every-page");
  ippAddBoolean(attrs, IPP_TAG_PRINTER, "preferred-attributes-supported", 0);
  ippAddString(attrs, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "print-rendering-intent-default", nullptr,
               "auto");
  ippAddString(attrs, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "print-rendering-intent-supported",
               nullptr, "auto");
  return attrs;
}

// Identify-Printer: the message on the printer's panel, as a PJL ready
// message between universal exits. Only letters, digits, spaces and plain
// punctuation reach the panel.
void IdentifyPrinter(pappl_printer_t* printer, pappl_identify_actions_t, const char* message) {
  std::string text;
  for (const char* c = message != nullptr ? message : ""; *c != '\0' && text.size() < 40; ++c)
    if (*c >= 0x20 && *c < 0x7f && *c != '"') text += *c;
  if (text.empty()) text = "IDENTIFY";
  pappl_device_t* device = papplPrinterOpenDevice(printer);
  if (device == nullptr) return;
  papplDevicePuts(device, "\033%-12345X@PJL\r\n@PJL RDYMSG DISPLAY=\"");
  papplDevicePuts(device, text.c_str());
  papplDevicePuts(device, "\"\r\n\033%-12345X");
  papplPrinterCloseDevice(printer);
}

}  // namespace

// The toners, at a level the print stream's devices do not report.
void ReportSupplies(pappl_printer_t* printer, void*) {
  static const struct {
    pappl_supply_color_t color;
    const char* name;
  } kToners[] = {{PAPPL_SUPPLY_COLOR_BLACK, "Black Toner"},
                 {PAPPL_SUPPLY_COLOR_CYAN, "Cyan Toner"},
                 {PAPPL_SUPPLY_COLOR_MAGENTA, "Magenta Toner"},
                 {PAPPL_SUPPLY_COLOR_YELLOW, "Yellow Toner"}};
  const PrinterDriver* driver = DriverOfPrinter(printer);
  const int count = driver != nullptr && driver->profile.colorDevice ? 4 : 1;
  pappl_supply_t supplies[4] = {};
  for (int i = 0; i < count; ++i) {
    supplies[i].color = kToners[i].color;
    papplCopyString(supplies[i].description, kToners[i].name, sizeof supplies[i].description);
    supplies[i].is_consumed = true;
    supplies[i].level = -1;  // unknown
    supplies[i].type = PAPPL_SUPPLY_TYPE_TONER;
  }
  papplPrinterSetSupplies(printer, count, supplies);
}

bool ReadPrinterDriver(const std::string& name, const std::string& ppdPath, PrinterDriver& out) {
  ppd_file_t* ppd = ppdOpenFile(ppdPath.c_str());
  if (ppd == nullptr) return false;
  ppdMarkDefaults(ppd);
  out.name = name;
  out.ppdPath = ppdPath;
  out.makeAndModel = ppd->nickname != nullptr ? ppd->nickname : name;
  out.makeAndModel = out.makeAndModel.substr(0, out.makeAndModel.find(','));
  out.pagesPerMinute = ppd->throughput;
  out.profile.colorDevice = ppd->color_device != 0;
  out.profile.hasColorModeOption = ppdFindOption(ppd, "KRColorMode") != nullptr;
  out.profile.stapleChoices = ChoicesOf(ppd, "KRStaple", false);
  out.profile.punchChoices = ChoicesOf(ppd, "KRPunch", false);
  out.profile.punchHoleChoices = ChoicesOf(ppd, "KRNumPunchHoles", true);
  out.profile.signatureChoices = ChoicesOf(ppd, "KRSignature", false);
  out.duplex = ppdFindChoice(ppdFindOption(ppd, "Duplex"), "DuplexNoTumble") != nullptr;
  ReadMedia(ppd, out);
  for (const std::string& slot : ChoicesOf(ppd, "InputSlot", true))
    out.sources.push_back(SourceName(slot.c_str()));
  if (out.sources.empty()) out.sources.push_back("auto");
  ppdClose(ppd);
  return !out.media.empty();
}

const PrinterDriver* DriverOfPrinter(pappl_printer_t* printer) {
  const char* name = papplPrinterGetDriverName(printer);
  return name != nullptr ? LoadDriver(name) : nullptr;
}

const PrinterMedia* FindMedia(const PrinterDriver& driver, const std::string& pwgName) {
  for (const PrinterMedia& media : driver.media)
    if (media.pwgName == pwgName) return &media;
  return nullptr;
}

bool ConfigurePrinterDriver(pappl_system_t* system, const char* driverName, const char*,
                            const char*, pappl_pr_driver_data_t* data, ipp_t** attributes,
                            void*) {
  const PrinterDriver* driver = LoadDriver(driverName != nullptr ? driverName : "");
  if (driver == nullptr) {
    papplLog(system, PAPPL_LOGLEVEL_ERROR, "No readable PPD for driver \"%s\".",
             driverName != nullptr ? driverName : "");
    return false;
  }
  data->printfile_cb = PrintPostScriptFile;
  data->rstartjob_cb = StartRasterJob;
  data->rstartpage_cb = StartRasterPage;
  data->rwriteline_cb = WriteRasterLine;
  data->rendpage_cb = EndRasterPage;
  data->rendjob_cb = EndRasterJob;
  data->format = "application/postscript";
  papplCopyString(data->make_and_model, driver->makeAndModel.c_str(),
                  sizeof data->make_and_model);
  data->ppm = driver->pagesPerMinute;
  if (driver->profile.colorDevice) data->ppm_color = driver->pagesPerMinute;
  data->kind = PAPPL_KIND_DOCUMENT;
  data->identify_cb = IdentifyPrinter;
  data->has_supplies = true;
  data->identify_supported = data->identify_default = PAPPL_IDENTIFY_ACTIONS_DISPLAY;
  data->orient_default = IPP_ORIENT_PORTRAIT;
  data->quality_default = IPP_QUALITY_NORMAL;
  data->num_resolution = 1;
  data->x_resolution[0] = data->y_resolution[0] = kResolution;
  data->x_default = data->y_default = kResolution;
  FillColor(*driver, data);
  FillMedia(*driver, data);
  FillSidesAndFinishing(*driver, data);
  // The watermark text is read from the job alone: PAPPL keeps vendor
  // defaults by the type of their "-supported" value, a number here.
  data->num_vendor = 1;
  data->vendor[0] = "zpjl-watermark-pages";
  *attributes = DriverAttributes();
  return true;
}
