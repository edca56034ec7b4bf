#include "korvex/fps.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <set>
#include <system_error>

#include "contract/bostrel/characters_local.h"
#include "contract/bostrel/strings.h"
#include "contract/vantrel/gzip_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

constexpr std::string_view signature = "#FPS1";
constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
/// The buffers of both directions: the cost of a call to the system disappears, and the second
/// level cache of a core still holds them.
constexpr std::size_t bufferBytes = std::size_t{1} << 18;
/// A longer line isn't a record, whatever it has. The digits of a fingerprint take a quarter of it.
constexpr std::size_t maxLine = zqFPSMaxBits;

std::size_t BytesOf(unsigned int numBits) { return (std::size_t{numBits} + 7) / 8; }
std::size_t WordsOf(unsigned int numBits) { return (std::size_t{numBits} + 63) / 64; }
/// The bits of the last byte that are part of a fingerprint.
unsigned char LastByteMask(unsigned int numBits) {
  return static_cast<unsigned char>(0xFF >> (7 - (numBits + 7) % 8));
}

// Both conversions are loops without branches over blocks, which compilers turn into vector
// instructions.
constexpr std::size_t blockBytes = 64;

/// Reads two digits for each byte; false if any character isn't a digit.
bool FromHex(const char* text, unsigned char* bytes, std::size_t count) {
  unsigned char bad = 0;
  const auto convert = [&](std::size_t n) {
    std::array<unsigned char, 2 * blockBytes> nibbles;
    for (std::size_t i = 0; i < 2 * n; ++i) {
      const auto c = static_cast<unsigned char>(text[i]);
      const auto digit = static_cast<unsigned char>(c - '0');
      const auto letter = static_cast<unsigned char>((c | 0x20) - 'a');
      bad |= static_cast<unsigned char>((digit > 9) & (letter > 5));
      nibbles[i] = digit <= 9 ? digit : static_cast<unsigned char>(letter + 10);
    }
    for (std::size_t i = 0; i < n; ++i) {
      bytes[i] = static_cast<unsigned char>(nibbles[2 * i] << 4 | nibbles[2 * i + 1]);
    }
    text += 2 * n;
    bytes += n;
  };
  for (; count >= blockBytes; count -= blockBytes) convert(blockBytes);
  convert(count);
  return bad == 0;
}

void ToHex(const unsigned char* bytes, char* text, std::size_t count) {
  const auto digitOf = [](unsigned int nibble) {
    return static_cast<char>(nibble + '0' + (nibble > 9 ? 'a' - '9' - 1 : 0));
  };
  for (std::size_t i = 0; i < count; ++i) {
    text[2 * i] = digitOf(bytes[i] >> 4);
    text[2 * i + 1] = digitOf(bytes[i] & 15U);
  }
}

/// A character as messages print it.
std::string Quoted(char c) {
  if (c > ' ' && c < '\x7f') return std::string("'") + c + "'";
  if (c == ' ') return "a blank";
  if (c == '\t') return "a tab";
  return "byte " + std::to_string(static_cast<unsigned char>(c));
}

/// The beginning of a line as messages print it.
std::string Quoted(std::string_view line) {
  constexpr std::size_t most = 40;
  std::string text(line.substr(0, most));
  std::ranges::replace_if(
      text, [](char c) { return c < ' ' || c > '~'; }, '?');
  return "'" + text + (line.size() > most ? "...'" : "'");
}

/// The cause of a failed read or write, from `errno`.
std::string SystemCause() { return std::generic_category().message(errno ? errno : EIO); }

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }
bool EndsAnId(char c) { return c == '\t' || c == '\n' || c == '\r'; }

std::size_t NumHexDigits(std::string_view line) {
  return std::min(line.find_first_not_of(hexDigits), line.size());
}

}  // namespace

bool ZQIsFPSName(const std::string& filename) {
  const std::size_t end = filename.size() - (ZQIsGzipName(filename) ? 3 : 0);
  const std::string extension = ZQFileExtension(filename.substr(0, end));
  return std::ranges::equal(extension, std::string("fps"), {}, ToLower);
}

// The reader.

class ZQFPSReader::Impl {
 public:
  bool Open(const std::string& filename);
  bool Open(zqistream& in, const std::string& name);
  bool Read(ZQFPSRecord& record);

  ZQFPSHeader header;
  bool isGood = false;
  std::uint64_t numSkipped = 0;

