#include "filter_runner.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>

extern char** environ;


namespace {

std::vector<std::string> BuildEnvironment(const FilterJob& job) {
  std::map<std::string, std::optional<std::string>> env;
  for (char** e = environ; *e != nullptr; ++e) {
    std::string entry = *e;
    size_t eq = entry.find('=');
    if (eq != std::string::npos) env[entry.substr(0, eq)] = entry.substr(eq + 1);
  }
  env["PPD"] = job.ppd;
  for (const auto& [name, value] : job.env) env[name] = value;
  std::vector<std::string> result;
  for (const auto& [name, value] : env) {
    if (value) result.push_back(name + "=" + *value);
  }
  return result;
}

std::vector<std::string> BuildArguments(const FilterJob& job) {
  std::vector<std::string> args = {job.filter};
  if (job.argv) {
    args.insert(args.end(), job.argv->begin(), job.argv->end());
    return args;
  }
  args.insert(args.end(), {job.jobId, job.user, job.title, job.copies, job.options});
  if (job.file) args.push_back(*job.file);
  return args;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (std::string& s : strings) pointers.push_back(s.data());
  pointers.push_back(nullptr);
  return pointers;
}

void SetNonBlocking(int fd) { fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK); }

}  // namespace

FilterProcess::FilterProcess(const FilterJob& job) {
  signal(SIGPIPE, SIG_IGN);  // a filter that stops reading must not kill the test
  int inPipe[2], outPipe[2], errPipe[2];
  if (pipe(inPipe) != 0 || pipe(outPipe) != 0 || pipe(errPipe) != 0) {
    ADD_FAILURE() << "pipe: " << strerror(errno);
    return;
  }
  std::vector<std::string> args = BuildArguments(job);
  std::vector<std::string> env = BuildEnvironment(job);
  std::vector<char*> argp = Pointers(args);
  std::vector<char*> envp = Pointers(env);
  pid_ = fork();
  if (pid_ == 0) {
    signal(SIGPIPE, SIG_DFL);
    dup2(inPipe[0], 0);
    dup2(outPipe[1], 1);
    dup2(errPipe[1], 2);
    for (int fd : {inPipe[0], inPipe[1], outPipe[0], outPipe[1], errPipe[0], errPipe[1]}) close(fd);
    execvpe(argp[0], argp.data(), envp.data());
    _exit(127);
  }
  close(inPipe[0]);
  close(outPipe[1]);
  close(errPipe[1]);
  in_ = inPipe[1];
  out_ = outPipe[0];
  err_ = errPipe[0];
  SetNonBlocking(in_);
  SetNonBlocking(out_);
  SetNonBlocking(err_);
}

FilterProcess::~FilterProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  for (int fd : {in_, out_, err_}) {
    if (fd >= 0) close(fd);
  }
}

void FilterProcess::Pump(int timeoutMs) {
  std::vector<pollfd> fds;
  if (out_ >= 0) fds.push_back({out_, POLLIN, 0});
  if (err_ >= 0) fds.push_back({err_, POLLIN, 0});
  if (fds.empty()) return;
  if (poll(fds.data(), fds.size(), timeoutMs) <= 0) return;
  char buffer[65536];
  for (const pollfd& p : fds) {
    if ((p.revents & (POLLIN | POLLHUP)) == 0) continue;
    ssize_t got = read(p.fd, buffer, sizeof buffer);
    if (got > 0 && p.fd == out_ && outputSink_) {
      outputSink_(buffer, static_cast<size_t>(got));
    } else if (got > 0) {
      (p.fd == out_ ? run_.out : run_.err).append(buffer, static_cast<size_t>(got));
    } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
      close(p.fd);
      (p.fd == out_ ? out_ : err_) = -1;
    }
  }
}

bool FilterProcess::Write(const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    if (in_ < 0) return false;
    ssize_t put = write(in_, bytes.data() + done, bytes.size() - done);
    if (put > 0) {
      done += static_cast<size_t>(put);
    } else if (put < 0 && errno == EPIPE) {
      return false;
    } else {
      // Wait until the filter takes input or has output to be read: a
      // filter blocked on a full output pipe reads no more input.
      std::vector<pollfd> fds = {{in_, POLLOUT, 0}};
      if (out_ >= 0) fds.push_back({out_, POLLIN, 0});
      if (err_ >= 0) fds.push_back({err_, POLLIN, 0});
      poll(fds.data(), fds.size(), 1000);
      Pump(0);
    }
  }
  return true;
}

void FilterProcess::CloseInput() {
  if (in_ >= 0) close(in_);
  in_ = -1;
}

void FilterProcess::CloseOutput() {
  if (out_ >= 0) close(out_);
  out_ = -1;
}

bool FilterProcess::WaitForError(const std::string& text, int seconds) {
  for (int waited = 0; waited < seconds * 100; ++waited) {
    if (run_.err.find(text) != std::string::npos) return true;
    Pump(10);
  }
  return run_.err.find(text) != std::string::npos;
}

void FilterProcess::StreamOutput(std::function<void(const char*, size_t)> sink) {
  outputSink_ = std::move(sink);
}

void FilterProcess::Signal(int signalNumber) { kill(pid_, signalNumber); }

FilterRun FilterProcess::Finish() {
  CloseInput();
  while (out_ >= 0 || err_ >= 0) Pump(1000);
  int status = 0;
  struct rusage usage = {};
  wait4(pid_, &status, 0, &usage);
  pid_ = -1;
  run_.maxRssKb = usage.ru_maxrss;
  if (WIFEXITED(status)) run_.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) run_.termSignal = WTERMSIG(status);
  return run_;
}

FilterRun RunFilter(const FilterJob& job) {
  FilterProcess process(job);
  process.Write(job.input);
  return process.Finish();
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::vector<std::string> FilesIn(const std::string& dir) {
  std::vector<std::string> names;
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d)) {
      if (e->d_name[0] != '.') names.push_back(e->d_name);
    }
    closedir(d);
  }
  return names;
}

std::string ClientHostName(bool utf8Printer) {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "UnknownHost";
  return std::string(name).substr(0, utf8Printer ? 32 : 96);
}

::testing::AssertionResult SameStream(const std::string& expected, const std::string& actual) {
  if (expected == actual) return ::testing::AssertionSuccess();
  size_t at = 0;
  while (at < expected.size() && at < actual.size() && expected[at] == actual[at]) ++at;
  // Big streams show their first 20000 bytes whole.
  return ::testing::AssertionFailure()
         << "streams differ at byte " << at << " (expected " << expected.size() << " bytes, got "
         << actual.size() << ")\n--- expected ---\n"
         << Visible(expected.substr(0, 20000)) << "\n--- actual ---\n"
         << Visible(actual.substr(0, 20000)) << "\n--- actual from the difference ---\n"
         << Visible(actual.substr(at, 200));
}

StreamParts SplitStream(const std::string& stream) {
  StreamParts parts;
  const std::string enter = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
  size_t headerEnd = stream.find(enter);
  headerEnd = headerEnd == std::string::npos ? 0 : headerEnd + enter.size();
  size_t trailerStart = stream.rfind(kTrailer);
  if (trailerStart == std::string::npos || trailerStart < headerEnd) trailerStart = stream.size();
  parts.header = stream.substr(0, headerEnd);
  parts.body = stream.substr(headerEnd, trailerStart - headerEnd);
  parts.trailer = stream.substr(trailerStart);
  return parts;
}
