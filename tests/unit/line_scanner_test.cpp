#include "job/line_scanner.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

// Records what the scanner hands out, in order.
class RecordingSink : public LineSink {
 public:
  void Chunk(const char* bytes, size_t length) override {
    events.push_back("C:" + std::string(bytes, length));
  }
  bool Line(const char* line, size_t length, char terminator) override {
    events.push_back("L:" + std::string(line, length) + terminator);
    return std::string(line, length) != stopAt;
  }
  void Span(const char*, size_t) override { ADD_FAILURE() << "a span, though no line was plain"; }
  std::vector<std::string> events;
  std::string stopAt = "\x01never";
};

// The byte-wise reader the scanner must match: one byte at a time into an
// 8192-byte buffer, a chunk at the 8065th byte, a line at CR or LF, and the
// end-of-file value (0xFF) stored as one more byte before the loop ends.
std::vector<std::string> ByteWise(const std::string& input) {
  std::vector<std::string> events;
  std::string line;
  size_t at = 0;
  for (;;) {
    int c = at < input.size() ? static_cast<unsigned char>(input[at++]) : EOF;
    if (c == '\r' || c == '\n') {
      events.push_back("L:" + line + static_cast<char>(c));
      line.clear();
      continue;
    }
    line += static_cast<char>(c);
    if (line.size() == kPSLineChunk) {
      events.push_back("C:" + line);
      line.clear();
    }
    if (c == EOF) break;
  }
  return events;
}

// Takes lines without an 'e' as plain and records their runs as spans,
// which Expanded() turns back into the line events they stand for.
class BatchingSink : public RecordingSink {
 public:
  bool Plain(const char* line, size_t length) override {
    return std::string(line, length).find('e') == std::string::npos;
  }
  void Span(const char* bytes, size_t length) override {
    events.push_back("S:" + std::string(bytes, length));
    ++spans;
  }
  int spans = 0;
};

std::vector<std::string> Expanded(const std::vector<std::string>& events) {
  std::vector<std::string> lines;
  for (const std::string& event : events) {
    if (event.compare(0, 2, "S:") != 0) {
      lines.push_back(event);
      continue;
    }
    std::string line;
    for (size_t i = 2; i < event.size(); ++i) {
      char c = event[i];
      if (c != '\r' && c != '\n') {
        line += c;
        continue;
      }
      EXPECT_EQ(line.find('e'), std::string::npos) << "a line that is not plain in a span";
      lines.push_back("L:" + line + c);
      line.clear();
    }
    EXPECT_EQ(line, "") << "a span must end with a line end";
  }
  return lines;
}

template <typename Sink = RecordingSink>
std::vector<std::string> Scanned(const std::string& input, const std::vector<size_t>& blocks,
                                 Sink* used = nullptr) {
  Sink sink;
  LineScanner scanner(sink);
  size_t at = 0;
  for (size_t block : blocks) {
    if (at >= input.size()) break;
    size_t take = std::min(block, input.size() - at);
    scanner.Feed(input.data() + at, take);
    at += take;
  }
  if (at < input.size()) scanner.Feed(input.data() + at, input.size() - at);
  scanner.FinishInput();
  if (used != nullptr) *used = sink;
  return sink.events;
}

// Fixed inputs in blocks of every size that matters, line by line and with
// runs of plain lines in spans.
TEST(LineScanner, MatchesByteWiseReaderForEveryBlockSize) {
  const std::string inputs[] = {
      "a\r\nb\n", "one\rtwo\rthree\r", "a\nshowpage", "", "\n\r\n\r\r",
      std::string(20000, 'x') + "\nend\n", std::string(8065, 'y') + "\n",
      std::string(8065, 'z') + "ep\n", std::string(8064, 'w') + "\n",
      std::string(8064, 'v'),  // the stored end-of-file byte completes a chunk
      std::string("a\0b\nc\0\n", 7),
  };
  for (const std::string& input : inputs) {
    const std::vector<std::string> expected = ByteWise(input);
    for (size_t block : {size_t{1}, size_t{2}, size_t{3}, size_t{7}, size_t{4096}, size_t{8065},
                         size_t{65536}}) {
      const std::vector<size_t> blocks(input.size() + 1, block);
      EXPECT_EQ(Scanned(input, blocks), expected) << "block size " << block;
      EXPECT_EQ(Expanded(Scanned<BatchingSink>(input, blocks)), expected) << "block size " << block;
    }
  }
}