 private:
  bool OpenPacked(zqistream& packed);
  bool Begin(zqistream& in);
  bool Fill();
  bool NextLine(std::string_view& line, std::size_t skip);
  bool ReadHeader();
  bool ReadHeaderLine(std::string_view line);
  bool ReadNumBits(std::string_view value);
  bool Parse(std::string_view line, ZQFPSRecord& record);
  bool ReadNext(ZQFPSRecord& record);
  void SetNumBits(unsigned int numBits);
  void SkipRecord(std::string_view line);
  bool Fail(const std::string& cause);
  void Skip(const std::string& found, const std::string& expected);

  std::string name_;
  zqifstream file_;
  std::unique_ptr<zqigzstream> unpacked_;
  zqistream* in_ = nullptr;

  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of what isn't read yet in the buffer
  std::size_t end_ = 0;
  std::uint64_t line_ = 0;  // the number of the last line

  std::size_t numDigits_ = 0;
  std::vector<std::uint64_t> words_;
  std::set<std::string> seenKeys_;
  ZQFPSRecord first_;  // read when the file is opened
  bool hasFirst_ = false;
};

bool ZQFPSReader::Impl::Fail(const std::string& cause) {
  isGood = false;
  ZQThrow.Error("Can't read fingerprints from %s: %s", name_.c_str(), cause.c_str());
  return false;
}

void ZQFPSReader::Impl::Skip(const std::string& found, const std::string& expected) {
  ++numSkipped;
  ZQThrow.Warning("line %lu of %s is left out: found %s, expected %s", line_, name_.c_str(),
                  found.c_str(), expected.c_str());
}

bool ZQFPSReader::Impl::Open(const std::string& filename) {
  name_ = filename;
  std::string cause;
  if (!file_.Open(filename, &cause)) return Fail(cause);
  return ZQIsGzipName(filename) ? OpenPacked(file_) : Open(file_, filename);
}

bool ZQFPSReader::Impl::Open(zqistream& in, const std::string& name) {
  constexpr int gzipMark = 0x1F;  // no text begins with it
  name_ = name;
  errno = 0;
  if (in.peek() == gzipMark) return OpenPacked(in);
  return in.bad() ? Fail(SystemCause()) : Begin(in);
}

bool ZQFPSReader::Impl::OpenPacked(zqistream& packed) {
  unpacked_ = std::make_unique<zqigzstream>(packed);
  return Begin(*unpacked_);
}

bool ZQFPSReader::Impl::Begin(zqistream& in) {
  in_ = &in;
  isGood = true;
  buffer_.resize(bufferBytes);
  if (!ReadHeader()) return false;
  hasFirst_ = ReadNext(first_);
  return hasFirst_ || (isGood && Fail("no line of it is a fingerprint"));
}

/// Reads more text behind what isn't read yet. False at the end of the data.
bool ZQFPSReader::Impl::Fill() {
  if (!isGood) return false;
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
  errno = 0;
  in_->read(buffer_.data() + end_, static_cast<std::streamsize>(buffer_.size() - end_));
  const auto count = static_cast<std::size_t>(in_->gcount());
  end_ += count;
  if (unpacked_ && !unpacked_->GetFault().empty()) return Fail(unpacked_->GetFault());
  if (in_->bad()) return Fail(SystemCause());
  return count != 0;
}

/// The next line without its end. The first `skip` characters aren't searched for it, so that these
/// may include line feeds. Of a line that is too long only the beginning is kept.
bool ZQFPSReader::Impl::NextLine(std::string_view& line, std::size_t skip) {
  std::size_t searched = skip;
  const char* feed = nullptr;
  for (;;) {
    const char* text = buffer_.data() + begin_;
    const std::size_t size = end_ - begin_;
    if (searched < size) {
      feed = static_cast<const char*>(std::memchr(text + searched, '\n', size - searched));
      if (feed) break;
      searched = size;
      if (size > maxLine) break;
    }
    if (!Fill()) break;
  }
  if (!isGood || begin_ == end_) return false;
  const char* text = buffer_.data() + begin_;
  const std::size_t size = feed ? static_cast<std::size_t>(feed - text) : end_ - begin_;
  line = {text, size};
  begin_ += size + (feed ? 1 : 0);
  ++line_;
  return true;
}

void ZQFPSReader::Impl::SetNumBits(unsigned int numBits) {
  header.numBits = numBits;
  numDigits_ = 2 * BytesOf(numBits);
  words_.assign(WordsOf(numBits), 0);
}

