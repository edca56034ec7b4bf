#include "korvex/fps_database.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

#include "korvex/fpfast_queries_local.h"
#include "korvex/fps_convert.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* sortedScoresName = "ZQFPSDatabase::GetSortedScores()";

/// An array that grows at its end, of a size that nobody knows before the file is read. The system
/// moves the pages of a large block instead of copying it, and gives memory only to those that are
/// written, so that growing takes no more than the content.
template <class T>
class GrowingArray {
 public:
  static_assert(std::is_trivially_copyable_v<T>);
  GrowingArray() = default;
  ~GrowingArray() { std::free(data_); }
  GrowingArray(const GrowingArray&) = delete;
  GrowingArray& operator=(const GrowingArray&) = delete;

  /// Adds elements, for the caller to fill.
  T* Extend(std::size_t count) {
    if (capacity_ - size_ < count) {
      const std::size_t capacity = size_ + count + size_ / 2;
      void* moved = std::realloc(data_, ZQSaturatedProduct(capacity, sizeof(T)));
      if (!moved) throw std::bad_alloc();
      data_ = static_cast<T*>(moved);
      capacity_ = capacity;
    }
    size_ += count;
    return data_ + size_ - count;
  }
  const T* GetData() const { return data_; }
  std::size_t GetSize() const { return size_; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace

class ZQFPSDatabase::Impl {
 public:
  /// Reads the file of that name or, by that name, the stream `source`.
  template <class... Source>
  bool Open(const std::string& name, Source&... source);
  bool IsValid(const char* caller) const {
    if (!isValid) ZQThrow.Warning("%s : invalid ZQFPSDatabase object!", caller);
    return isValid;
  }
  std::uint64_t NumRecords() const { return idEnds.GetSize(); }
  ZQScanRecords GetRecords() const {
    ZQScanRecords scanned(records.GetData(), NumRecords(), numWords, popcount);
    scanned.numBits = header.numBits;
    return scanned;
  }
  std::string_view GetId(std::uint64_t index) const {
    const std::uint64_t begin = index == 0 ? 0 : idEnds.GetData()[index - 1];
    return {ids.GetData() + begin, idEnds.GetData()[index] - begin};
  }
  /// The query with the words of a record. False after a warning if it hasn't its bits.
  bool Pad(ZQFingerPrint& padded, const ZQFingerPrint& query) const {
    if (query.GetSize() != header.numBits) {
      ZQThrow.Warning("%s : a query of %u bits, expected %u!", sortedScoresName, query.GetSize(),
                      header.numBits);
      return false;
    }
    padded = query;
    padded.SetSize(static_cast<unsigned int>(64 * numWords));
    return true;
  }

  bool isValid = false;
  ZQFPSHeader header;
  const ZQFPTypeBase* type = nullptr;
  std::size_t numWords = 0;  // of a record, padding included
  ZQPopCountFunc popcount = nullptr;
  GrowingArray<std::uint64_t> records;
  GrowingArray<char> ids;
  GrowingArray<std::uint64_t> idEnds;
};

template <class... Source>
bool ZQFPSDatabase::Impl::Open(const std::string& name, Source&... source) {
  ZQFPSReader reader;
  if (!reader.Open(source..., name)) return false;
  header = reader.GetHeader();
  type = ZQGetFPSType(header);
  popcount = ZQGetPopCountFunc(ZQGetPopCountMethod());
  const std::size_t unit = ZQGetPopCountFingerprintSizeUnit() / 64;
  const std::size_t used = (header.numBits + 63) / 64;
  numWords = (used + unit - 1) / unit * unit;
  for (ZQFPSRecord record; reader.Read(record);) {
    if (NumRecords() == std::numeric_limits<unsigned int>::max()) {
      ZQThrow.Error("Can't read fingerprints from %s: %s", name.c_str(),
                    "more than 4294967295 records");
      return false;
    }
    std::uint64_t* words = records.Extend(numWords + 2);
    words[0] = NumRecords();
    std::copy_n(record.words, used, words + 2);
    std::fill_n(words + 2 + used, numWords - used, 0);
    words[1] = popcount(words + 2, numWords);
    std::copy(record.id.begin(), record.id.end(), ids.Extend(record.id.size()));
    *idEnds.Extend(1) = ids.GetSize();
  }
  return reader.IsGood();
}

ZQFPSDatabase::ZQFPSDatabase(const std::string& filename) : impl_(std::make_unique<Impl>()) {
  impl_->isValid =
      ZQGuardMemory("ZQFPSDatabase::ZQFPSDatabase()", [&] { return impl_->Open(filename); });
}
ZQFPSDatabase::ZQFPSDatabase(zqistream& in, const std::string& name)
    : impl_(std::make_unique<Impl>()) {
  impl_->isValid =
      ZQGuardMemory("ZQFPSDatabase::ZQFPSDatabase()", [&] { return impl_->Open(name, in); });
}
ZQFPSDatabase::~ZQFPSDatabase() = default;

bool ZQFPSDatabase::IsValid() const { return impl_->isValid; }
const ZQFPSHeader& ZQFPSDatabase::GetHeader() const { return impl_->header; }
const ZQFPTypeBase* ZQFPSDatabase::GetFPTypeBase() const { return impl_->type; }
std::uint64_t ZQFPSDatabase::NumFingerPrints() const { return IsValid() ? impl_->NumRecords() : 0; }
unsigned int ZQFPSDatabase::NumBits() const { return impl_->header.numBits; }

std::string_view ZQFPSDatabase::GetId(std::uint64_t index) const {
  return index < NumFingerPrints() ? impl_->GetId(index) : std::string_view();
}

std::uint64_t ZQFPSDatabase::FindId(std::string_view id) const {
  std::uint64_t index = 0;
  while (index < NumFingerPrints() && impl_->GetId(index) != id) ++index;
  return index;
}

bool ZQFPSDatabase::GetFingerPrint(ZQFingerPrint& fp, std::uint64_t index) const {
  const char* caller = "ZQFPSDatabase::GetFingerPrint()";
  if (!impl_->IsValid(caller)) return false;
  if (index >= NumFingerPrints()) {
    ZQThrow.Warning("%s : fingerprint index out of range!", caller);
    return false;
  }
  return ZQWarnOnFailure(caller, [&] {
    ZQFingerPrint made;
    made.SetSize(NumBits());
    std::copy_n(impl_->GetRecords().Words(index), made.NumWords(), made.Words());
    made.SetFPTypeBase(GetFPTypeBase());
    fp = std::move(made);
    return true;
  });
}

ZQIter<ZQSimScore> ZQFPSDatabase::GetSortedScores(const ZQFingerPrint& query,
                                                  const ZQFPDatabaseOptions& options) const {
  if (!impl_->IsValid(sortedScoresName)) return {};
  return ZQWarnOnFailure(sortedScoresName, [&]() -> ZQIter<ZQSimScore> {
    ZQFingerPrint padded;
    if (!impl_->Pad(padded, query)) return {};
    return ZQGetSortedHits(padded, options, impl_->GetRecords());
  });
}

std::vector<ZQIter<ZQSimScore>> ZQFPSDatabase::GetSortedScores(
    const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const {
  std::vector<ZQIter<ZQSimScore>> all(queries.size());
  if (!impl_->IsValid(sortedScoresName)) return all;
  const bool isDone = ZQWarnOnFailure(sortedScoresName, [&] {
    std::vector<ZQFingerPrint> padded;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < queries.size(); ++i) {
      ZQFingerPrint fp;
      if (!impl_->Pad(fp, queries[i])) continue;
      padded.push_back(std::move(fp));
      places.push_back(i);
    }
    auto hits = ZQGetSortedHits(padded, options, impl_->GetRecords());
    for (std::size_t i = 0; i < hits.size(); ++i) all[places[i]] = std::move(hits[i]);
    return true;
  });
  if (!isDone) return std::vector<ZQIter<ZQSimScore>>(queries.size());
  return all;
}

ZQFPHistogram ZQFPSDatabase::GetHistogram(const ZQFPDatabaseOptions& options,
                                          unsigned long bins) const {
  const char* caller = "ZQFPSDatabase::GetHistogram()";
  const auto none = [bins] { return ZQFPHistogram(bins, 0.0, 1.0); };
  if (!impl_->IsValid(caller)) return none();
  return ZQWarnOnFailure(
      caller,
      [&] {
        ZQFPHistogram histogram = none();
        ZQFastFPHistogram(histogram, options, impl_->GetRecords());
        return histogram;
      },
      none);
}

ZQIter<ZQSimScorePair> ZQFPSDatabase::GetSparseMatrix(const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFPSDatabase::GetSparseMatrix()";
  if (!impl_->IsValid(caller)) return {};
  return ZQWarnOnFailure(
      caller, [&] { return ZQGetSparseMatrix(options, impl_->GetRecords(), caller, true); });
}

}  // namespace ZQKorvex
