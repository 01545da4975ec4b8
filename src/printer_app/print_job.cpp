#include "printer_app/print_job.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "printer_app/app_paths.h"
#include "printer_app/file_device.h"
#include "printer_app/printer_drivers.h"
#include "printer_app/sealed_password.h"

extern char** environ;

namespace {

std::string& JobTempDirectory() {
  static std::string directory = "/tmp";
  return directory;
}

std::string Text(const char* text) { return text != nullptr ? text : ""; }

std::string AttributeText(pappl_job_t* job, const char* name) {
  ipp_attribute_t* attr = papplJobGetAttribute(job, name);
  const char* text = attr != nullptr ? ippGetString(attr, 0, nullptr) : nullptr;
  return text != nullptr ? text : "";
}

const char* SidesKeyword(pappl_sides_t sides) {
  switch (sides) {
    case PAPPL_SIDES_TWO_SIDED_LONG_EDGE: return "two-sided-long-edge";
    case PAPPL_SIDES_TWO_SIDED_SHORT_EDGE: return "two-sided-short-edge";
    default: return "one-sided";
  }
}

const char* ColorKeyword(pappl_color_mode_t mode) {
  if (mode == PAPPL_COLOR_MODE_COLOR) return "color";
  if (mode == PAPPL_COLOR_MODE_MONOCHROME || mode == PAPPL_COLOR_MODE_AUTO_MONOCHROME)
    return "monochrome";
  return "";  // auto: the printer's default
}

// A child's standard error line, made safe for the log.
std::string Printable(const std::string& line) {
  std::string out;
  for (unsigned char c : line) out += (c >= 0x20 && c < 0x7f) ? static_cast<char>(c) : '?';
  return out;
}

pappl_loglevel_t LevelOf(const std::string& line) {
  if (line.rfind("ERROR", 0) == 0) return PAPPL_LOGLEVEL_ERROR;
  if (line.rfind("WARNING", 0) == 0) return PAPPL_LOGLEVEL_WARN;
  if (line.rfind("DEBUG", 0) == 0 || line.rfind("##", 0) == 0) return PAPPL_LOGLEVEL_DEBUG;
  return PAPPL_LOGLEVEL_INFO;
}

struct Pipe {
  int read = -1;
  int write = -1;
  bool Open() {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return false;
    read = fds[0];
    write = fds[1];
    return true;
  }
};

void CloseFd(int& fd) {
  if (fd >= 0) close(fd);
  fd = -1;
}

// Starts one stage with the given standard input, output and error.
pid_t Spawn(const std::vector<std::string>& args, const std::vector<std::string>& env, int in,
            int out, int err) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (const std::string& e : env) envp.push_back(const_cast<char*>(e.c_str()));
  envp.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, 0);
  posix_spawn_file_actions_adddup2(&actions, out, 1);
  posix_spawn_file_actions_adddup2(&actions, err, 2);
  pid_t pid = -1;
  if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data()) != 0) pid = -1;
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

// Copies the last stage's output to the device and logs every stage's
// standard error, until both end. Stops the children when the job is
// cancelled.
bool Relay(pappl_job_t* job, JobOutput& device, int output, int errors,
           const std::vector<pid_t>& children) {
  bool written = true;
  bool stopped = false;
  std::string pending;
  char buffer[65536];
  struct pollfd fds[2] = {{output, POLLIN, 0}, {errors, POLLIN, 0}};
  while (fds[0].fd >= 0 || fds[1].fd >= 0) {
    if (!stopped && papplJobIsCanceled(job)) {
      for (pid_t child : children) kill(child, SIGTERM);
      stopped = true;
    }
    if (poll(fds, 2, 1000) < 0 && errno != EINTR) break;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
      if (n <= 0) {
        if (n < 0 && errno == EINTR) continue;
        close(fds[i].fd);
        fds[i].fd = -1;
      } else if (i == 0) {
        written = device.Write(buffer, static_cast<size_t>(n)) && written;
      } else {
        pending.append(buffer, static_cast<size_t>(n));
        size_t end;
        while ((end = pending.find('\n')) != std::string::npos) {
          const std::string line = pending.substr(0, end);
          papplLogJob(job, LevelOf(line), "%s", Printable(line).c_str());
          pending.erase(0, end + 1);
        }
      }
    }
  }
  return written && !stopped;
}

}  // namespace

void SetJobTempDirectory(const std::string& directory) { JobTempDirectory() = directory; }