bool ZQFPSReader::Impl::ReadHeader() {
  for (;;) {
    while (begin_ == end_ && Fill()) {
    }
    if (!isGood) return false;
    if (begin_ == end_) break;
    const bool isFirst = line_ == 0;
    if (!isFirst && buffer_[begin_] != '#') return true;
    std::string_view line;
    if (!NextLine(line, 0)) return false;
    if (line.size() > maxLine) {
      return Fail("line " + std::to_string(line_) + " has more than " + std::to_string(maxLine) +
                  " characters");
    }
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (isFirst && line.starts_with(byteOrderMark)) line.remove_prefix(byteOrderMark.size());
    if (!isFirst) {
      if (!ReadHeaderLine(line)) return false;
      continue;
    }
    if (line == signature) continue;
    // A first line that may be part of a file which somebody's program wrote without the signature.
    const bool isHeader = line.starts_with('#') && !line.starts_with(signature.substr(0, 4)) &&
                          line.find('=') != std::string_view::npos;
    const std::size_t digits = NumHexDigits(line);
    const bool isRecord = digits != 0 && digits < line.size() && line[digits] == '\t';
    if (!isHeader && !isRecord) {
      return Fail("found " + Quoted(line) + " in line 1, expected " + std::string(signature));
    }
    ZQThrow.Warning("line 1 of %s: found %s, expected #FPS1", name_.c_str(), Quoted(line).c_str());
    if (isHeader && !ReadHeaderLine(line)) return false;
    if (isRecord) {
      // `NextLine` may have moved the text to the front.
      begin_ = static_cast<std::size_t>(line.data() - buffer_.data());
      line_ = 0;
      return true;
    }
  }
  return Fail(line_ == 0 ? "it is empty, expected #FPS1 in line 1"
                         : "no line of it is a fingerprint");
}

bool ZQFPSReader::Impl::ReadNumBits(std::string_view value) {
  unsigned int numBits = 0;
  if (!ZQStringToNumber(value, numBits) || numBits == 0 || numBits > zqFPSMaxBits) {
    return Fail("found " + Quoted(value) + " as num_bits in line " + std::to_string(line_) +
                ", expected a number from 1 to " + std::to_string(zqFPSMaxBits));
  }
  SetNumBits(numBits);
  return true;
}

bool ZQFPSReader::Impl::ReadHeaderLine(std::string_view line) {
  const std::size_t sign = line.find('=');
  if (sign == std::string_view::npos || sign == 1) {
    Skip(Quoted(line), "#key=value");
    return true;
  }
  const std::string key(line.substr(1, sign - 1));
  const std::string_view value = line.substr(sign + 1);
  if (key == "source") {
    header.sources.emplace_back(value);
    return true;
  }
  std::string* text = key == "type"       ? &header.type
                      : key == "software" ? &header.software
                      : key == "date"     ? &header.date
                                          : nullptr;
  if (!text && key != "num_bits") {
    header.others.emplace_back(key, value);
    return true;
  }
  // The first of two lines may be what was meant as well as the last.
  if (!seenKeys_.insert(key).second) {
    return Fail("line " + std::to_string(line_) + " is a second #" + key + ", expected one");
  }
  if (!text) return ReadNumBits(value);
  *text = value;
  return true;
}

bool ZQFPSReader::Impl::Parse(std::string_view line, ZQFPSRecord& record) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.size() <= numDigits_ || line.size() > maxLine || line[numDigits_] != '\t') return false;
  auto* bytes = reinterpret_cast<unsigned char*>(words_.data());
  const std::size_t count = numDigits_ / 2;
  if (!FromHex(line.data(), bytes, count)) return false;
  if ((bytes[count - 1] & ~LastByteMask(header.numBits)) != 0) return false;
  const std::string_view rest = line.substr(numDigits_ + 1);
  record = {words_.data(), rest.substr(0, rest.find('\t'))};
  return true;
}

bool ZQFPSReader::Impl::ReadNext(ZQFPSRecord& record) {
  for (std::string_view line; NextLine(line, numDigits_);) {
    if (numDigits_ == 0) {
      const std::size_t digits = NumHexDigits(line);
      if (digits != 0 && digits % 2 == 0 && digits <= zqFPSMaxBits / 4 && digits < line.size() &&
          line[digits] == '\t') {
        SetNumBits(static_cast<unsigned int>(4 * digits));
      }
    }
    if (numDigits_ != 0 && Parse(line, record)) return true;
    const std::size_t feed = line.find('\n');
    if (feed != std::string_view::npos) {  // a short line, and more behind it
      line = line.substr(0, feed);
      begin_ = static_cast<std::size_t>(line.data() - buffer_.data()) + feed + 1;
    }
    SkipRecord(line);
  }
  return false;
}

