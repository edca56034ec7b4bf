// Reading and writing FPS files, in bytes of text, against a bare pass over the same bytes.

#include <cstring>

#include "benchmarks/bench.h"
#include "korvex/fps.h"

namespace {

using namespace bench;

/// Text in memory as a stream, without copies.
class View : public std::streambuf {
 public:
  explicit View(std::string& text) { setg(text.data(), text.data(), text.data() + text.size()); }
};

/// A stream that keeps the size of what is written, and copies it.
class Sink : public std::streambuf {
 public:
  std::size_t size = 0;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    copy_.resize(std::max(copy_.size(), static_cast<std::size_t>(count)));
    std::memcpy(copy_.data(), text, static_cast<std::size_t>(count));
    size += static_cast<std::size_t>(count);
    return count;
  }

 private:
  std::vector<char> copy_;
};

void Measure(std::size_t textBytes, unsigned int numBits, unsigned int rounds) {
  const std::size_t numWords = (numBits + 63) / 64;
  const std::size_t count = textBytes / (numBits / 4 + 14);
  Random random;
  std::vector<std::uint64_t> words(count * numWords);
  for (std::uint64_t& word : words) word = random() & random();
  if (numBits % 64 != 0) {
    for (std::size_t i = 0; i < count; ++i) {
      words[(i + 1) * numWords - 1] &= (std::uint64_t{1} << numBits % 64) - 1;
    }
  }
  const auto idOf = [](std::size_t i) { return "MOL" + std::to_string(100000000 + i); };
  std::vector<std::string> ids;
  for (std::size_t i = 0; i < count; ++i) ids.push_back(idOf(i));
  ZQFPSHeader header;
  header.numBits = numBits;
  const auto writeTo = [&](zqostream& out) {
    ZQFPSWriter writer;
    bool good = writer.Open(out, "memory", header);
    for (std::size_t i = 0; i < count; ++i) good &= writer.Write(&words[i * numWords], ids[i]);
    Check(good && writer.Close(), "write");
  };
  zqosstream stream;
  writeTo(stream);
  std::string text = std::move(stream).str();
  const auto read = [&](auto visit) {
    View view(text);
    zqistream in(&view);
    ZQFPSReader reader;
    Check(reader.Open(in, "memory"), "open");
    std::size_t i = 0;
    for (ZQFPSRecord record; reader.Read(record); ++i) visit(i, record);
    Check(i == count && reader.NumSkipped() == 0, "records");
  };
  read([&](std::size_t i, const ZQFPSRecord& record) {
    Check(record.id == ids[i], "ids");
    Check(std::memcmp(record.words, &words[i * numWords], 8 * numWords) == 0, "bits");
  });

  const auto bytes = static_cast<double>(text.size());
  std::uint64_t sum = 0;
  std::vector<char> copy(std::size_t{1} << 18);
  Race race;
  race.Add("lines by memchr", bytes, [&] {
    const char* at = text.data();
    const char* end = at + text.size();
    while (
        (at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))))
      sum += reinterpret_cast<std::uintptr_t>(at++);
  });
  race.Add("copy by memcpy", bytes, [&] {
    for (std::size_t at = 0; at < text.size(); at += copy.size()) {
      std::memcpy(copy.data(), text.data() + at, std::min(copy.size(), text.size() - at));
      sum += static_cast<unsigned char>(copy[at % 64]);
    }
  });
  race.Add("read", bytes,
           [&] { read([&](std::size_t, const ZQFPSRecord& record) { sum += record.words[0]; }); });
  race.Add("write", bytes, [&] {
    Sink sink;
    zqostream out(&sink);
    writeTo(out);
    Check(sink.size == text.size(), "size");
  });
  race.Run(rounds);
  std::printf("%u bits, %zu records, %.0f MB of text (%llu)\n", numBits, count, bytes / 1e6,
              static_cast<unsigned long long>(sum % 10));
  for (const char* base : {"lines by memchr", "copy by memcpy"}) {
    for (const char* name : {"read", "write"}) race.Report(name, base, 0.08);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t megabytes = Argument(argc, argv, 1, 200);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 7));
  for (const unsigned int numBits : {166U, 1024U, 2048U, 4096U}) {
    Measure(megabytes * 1000000, numBits, rounds);
  }
  return 0;
}
