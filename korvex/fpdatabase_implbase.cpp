#include "korvex/fpdatabase_implbase_local.h"

#include "korvex/checked_local.h"

namespace ZQKorvex {

unsigned int ZQFPDatabaseImplBase::AddFP(const ZQFingerPrint& fp) {
  if (!CanAdd(fp)) return ZQFPDatabase::noIndex;
  fingerprints_.push_back(fp);
  return NumFingerPrints() - 1;
}

unsigned int ZQFPDatabaseImplBase::NumFingerPrints() const {
  return ZQCheckedUnsigned(fingerprints_.size());
}

ZQIter<const ZQFingerPrint> ZQFPDatabaseImplBase::GetFingerPrints() const {
  return new ZQVectorIter<const ZQFingerPrint>(&fingerprints_);
}

bool ZQFPDatabaseImplBase::CheckType(const ZQFingerPrint& query, const char* caller) const {
  if (IsSameFPType(query)) return true;
  ZQThrow.Warning("%sfingerprint type mismatch!", caller);
  return false;
}

bool ZQFPDatabaseImplBase::CanAdd(const ZQFingerPrint& fp) const {
  return IsSameFPType(fp) && fingerprints_.size() < ZQFPDatabase::noIndex;
}

}  // namespace ZQKorvex
