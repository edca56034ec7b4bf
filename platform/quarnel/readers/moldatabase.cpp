#include "contract/quarnel/moldatabase.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "contract/bostrel/characters_local.h"
#include "contract/bostrel/filemapping.h"
#include "contract/bostrel/strings.h"
#include "contract/bostrel/throw.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/readers.h"
#include "contract/vantrel/platform.h"
#include "platform/quarnel/readers/file_format_local.h"

namespace Quarnel {

using Bostrel::ZQThrow;

namespace {

// The format of the name's extension, null if none.
const FileFormat* FindFormat(const std::string& filename, bool& isPacked) {
  std::string extension = Bostrel::ZQFileExtension(filename);
  std::transform(extension.begin(), extension.end(), extension.begin(), Bostrel::ToLower);
  if (extension == "gz" && !isPacked) {
    isPacked = true;
    return FindFormat(filename.substr(0, filename.size() - 3), isPacked);
  }
  for (const FileFormat* format : fileFormats) {
    for (const std::string& known : Bostrel::ZQStringTokenize(format->extensions, ' ')) {
      if (known == '.' + extension) return format;
    }
  }
  return nullptr;
}

/// Unpacks all members of a gzip file, concatenated.
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
  /// Makes an object that `open` opens; null after a warning if that fails.
  template <class Opening>
  static std::unique_ptr<Impl> Make(const std::string& name, const Opening& open);

  bool OpenFile(const ZQMolFileOptions& options, std::string& cause);
  bool OpenContent(std::string content, const ZQMolFileOptions& options, std::string& cause);
  unsigned int NumRecords() const { return static_cast<unsigned int>(starts_.size()); }
  std::string_view GetRecord(unsigned int idx) const {
    const std::uint64_t end = idx + 1 < starts_.size() ? starts_[idx + 1] : text_.size();
    return text_.substr(starts_[idx], end - starts_[idx]);
  }
  const std::string& GetName() const { return name_; }
  std::string GetWhere(unsigned int idx) const;
  const FileFormat& GetFormat() const { return *format_; }
  const TableColumns& GetColumns() const { return columns_; }

 private:
  // A record that doesn't begin on the line after the one before it.
  struct Jump {
    unsigned int record;
    std::uint64_t line;
  };

  bool SetFormat(const ZQMolFileOptions& options, bool& isPacked, std::string& cause);
  bool Map(std::string& cause);
  bool Index(std::string_view text, bool isPacked, const ZQMolFileOptions& options,
             std::string& cause);
  void AddRecord(std::size_t start);
  std::uint64_t GetLine(unsigned int idx) const;