// Random inputs and block splits, line by line and in spans; some inputs
// with long runs of one byte, some with lines longer than the buffer.
TEST(LineScanner, RandomInputsAndSplitsMatchByteWiseReader) {
  std::mt19937 random(20261121);
  const char alphabet[] = "ab\r\n%ep";
  for (int round = 0; round < 300; ++round) {
    std::string input;
    size_t length = random() % 30000;
    bool longRuns = random() % 2 == 0;
    while (input.size() < length) {
      char c = alphabet[random() % (sizeof alphabet - 1)];
      input.append(c == 'a' && (longRuns || random() % 50 == 0) ? random() % 9000 : 1, c);
    }
    std::vector<size_t> blocks;
    for (size_t i = 0; i < 64; ++i) blocks.push_back(1 + random() % 12000);
    const std::vector<std::string> expected = ByteWise(input);
    ASSERT_EQ(Scanned(input, blocks), expected) << "round " << round;
    ASSERT_EQ(Expanded(Scanned<BatchingSink>(input, blocks)), expected) << "round " << round;
  }
}

// Checks that Plain() is asked only about lines inside the block last shown.
class BlockCheckingSink : public BatchingSink {
 public:
  void Block(const char* bytes, size_t length) override {
    begin_ = bytes;
    end_ = bytes + length;
    ++blocks;
  }
  bool Plain(const char* line, size_t length) override {
    EXPECT_TRUE(line >= begin_ && line + length < end_) << "a line outside the block";
    return BatchingSink::Plain(line, length);
  }
  int blocks = 0;

 private:
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
};

TEST(LineScanner, ShowsEachBlockBeforeAskingAboutItsLines) {
  std::mt19937 random(20261127);
  std::string input;
  while (input.size() < 40000) input += std::string(random() % 100, 'a') + (random() % 3 ? "\n" : "\r");
  std::vector<size_t> blocks;
  for (size_t i = 0; i < 64; ++i) blocks.push_back(1 + random() % 3000);
  BlockCheckingSink sink;
  EXPECT_EQ(Expanded(Scanned<BlockCheckingSink>(input, blocks, &sink)), ByteWise(input));
  EXPECT_GE(sink.blocks, 14);
}

TEST(LineScanner, RunsOfPlainLinesInABlockComeAsOneSpan) {
  BatchingSink sink;
  std::string input = "a\nb\r\nc\nep\nx\ny\n";
  Scanned<BatchingSink>(input, {input.size()}, &sink);
  EXPECT_EQ(sink.events,
            (std::vector<std::string>{"S:a\nb\r\nc\n", "L:ep\n", "S:x\ny\n"}));
  // A line that spans two blocks comes alone, after the span before it.
  Scanned<BatchingSink>(input, {3, input.size()}, &sink);
  EXPECT_EQ(sink.events, (std::vector<std::string>{"S:a\n", "L:b\r", "S:\nc\n", "L:ep\n",
                                                   "S:x\ny\n"}));
}

TEST(LineEndMask, EveryWayOfFindingLineEndsAgrees) {
  std::mt19937 random(20261123);
  // CR and LF among bytes that differ from them in one bit, or only in the sign bit.
  const unsigned char alphabet[] = {'\r', '\n', 'a', 0x8D, 0x8A, 0x0C, 0x0B, 0x2D, 0x00, 0xFF};
  for (int round = 0; round < 2000; ++round) {
    char window[kLineEndWindow];
    uint64_t expected = 0;
    for (size_t i = 0; i < kLineEndWindow; ++i) {
      window[i] = static_cast<char>(alphabet[random() % sizeof alphabet]);
      if (window[i] == '\r' || window[i] == '\n') expected |= uint64_t{1} << i;
    }
    size_t prefix = random() % (kLineEndWindow + 1);
    ASSERT_EQ(LineEndMask(window, prefix), prefix == 64 ? expected : expected & ((uint64_t{1} << prefix) - 1));
    ASSERT_EQ(WindowLineEnds(window), expected);
#if ZPJL_SCAN_AVX2
    if (HasAvx2()) {
      ASSERT_EQ(WindowLineEndsAvx2(window), expected);
    }
#endif
  }
}

TEST(LineScanner, StopsWhenTheSinkAsks) {
  RecordingSink sink;
  sink.stopAt = "ep";
  LineScanner scanner(sink);
  std::string input = "bp\nep\nafter\n";
  EXPECT_FALSE(scanner.Feed(input.data(), input.size()));
  EXPECT_EQ(sink.events, (std::vector<std::string>{"L:bp\n", "L:ep\n"}));
}

TEST(LineScanner, KeepsUnterminatedTextPending) {
  RecordingSink sink;
  LineScanner scanner(sink);
  std::string input = "line\n%%EOF";
  scanner.Feed(input.data(), input.size());
  EXPECT_EQ(std::string(scanner.pending(), scanner.pendingLength()), "%%EOF");
}

}  // namespace