/// Reports what is wrong with a line. Of one that is too long, drops the rest.
void ZQFPSReader::Impl::SkipRecord(std::string_view line) {
  if (line.size() > maxLine) {
    Skip("more than " + std::to_string(maxLine) + " characters", "a shorter line");
    if (buffer_[begin_ - 1] == '\n') return;
    for (;;) {
      const char* text = buffer_.data() + begin_;
      const void* feed = std::memchr(text, '\n', end_ - begin_);
      if (feed) {
        begin_ += static_cast<std::size_t>(static_cast<const char*>(feed) - text) + 1;
        return;
      }
      begin_ = end_;
      if (!Fill()) return;
    }
  }
  if (line.ends_with('\r')) line.remove_suffix(1);
  const std::size_t digits = NumHexDigits(line);
  const std::string wanted = numDigits_ == 0 ? "an even number of digits"
                                             : std::to_string(numDigits_) + " digits (" +
                                                   std::to_string(header.numBits) + " bits)";
  if (line.empty()) {
    Skip("an empty line", wanted);
  } else if (line[0] == '#') {
    Skip("a header line after the first fingerprint", wanted);
  } else if (digits < line.size() && line[digits] != '\t') {
    Skip(Quoted(line[digits]) + " in column " + std::to_string(digits + 1),
         digits == numDigits_ ? "a tab and an id" : "a hexadecimal digit");
  } else if (digits % 2 != 0 || digits == 0 || (numDigits_ != 0 && digits != numDigits_)) {
    Skip(std::to_string(digits) + (digits == 1 ? " digit" : " digits"), wanted);
  } else if (digits == line.size()) {
    Skip("the end of the line", "a tab and an id");
  } else if (numDigits_ == 0) {
    Skip(std::to_string(digits) + " digits",
         "at most " + std::to_string(zqFPSMaxBits / 4) + " digits");
  } else {
    Skip("a bit beyond the " + std::to_string(header.numBits) + " of a fingerprint", "zeros there");
  }
}

bool ZQFPSReader::Impl::Read(ZQFPSRecord& record) {
  if (!hasFirst_) return isGood && ReadNext(record);
  hasFirst_ = false;
  record = first_;
  return true;
}

ZQFPSReader::ZQFPSReader() : impl_(std::make_unique<Impl>()) {}
ZQFPSReader::~ZQFPSReader() = default;

bool ZQFPSReader::Open(const std::string& filename) {
  return ZQGuardMemory("ZQFPSReader::Open()", [&] {
    impl_ = std::make_unique<Impl>();
    return impl_->Open(filename);
  });
}

bool ZQFPSReader::Open(zqistream& in, const std::string& name) {
  return ZQGuardMemory("ZQFPSReader::Open()", [&] {
    impl_ = std::make_unique<Impl>();
    return impl_->Open(in, name);
  });
}

const ZQFPSHeader& ZQFPSReader::GetHeader() const { return impl_->header; }
bool ZQFPSReader::IsGood() const { return impl_->isGood; }
std::uint64_t ZQFPSReader::NumSkipped() const { return impl_->numSkipped; }

bool ZQFPSReader::Read(ZQFPSRecord& record) {
  return ZQGuardMemory("ZQFPSReader::Read()", [&] { return impl_->Read(record); });
}

// The writer.

class ZQFPSWriter::Impl {
 public:
  bool Open(const std::string& filename, const ZQFPSHeader& header);
  bool Open(zqostream& out, const std::string& name, const ZQFPSHeader& header);
  bool Write(const std::uint64_t* words, std::string_view id);
  bool Close();

 private:
  void AddLine(const std::string& key, const std::string& value);
  void Append(std::string_view text);
  bool Flush();
  bool Fail(const std::string& cause);

  std::string name_;
  std::ofstream file_;
  std::unique_ptr<zqogzstream> packed_;
  zqostream* out_ = nullptr;  // null after a failure
  std::size_t numBytes_ = 0;
  unsigned char lastByteMask_ = 0;
  std::vector<char> buffer_;
  std::size_t size_ = 0;
};

bool ZQFPSWriter::Impl::Fail(const std::string& cause) {
  out_ = nullptr;
  ZQThrow.Error("Can't write fingerprints to %s: %s", name_.c_str(), cause.c_str());
  return false;
}

