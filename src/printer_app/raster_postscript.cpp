#include "printer_app/raster_postscript.h"

#include <unistd.h>

#include <climits>
#include <map>
#include <mutex>
#include <cstdio>
#include <string>

#include "printer_app/print_job.h"

namespace {

// ASCII85 text of a byte stream, in lines of at most 75 characters.
class Ascii85Writer {
 public:
  explicit Ascii85Writer(FILE* out) : out_(out) {}
  void Put(const unsigned char* data, size_t length) {
    for (size_t i = 0; i < length; ++i) {
      group_ = (group_ << 8) | data[i];
      if (++count_ == 4) Flush(4);
    }
  }
  void Finish() {
    if (count_ > 0) {
      const int used = count_;
      for (int i = count_; i < 4; ++i) group_ <<= 8;
      Flush(used);
    }
    fputs("~>\n", out_);
    column_ = 0;
  }

 private:
  void Flush(int used) {
    if (used == 4 && group_ == 0) {
      Emit("z", 1);
    } else {
      char digits[5];
      uint32_t value = group_;
      for (int i = 4; i >= 0; --i) {
        digits[i] = static_cast<char>('!' + value % 85);
        value /= 85;
      }
      Emit(digits, static_cast<size_t>(used + 1));
    }
    group_ = 0;
    count_ = 0;
  }
  void Emit(const char* text, size_t length) {
    for (size_t i = 0; i < length; ++i) {
      fputc(text[i], out_);
      if (++column_ == 75) {
        fputc('\n', out_);
        column_ = 0;
      }
    }
  }
  FILE* out_;
  uint32_t group_ = 0;
  int count_ = 0;
  int column_ = 0;
};

struct RasterJob {
  std::string path;
  FILE* out = nullptr;
  unsigned pages = 0;
  Ascii85Writer* text = nullptr;
};

// The jobs being rendered. Not PAPPL's job data pointer: PAPPL's own image
// filters keep theirs there.
std::mutex rasterJobsMutex;
std::map<pappl_job_t*, RasterJob*>& RasterJobs() {
  static std::map<pappl_job_t*, RasterJob*> jobs;
  return jobs;
}

RasterJob* JobState(pappl_job_t* job) {
  std::lock_guard<std::mutex> lock(rasterJobsMutex);
  auto found = RasterJobs().find(job);
  return found != RasterJobs().end() ? found->second : nullptr;
}

void SetJobState(pappl_job_t* job, RasterJob* state) {
  std::lock_guard<std::mutex> lock(rasterJobsMutex);
  if (state != nullptr) {
    RasterJobs()[job] = state;
  } else {
    RasterJobs().erase(job);
  }
}

// One raster line in PostScript's run-length code: runs of a repeated
// byte as (257 - count, byte), other bytes as (count - 1, bytes...).
void PutRunLength(Ascii85Writer& text, const unsigned char* line, size_t length) {
  size_t i = 0;
  while (i < length) {
    size_t run = 1;
    while (i + run < length && run < 128 && line[i + run] == line[i]) ++run;
    if (run >= 2) {
      const unsigned char code[2] = {static_cast<unsigned char>(257 - run), line[i]};
      text.Put(code, 2);
      i += run;
      continue;
    }
    size_t literal = 1;
    while (i + literal < length && literal < 128 &&
           !(i + literal + 1 < length && line[i + literal] == line[i + literal + 1]))
      ++literal;
    const unsigned char code = static_cast<unsigned char>(literal - 1);
    text.Put(&code, 1);
    text.Put(line + i, literal);
    i += literal;
  }
}

void Discard(pappl_job_t* job, RasterJob* state) {
  if (state == nullptr) return;
  if (state->out != nullptr) fclose(state->out);
  if (!state->path.empty()) unlink(state->path.c_str());
  delete state->text;
  delete state;
  SetJobState(job, nullptr);
}

}  // namespace

bool StartRasterJob(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*) {
  Discard(job, JobState(job));
  auto* state = new RasterJob;
  SetJobState(job, state);
  char path[1024];
  const int fd = papplJobOpenFile(job, path, sizeof path, nullptr, "ps", "w");
  if (fd < 0 || (state->out = fdopen(fd, "w")) == nullptr) {
    if (fd >= 0) close(fd);
    papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "Unable to create the job's PostScript file.");
    Discard(job, state);
    return false;
  }
  state->path = path;
  state->text = new Ascii85Writer(state->out);
  fputs("%!PS-Adobe-3.0\n%%Creator: zpjl-printer-app\n%%LanguageLevel: 3\n%%Pages: (atend)\n"
        "%%EndComments\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n%%EndSetup\n",
        state->out);
  return true;
}

// The image's colour space and sample decoding for the page's raster:
// grey and RGB from PAPPL's sGray and sRGB, and the 1-bit black of
// bi-level documents, where 1 is black.
struct ImageSpace {
  const char* space;
  const char* decode;
};

ImageSpace SpaceOf(const cups_page_header2_t& h) {
  if (h.cupsNumColors == 3) return {"RGB", "0 1 0 1 0 1"};
  if (h.cupsColorSpace == CUPS_CSPACE_K) return {"Gray", "1 0"};
  return {"Gray", "0 1"};
}

bool StartRasterPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*,
                     unsigned) {
  RasterJob* state = JobState(job);
  if (state == nullptr) return false;
  const auto& h = options->header;
  const ImageSpace image = SpaceOf(h);
  ++state->pages;
  fprintf(state->out,
          "%%%%Page: %u %u\n%%%%BeginPageSetup\n%%%%EndPageSetup\ngsave\n%u %u scale\n"
          "/Device%s setcolorspace\n"
          "<< /ImageType 1 /Width %u /Height %u /BitsPerComponent %u /Decode [%s]\n"
          "   /ImageMatrix [%u 0 0 -%u 0 %u]\n"
          "   /DataSource currentfile /ASCII85Decode filter /RunLengthDecode filter >> image\n",
          state->pages, state->pages, h.PageSize[0], h.PageSize[1], image.space, h.cupsWidth,
          h.cupsHeight, h.cupsBitsPerColor, image.decode, h.cupsWidth, h.cupsHeight,
          h.cupsHeight);
  return true;
}

bool WriteRasterLine(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*, unsigned,
                     const unsigned char* line) {
  RasterJob* state = JobState(job);
  if (state == nullptr) return false;
  PutRunLength(*state->text, line, options->header.cupsBytesPerLine);
  return true;
}

bool EndRasterPage(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*, unsigned) {
  RasterJob* state = JobState(job);
  if (state == nullptr) return false;
  const unsigned char endOfData = 128;
  state->text->Put(&endOfData, 1);
  state->text->Finish();
  fputs("grestore\nshowpage\n", state->out);
  return true;
}

bool EndRasterJob(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*) {
  RasterJob* state = JobState(job);
  if (state == nullptr) return false;
  fprintf(state->out, "%%%%Trailer\n%%%%Pages: %u\n%%%%EOF\n", state->pages);
  const bool written = fflush(state->out) == 0;
  const bool ok = written && PrintThroughFilter(job, options, {}, state->path);
  Discard(job, state);
  return ok;
}
