#include "contract/quarnel/moldatabase.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "contract/bostrel/strings.h"
#include "contract/bostrel/throw.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/readers/molfile_reader_local.h"
#include "platform/quarnel/readers/smiles_reader_local.h"

namespace Quarnel {

using Bostrel::ZQThrow;

namespace {

enum class Format : std::uint8_t { Unknown, Smiles, Sdf };

struct FileKind {
  Format format = Format::Unknown;
  bool isPacked = false;
};

FileKind GetFileKind(const std::string& filename) {
  const auto lowered = [](std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
  };
  FileKind kind;
  std::string extension = lowered(Bostrel::ZQFileExtension(filename));
  if (extension == "gz") {
    kind.isPacked = true;
    extension = lowered(Bostrel::ZQFileExtension(filename.substr(0, filename.size() - 3)));
  }
  for (const char* name : {"smi", "ism", "can", "smiles"}) {
    if (extension == name) kind.format = Format::Smiles;
  }
  for (const char* name : {"sdf", "sd", "mol"}) {
    if (extension == name) kind.format = Format::Sdf;
  }
  return kind;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

/// A file's bytes, mapped.
class Mapping {
 public:
  Mapping() = default;
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  ~Mapping() {
    if (data_) munmap(data_, size_);
  }

  bool Open(const std::string& filename, std::string& cause);
  std::string_view GetText() const { return {static_cast<const char*>(data_), size_}; }

 private:
  void* data_ = nullptr;
  std::size_t size_ = 0;
};

bool Mapping::Open(const std::string& filename, std::string& cause) {
  const auto fail = [&cause](int error) {
    cause = std::generic_category().message(error);
    return false;
  };
  // A pipe that nobody writes to would keep a plain open waiting.
  const int file = open(filename.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return fail(errno);
  struct stat status {};
  int error = fstat(file, &status) == 0 ? 0 : errno;
  if (error == 0 && S_ISDIR(status.st_mode)) error = EISDIR;
  if (error == 0 && !S_ISREG(status.st_mode)) {
    close(file);
    cause = "Not a regular file";
    return false;
  }
  if (error == 0 && status.st_size > 0) {
    const auto size = static_cast<std::size_t>(status.st_size);
    void* data = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (data == MAP_FAILED) {
      error = errno;
    } else {
      data_ = data;
      size_ = size;
    }
  }
  close(file);
  return error == 0 || fail(error);
}

/// All members of a gzip file, one after another.
bool Unpack(std::string_view packed, std::string& text, std::string& cause) {
  z_stream stream{};
  constexpr int gzipOnly = 16 + MAX_WBITS;
  if (inflateInit2(&stream, gzipOnly) != Z_OK) {
    cause = "Not enough memory";
    return false;
  }
  struct Guard {
    z_stream* stream;
    ~Guard() { inflateEnd(stream); }
  } const guard{&stream};
  std::array<char, std::size_t{1} << 16> chunk;
  int status = Z_OK;
  while (status == Z_OK || !packed.empty()) {
    if (status == Z_STREAM_END && inflateReset(&stream) != Z_OK) break;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    const std::size_t taken = std::min<std::size_t>(packed.size(), std::size_t{1} << 30);
    stream.avail_in = static_cast<uInt>(taken);
    stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
    stream.avail_out = static_cast<uInt>(chunk.size());
    status = inflate(&stream, Z_NO_FLUSH);
    if (status != Z_OK && status != Z_STREAM_END) break;
    packed.remove_prefix(taken - stream.avail_in);
    text.append(chunk.data(), chunk.size() - stream.avail_out);
  }
  if (status == Z_STREAM_END) return true;
  cause = status == Z_MEM_ERROR   ? "Not enough memory"
          : status == Z_BUF_ERROR ? "The gzip data is cut short"
          : stream.msg != nullptr ? std::string("The gzip data is damaged: ") + stream.msg
                                  : "The gzip data is damaged";
  return false;
}

}  // namespace

class ZQMolDatabase::Impl {
 public:
  bool Open(const std::string& filename, std::string& cause);
  unsigned int NumRecords() const { return static_cast<unsigned int>(starts_.size()); }
  std::string_view GetRecord(unsigned int idx) const {
    const std::uint64_t end = idx + 1 < starts_.size() ? starts_[idx + 1] : text_.size();
    return text_.substr(starts_[idx], end - starts_[idx]);
  }
  std::string GetWhere(unsigned int idx) const {
    return "record " + std::to_string(std::uint64_t{idx} + 1) + " of " + filename_;
  }
  bool IsSmiles() const { return format_ == Format::Smiles; }

 private:
  bool AddRecord(std::size_t start);
  bool IndexLines();
  bool IndexSdf();

  std::string filename_;
  Format format_ = Format::Unknown;
  Mapping mapping_;
  std::string unpacked_;
  std::string_view text_;
  std::vector<std::uint64_t> starts_;
};

bool ZQMolDatabase::Impl::Open(const std::string& filename, std::string& cause) {
  filename_ = filename;
  const FileKind kind = GetFileKind(filename);
  format_ = kind.format;
  if (format_ == Format::Unknown) {
    cause = "Not one of .smi .ism .can .smiles .sdf .sd .mol, each also with .gz behind it";
    return false;
  }
  if (!mapping_.Open(filename, cause)) return false;
  text_ = mapping_.GetText();
  if (kind.isPacked) {
    if (!Unpack(text_, unpacked_, cause)) return false;
    text_ = unpacked_;
  }
  if (IsSmiles() ? IndexLines() : IndexSdf()) return true;
  cause = "More than 4294967295 records";
  return false;
}

bool ZQMolDatabase::Impl::AddRecord(std::size_t start) {
  if (starts_.size() == std::numeric_limits<unsigned int>::max()) return false;
  // The first records tell about how many there will be, so that the index isn't moved about.
  constexpr std::size_t sample = 1000;
  if (starts_.size() == sample) {
    const double share = static_cast<double>(text_.size()) / static_cast<double>(start);
    starts_.reserve(static_cast<std::size_t>(share * sample * 1.1));
  }
  starts_.push_back(start);
  return true;
}

bool ZQMolDatabase::Impl::IndexLines() {
  for (std::size_t start = 0; start < text_.size();) {
    const std::size_t end = std::min(text_.find('\n', start), text_.size());
    std::size_t first = start;
    while (first < end && IsBlank(text_[first])) ++first;
    if (first < end && !AddRecord(first)) return false;
    start = end + 1;
  }
  return true;
}

bool ZQMolDatabase::Impl::IndexSdf() {
  constexpr std::string_view delimiter = "$$$$";
  std::size_t start = 0;
  std::size_t from = 0;
  while (true) {
    const std::size_t found = text_.find(delimiter, from);
    if (found != std::string_view::npos && found != 0 && text_[found - 1] != '\n') {
      from = found + 1;
      continue;
    }
    const std::size_t end = std::min(found, text_.size());
    // A file may end with blank lines behind the last delimiter.
    const bool isRecord = found != std::string_view::npos || !Trimmed(text_.substr(start)).empty();
    if (isRecord && !AddRecord(start)) return false;
    if (end == text_.size()) return true;
    start = from = std::min(text_.find('\n', end), text_.size() - 1) + 1;
    if (start == text_.size()) return true;
  }
}

ZQMolDatabase::ZQMolDatabase() = default;
ZQMolDatabase::~ZQMolDatabase() = default;

bool ZQMolDatabase::Open(const std::string& filename) {
  std::string cause;
  try {
    impl_ = std::make_unique<Impl>();
    if (impl_->Open(filename, cause)) return true;
  } catch (const std::bad_alloc&) {
    cause = "Not enough memory";
  }
  impl_.reset();
  ZQThrow.Warning("Can't read molecules from %s: %s", filename.c_str(), cause.c_str());
  return false;
}

bool ZQMolDatabase::IsReadable(const std::string& filename) {
  return GetFileKind(filename).format != Format::Unknown;
}

unsigned int ZQMolDatabase::GetMaxMolIdx() const { return impl_ ? impl_->NumRecords() : 0; }

namespace {

// The SMILES of a line and the title behind it.
std::pair<std::string_view, std::string_view> SplitLine(std::string_view record) {
  const std::string_view line = record.substr(0, std::min(record.find('\n'), record.size()));
  const std::size_t end = std::min(line.find_first_of(" \t\r"), line.size());
  std::string_view title = Trimmed(line.substr(end));
  title = Trimmed(title.substr(0, std::min(title.find('\t'), title.size())));
  return {line.substr(0, end), title};
}

}  // namespace

bool ZQMolDatabase::GetMolecule(ZQMolBase& mol, unsigned int idx) const {
  if (idx >= GetMaxMolIdx()) {
    mol.Clear();
    mol.SetValid(false);
    ZQThrow.Warning("There is no molecule of index %u among %u", idx, GetMaxMolIdx());
    return false;
  }
  const std::string_view record = impl_->GetRecord(idx);
  ReaderError error;
  if (!impl_->IsSmiles()) {
    if (ReadMolfile(mol, record, error)) return true;
    ReportUnreadable(mol, impl_->GetWhere(idx), "molfile line", error);
    return false;
  }
  const auto [smiles, title] = SplitLine(record);
  if (!ReadSmiles(mol, smiles, error)) {
    ReportUnreadable(mol, impl_->GetWhere(idx), "SMILES column", error);
    return false;
  }
  mol.SetTitle(std::string(title));
  return true;
}

std::string ZQMolDatabase::GetTitle(unsigned int idx) const {
  if (idx >= GetMaxMolIdx()) return {};
  const std::string_view record = impl_->GetRecord(idx);
  if (impl_->IsSmiles()) return std::string(SplitLine(record).second);
  return std::string(Trimmed(record.substr(0, std::min(record.find('\n'), record.size()))));
}

std::string ZQMolDatabase::GetSmiles(unsigned int idx) const {
  ZQMol mol;
  if (!GetMolecule(mol, idx)) return {};
  return impl_->IsSmiles() ? std::string(SplitLine(impl_->GetRecord(idx)).first)
                           : ZQMolToSmiles(mol);
}

}  // namespace Quarnel