  std::string name_;
  const FileFormat* format_ = nullptr;
  Bostrel::ZQFileMapping mapping_;
  std::string content_;
  std::string unpacked_;
  std::string_view text_;
  TableColumns columns_;
  std::vector<std::uint64_t> starts_;
  std::vector<Jump> jumps_;  // of a table
};

template <class Opening>
auto ZQMolDatabase::Impl::Make(const std::string& name, const Opening& open)
    -> std::unique_ptr<Impl> {
  std::string cause;
  try {
    auto impl = std::make_unique<Impl>();
    impl->name_ = name;
    if (open(*impl, cause)) return impl;
  } catch (const std::bad_alloc&) {
    cause = "Not enough memory";
  }
  ZQThrow.Warning("Can't read molecules from %s: %s", name.c_str(), cause.c_str());
  return nullptr;
}

bool ZQMolDatabase::Impl::OpenFile(const ZQMolFileOptions& options, std::string& cause) {
  bool isPacked = false;
  if (!SetFormat(options, isPacked, cause) || !Map(cause)) return false;
  const std::string_view text{static_cast<const char*>(mapping_.GetBase()), mapping_.GetLength()};
  return Index(text, isPacked, options, cause);
}

bool ZQMolDatabase::Impl::OpenContent(std::string content, const ZQMolFileOptions& options,
                                      std::string& cause) {
  constexpr std::string_view gzipMark = "\x1f\x8b";
  content_ = std::move(content);
  bool isPacked = false;
  if (!SetFormat(options, isPacked, cause)) return false;
  return Index(content_, content_.starts_with(gzipMark), options, cause);
}

bool ZQMolDatabase::Impl::SetFormat(const ZQMolFileOptions& options, bool& isPacked,
                                    std::string& cause) {
  format_ = FindFormat(name_, isPacked);
  if (!options.format.empty()) format_ = FindFormat("." + options.format, isPacked);
  if (format_) return true;
  cause = "Not one of " + ZQGetMolFileExtensions() + ", each also with .gz behind it";
  return false;
}

bool ZQMolDatabase::Impl::Index(std::string_view text, bool isPacked,
                                const ZQMolFileOptions& options, std::string& cause) {
  text_ = text;
  if (isPacked) {
    if (!Unpack(text, unpacked_, cause)) return false;
    text_ = unpacked_;
  }
  if (text_.starts_with(Bostrel::byteOrderMark)) text_.remove_prefix(Bostrel::byteOrderMark.size());
  std::size_t from = 0;
  const bool isTable = format_->readHeader != nullptr;
  if (isTable && !format_->readHeader(text_, from, options, columns_, cause)) return false;
  std::uint64_t line = 1;
  for (std::size_t counted = 0;;) {
    const std::size_t start = format_->findRecord(text_, from);
    if (start == std::string_view::npos) return true;
    if (starts_.size() == std::numeric_limits<unsigned int>::max()) break;
    AddRecord(start);
    if (!isTable) continue;
    const std::string_view before = text_.substr(counted, start - counted);
    line += static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
    counted = start;
    if (line != GetLine(NumRecords() - 1)) jumps_.push_back({NumRecords() - 1, line});
  }
  cause = "More than 4294967295 records";
  return false;
}

std::uint64_t ZQMolDatabase::Impl::GetLine(unsigned int idx) const {
  const auto next =
      std::upper_bound(jumps_.begin(), jumps_.end(), idx,
                       [](unsigned int i, const Jump& jump) { return i < jump.record; });
  if (next == jumps_.begin()) return std::uint64_t{idx} + 2;  // the header is on line 1
  return (next - 1)->line + (idx - (next - 1)->record);
}

std::string ZQMolDatabase::Impl::GetWhere(unsigned int idx) const {
  std::string where = "record " + std::to_string(std::uint64_t{idx} + 1) + " of " + name_;
  if (format_->readHeader) where += ", line " + std::to_string(GetLine(idx));
  return where;
}

bool ZQMolDatabase::Impl::Map(std::string& cause) {
  Vantrel::zqifstream file;
  if (!file.Open(name_, &cause)) return false;
  const auto size = static_cast<std::uint64_t>(file.Size());
  if (size == 0 || mapping_.Map(file.GetDescriptor(), size)) return true;
  cause = std::generic_category().message(errno);
  return false;
}

void ZQMolDatabase::Impl::AddRecord(std::size_t start) {
  // The first records give an estimate of the total, so that the index isn't reallocated.
  constexpr std::size_t sample = 1000;
  if (starts_.size() == sample) {
    const double share = static_cast<double>(text_.size()) / static_cast<double>(start);
    starts_.reserve(static_cast<std::size_t>(share * sample * 1.1));
  }
  starts_.push_back(start);
}

std::string ZQGetMolFileExtensions() {
  std::string all;
  for (const FileFormat* format : fileFormats) {
    all.append(all.empty() ? "" : " ").append(format->extensions);
  }
  return all;
}

ZQMolDatabase::ZQMolDatabase() = default;
ZQMolDatabase::~ZQMolDatabase() = default;

bool ZQMolDatabase::Open(const std::string& filename) { return Open(filename, {}); }

bool ZQMolDatabase::Open(const std::string& filename, const ZQMolFileOptions& options) {
  impl_ = Impl::Make(filename, [&options](Impl& impl, std::string& cause) {
    return impl.OpenFile(options, cause);
  });
  return impl_ != nullptr;
}

bool ZQMolDatabase::OpenContent(std::string content, const std::string& name,
                                const ZQMolFileOptions& options) {
  impl_ = Impl::Make(name, [&](Impl& impl, std::string& cause) {
    return impl.OpenContent(std::move(content), options, cause);
  });
  return impl_ != nullptr;
}

bool ZQMolDatabase::IsReadable(const std::string& filename) {
  bool isPacked = false;
  return FindFormat(filename, isPacked) != nullptr;
}

bool ZQMolDatabase::IsTable(const std::string& filename) {
  bool isPacked = false;
  const FileFormat* format = FindFormat(filename, isPacked);
  return format && format->readHeader;
}

std::string ZQMolDatabase::GetName() const { return impl_ ? impl_->GetName() : std::string(); }

std::string ZQMolDatabase::GetWhere(unsigned int idx) const {
  return impl_ ? impl_->GetWhere(idx) : std::string();
}

unsigned int ZQMolDatabase::GetMaxMolIdx() const { return impl_ ? impl_->NumRecords() : 0; }

bool ZQMolDatabase::GetMolecule(ZQMolBase& mol, unsigned int idx) const {
  if (idx >= GetMaxMolIdx()) {
    mol.Clear();
    mol.SetValid(false);
    ZQThrow.Warning("There is no molecule of index %u among %u", idx, GetMaxMolIdx());
    return false;
  }
  const FileFormat& format = impl_->GetFormat();
  ReaderError error;
  if (format.read(mol, impl_->GetRecord(idx), impl_->GetColumns(), error)) return true;
  ReportUnreadable(mol, impl_->GetWhere(idx), format.place, error);
  return false;
}

std::string ZQMolDatabase::GetTitle(unsigned int idx) const {
  if (idx >= GetMaxMolIdx()) return {};
  return impl_->GetFormat().getTitle(impl_->GetRecord(idx), impl_->GetColumns());
}

std::string ZQMolDatabase::GetSmiles(unsigned int idx) const {
  ZQMol mol;
  if (!GetMolecule(mol, idx)) return {};
  const auto getSmiles = impl_->GetFormat().getSmiles;
  return getSmiles ? getSmiles(impl_->GetRecord(idx), impl_->GetColumns()) : ZQMolToSmiles(mol);
}

}  // namespace Quarnel
