#include "korvex/fpfast_database_inmemory_impl_local.h"

#include <algorithm>

#include "korvex/fpfast_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* constructorName = "ZQFastFPDatabase::ZQFastFPDatabase()";

}  // namespace

ZQFastFPInMemoryDatabaseImpl::ZQFastFPInMemoryDatabaseImpl(const std::string& filename)
    : ZQFastFPDatabaseImplBase(filename) {
  if (!valid_) {
    ZQThrow.Warning("%s cannot initialize object for in memory search!", constructorName);
    return;
  }
  valid_ = ZQ_ASSERT(params_.IsValid()) && Load();
  in_.Close();
}

bool ZQFastFPInMemoryDatabaseImpl::Load() {
  const std::uint64_t count = params_.NumFingerPrints();
  const std::uint64_t numWords = params_.NumWords();
  // Allocates memory only for the complete records of the file.
  const std::uint64_t words = std::max(params_.GetFileSize() / 8, zqHeaderWords) - zqHeaderWords;
  const std::uint64_t present = numWords < words ? std::min(count, words / Stride()) : 0;
  const std::uint64_t size = present * Stride();
  std::vector<unsigned char> record;
  const bool reserved = ZQWarnOnFailure(constructorName, [&] {
    records_.reserve(size);
    if (present > 0) record.resize(8 * Stride());
    return true;
  });
  if (!reserved) return false;
  if (records_.capacity() != size) {
    ZQThrow.Warning("%s : Cannot allocate enough memory!", constructorName);
    return false;
  }

  in_.clear();
  in_.seekg(0);
  in_.ignore(zqHeaderBytes);
  if (in_.gcount() != zqHeaderBytes) {
    ZQThrow.Warning("%s : cannot skip header in database file %s", constructorName,
                    filename_.c_str());
    return false;
  }
  for (std::uint64_t i = 0; i < count; ++i) {
    if (i == present || !ZQ_io_read_binary(in_, record.data(), record.size())) {
      ZQThrow.Warning("%s : cannot read %lu-th fingerprint", constructorName, i);
      return false;
    }
    for (std::size_t w = 0; w < Stride(); ++w) records_.push_back(ZQConvert(&record[8 * w]));
    if (records_[i * Stride() + 1] > 64 * numWords) {
      ZQThrow.Warning("%s : invalid data in %lu-th fingerprint", constructorName, i);
      return false;
    }
  }
  if (records_.size() != size) {
    ZQThrow.Warning("%s : cannot read all fingerprints!", constructorName);
    return false;
  }
  return true;
}

const std::uint64_t* ZQFastFPInMemoryDatabaseImpl::GetRecords(const char* /*caller*/) const {
  static constexpr std::uint64_t none = 0;  // data() of no records is null
  return records_.empty() ? &none : records_.data();
}

const std::uint64_t* ZQFastFPInMemoryDatabaseImpl::GetRecord(std::uint64_t index) const {
  return &records_[index * Stride()];
}

}  // namespace ZQKorvex
