#include "korvex/fpfast_database_mmap_impl_local.h"

#include <unistd.h>

#include "korvex/fpfast_local.h"

namespace ZQKorvex {

ZQFastFPMemoryMapDatabaseImpl::ZQFastFPMemoryMapDatabaseImpl(const std::string& filename)
    : ZQFastFPMemoryMapDatabaseImpl(filename, "ZQFastFPDatabase::ZQFastFPDatabase() :") {}

ZQFastFPMemoryMapDatabaseImpl::ZQFastFPMemoryMapDatabaseImpl(const std::string& filename,
                                                             const std::string& caller)
    : ZQFastFPDatabaseImplBase(filename) {
  if (!valid_) return;
  valid_ = file_.Open(in_, filename_, params_.GetFileSize());
  in_.Close();
  if (!valid_) {
    ZQThrow.Warning("%s cannot initialize object for memory mapping!", caller.c_str());
  }
}

bool ZQFastFPMemoryMapDatabaseImpl::HasPagesFor(std::uint64_t count) const {
  const auto pageSize = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  const std::uint64_t mapped = (file_.GetLength() + pageSize - 1) / pageSize * pageSize;
  std::uint64_t words = 0;
  return params_.NumWords() < mapped && !__builtin_mul_overflow(count, Stride(), &words) &&
         words <= mapped / 8 - zqHeaderWords;
}

const void* ZQFastFPMemoryMapDatabaseImpl::GetFilePtr(const char* caller) const {
  return GetBase(std::string(caller) + " :");
}

const std::uint64_t* ZQFastFPMemoryMapDatabaseImpl::GetBase(const std::string& caller) const {
  const void* base = file_.GetBase();
  if (!ZQ_ASSERT(base)) {
    ZQThrow.Warning("%s invalid fingerprint database file pointer!", caller.c_str());
  }
  return static_cast<const std::uint64_t*>(base);
}

const std::uint64_t* ZQFastFPMemoryMapDatabaseImpl::GetRecords(const char* caller) const {
  const std::uint64_t* base = GetBase(caller);
  if (!base) return nullptr;
  if (!HasPagesFor(NumFingerPrints())) {
    ZQThrow.Warning("%s fingerprint database file %s is shorter than its header says!", caller,
                    filename_.c_str());
    return nullptr;
  }
  // Mapping all pages at once saves the first scan most of its page faults. A file that would leave
  // little free memory is better read during the scan.
  const auto memory = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                      static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  if (file_.GetLength() <= memory / 2 && !pagedIn_.exchange(true)) file_.PageIn();
  return base + zqHeaderWords;
}

const std::uint64_t* ZQFastFPMemoryMapDatabaseImpl::GetRecord(std::uint64_t index) const {
  const std::uint64_t* base = GetBase("ZQFastFPDatabase::GetFingerPrint() :");
  if (!base || !HasPagesFor(index + 1)) return nullptr;
  return base + zqHeaderWords + index * Stride();
}

}  // namespace ZQKorvex