bool ZQFPSWriter::Impl::Open(const std::string& filename, const ZQFPSHeader& header) {
  name_ = filename;
  file_.rdbuf()->pubsetbuf(nullptr, 0);  // this class has a buffer
  file_.open(filename, std::ios::binary);
  if (!file_) return Fail(SystemCause());
  if (!ZQIsGzipName(filename)) return Open(file_, filename, header);
  packed_ = std::make_unique<zqogzstream>(file_);
  return Open(*packed_, filename, header);
}

bool ZQFPSWriter::Impl::Open(zqostream& out, const std::string& name, const ZQFPSHeader& header) {
  name_ = name;
  if (header.numBits == 0 || header.numBits > zqFPSMaxBits) {
    return Fail(std::to_string(header.numBits) + " bits, expected 1 to " +
                std::to_string(zqFPSMaxBits));
  }
  out_ = &out;
  numBytes_ = BytesOf(header.numBits);
  lastByteMask_ = LastByteMask(header.numBits);
  buffer_.resize(bufferBytes + 2 * numBytes_);
  Append(signature);
  Append("\n");
  AddLine("num_bits", std::to_string(header.numBits));
  AddLine("type", header.type);
  AddLine("software", header.software);
  for (const std::string& source : header.sources) AddLine("source", source);
  AddLine("date", header.date);
  for (const auto& [key, value] : header.others) AddLine(key, value);
  return out_ != nullptr;
}

void ZQFPSWriter::Impl::AddLine(const std::string& key, const std::string& value) {
  if (value.empty()) return;
  std::string line = "#" + key + "=" + value;
  std::ranges::replace_if(line, IsControl, ' ');
  Append(line + "\n");
}

void ZQFPSWriter::Impl::Append(std::string_view text) {
  while (!text.empty()) {
    const std::size_t count = std::min(text.size(), buffer_.size() - size_);
    std::memcpy(buffer_.data() + size_, text.data(), count);
    size_ += count;
    text.remove_prefix(count);
    if (!text.empty() && !Flush()) return;
  }
}

bool ZQFPSWriter::Impl::Flush() {
  if (!out_) return false;
  errno = 0;
  if (!out_->write(buffer_.data(), static_cast<std::streamsize>(size_)) || !out_->good()) {
    return Fail(SystemCause());
  }
  size_ = 0;
  return true;
}

bool ZQFPSWriter::Impl::Write(const std::uint64_t* words, std::string_view id) {
  // The buffer has room for the digits of one more fingerprint.
  if (!out_ || (size_ > bufferBytes && !Flush())) return false;
  const auto* bytes = reinterpret_cast<const unsigned char*>(words);
  char* text = buffer_.data() + size_;
  ToHex(bytes, text, numBytes_ - 1);
  const auto last = static_cast<unsigned char>(bytes[numBytes_ - 1] & lastByteMask_);
  ToHex(&last, text + 2 * (numBytes_ - 1), 1);
  size_ += 2 * numBytes_;
  Append("\t");
  if (std::ranges::any_of(id, EndsAnId)) {
    std::string clean(id);
    std::ranges::replace_if(clean, EndsAnId, ' ');
    Append(clean);
  } else {
    Append(id);
  }
  Append("\n");
  return out_ != nullptr;
}

bool ZQFPSWriter::Impl::Close() {
  if (!out_ || !Flush()) return false;
  if (packed_ && !packed_->Finish()) return Fail(SystemCause());
  out_->flush();
  if (file_.is_open()) file_.close();
  const bool isDone = out_->good() && file_.good();
  if (!isDone) return Fail(SystemCause());
  out_ = nullptr;
  return true;
}

ZQFPSWriter::ZQFPSWriter() = default;
ZQFPSWriter::~ZQFPSWriter() = default;

bool ZQFPSWriter::Open(const std::string& filename, const ZQFPSHeader& header) {
  return ZQGuardMemory("ZQFPSWriter::Open()", [&] {
    impl_ = std::make_unique<Impl>();
    return impl_->Open(filename, header);
  });
}

bool ZQFPSWriter::Open(zqostream& out, const std::string& name, const ZQFPSHeader& header) {
  return ZQGuardMemory("ZQFPSWriter::Open()", [&] {
    impl_ = std::make_unique<Impl>();
    return impl_->Open(out, name, header);
  });
}

bool ZQFPSWriter::Write(const std::uint64_t* words, std::string_view id) {
  return ZQGuardMemory("ZQFPSWriter::Write()", [&] { return impl_ && impl_->Write(words, id); });
}

bool ZQFPSWriter::Close() {
  return ZQGuardMemory("ZQFPSWriter::Close()", [&] { return impl_ && impl_->Close(); });
}

}  // namespace ZQKorvex