JobRequest ReadJobRequest(pappl_job_t* job, pappl_pr_options_t* options) {
  JobRequest request;
  request.user = Text(papplJobGetUsername(job));
  request.jobName = Text(papplJobGetName(job));
  request.copies = options->copies;
  request.sides = SidesKeyword(options->sides);
  request.colorMode = ColorKeyword(options->print_color_mode);
  const PrinterDriver* driver = DriverOfPrinter(papplJobGetPrinter(job));
  const PrinterMedia* media =
      driver != nullptr ? FindMedia(*driver, options->media.size_name) : nullptr;
  if (media != nullptr) {
    request.pageSize = media->ppdName;
    request.pageWidthPoints = media->widthPoints;
    request.pageLengthPoints = media->lengthPoints;
  }
  request.orientation = static_cast<int>(options->orientation_requested);
  ipp_attribute_t* finishings = papplJobGetAttribute(job, "finishings");
  for (int i = 0; finishings != nullptr && i < ippGetCount(finishings); ++i)
    request.finishings.push_back(ippGetInteger(finishings, i));
  request.accountId = AttributeText(job, "job-account-id");
  request.accountingUserId = AttributeText(job, "job-accounting-user-id");
  request.sealedPassword =
      WithdrawSealedPassword(JobKey(papplPrinterGetID(papplJobGetPrinter(job)), papplJobGetID(job)));
  const char* pages = cupsGetOption("zpjl-watermark-pages", options->num_vendor, options->vendor);
  request.watermarkText = AttributeText(job, "zpjl-watermark-text");
  request.watermarkPages = pages != nullptr ? pages : "";
  return request;
}

bool PrintThroughFilter(pappl_job_t* job, pappl_pr_options_t* options,
                        const std::vector<std::vector<std::string>>& converters,
                        const std::string& inputPath) {
  const PrinterDriver* driver = DriverOfPrinter(papplJobGetPrinter(job));
  const std::string filter = FilterProgram();
  if (driver == nullptr || filter.empty()) {
    papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "No PPD or no pstozpjl for this printer.");
    return false;
  }
  const std::unique_ptr<JobOutput> device = JobOutput::Open(job);
  if (device == nullptr) return false;
  const FilterArguments args = MapJobToTicket(ReadJobRequest(job, options), driver->profile);
  const std::string id = std::to_string(papplJobGetID(job));
  const std::string copies = std::to_string(args.copies);
  std::vector<std::vector<std::string>> stages = converters;
  stages.push_back({PstopsProgram(), id, args.user, args.title, copies,
                    EncodeTicketOptions(args.layoutOptions)});
  // pstops made the copies; the filter's copies argument only labels its page log.
  stages.push_back({filter, id, args.user, args.title, copies, EncodeTicketOptions(args.options)});
  const std::vector<std::string> env = {"PPD=" + driver->ppdPath, "TMPDIR=" + JobTempDirectory(),
                                        "PATH=/usr/bin:/bin", "LANG=C"};

  int input = inputPath.empty() ? open("/dev/null", O_RDONLY | O_CLOEXEC)
                                : open(inputPath.c_str(), O_RDONLY | O_CLOEXEC);
  Pipe errors;
  if (input < 0 || !errors.Open()) {
    papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "Unable to open the job's document: %s",
                strerror(errno));
    CloseFd(input);
    return false;
  }
  std::vector<pid_t> children;
  int output = -1;
  for (const std::vector<std::string>& stage : stages) {
    Pipe link;
    if (!link.Open()) break;
    const pid_t pid = Spawn(stage, env, input, link.write, errors.write);
    CloseFd(input);
    CloseFd(link.write);
    input = link.read;
    if (pid < 0) {
      papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "Unable to start %s.", stage[0].c_str());
      break;
    }
    children.push_back(pid);
  }
  CloseFd(errors.write);
  if (children.size() == stages.size()) {
    output = input;
    input = -1;
  }
  CloseFd(input);
  bool ok = children.size() == stages.size() &&
            Relay(job, *device, output, errors.read, children);
  if (output < 0) CloseFd(errors.read);
  for (size_t i = 0; i < children.size(); ++i) {
    int status = 0;
    while (waitpid(children[i], &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s stopped with status %d.", stages[i][0].c_str(),
                  status);
      ok = false;
    }
  }
  return ok;
}

bool PrintPostScriptFile(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*) {
  const std::string document = Text(papplJobGetFilename(job));
  if (document.empty()) return false;
  return PrintThroughFilter(job, options, {}, document);
}

bool PrintPdfFile(pappl_job_t* job, pappl_device_t*, void*) {
  const std::string document = Text(papplJobGetFilename(job));
  if (document.empty()) return false;
  pappl_pr_options_t* options = papplJobCreatePrintOptions(job, 0, true);
  const bool ok =
      PrintThroughFilter(job, options, {{PdfToPsProgram(), "-level3", document, "-"}}, "");
  papplJobDeletePrintOptions(options);
  return ok;
}
