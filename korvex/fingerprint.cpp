// There are two ways to make a fingerprint. With a type, its number and packed id determine kind,
// version and parameters; they are decoded once, and the fingerprint's type is that same object,
// without a lock or a look-up. With numbers, these are repaired once, and the type is interned
// after the generator has run. The kinds differ only in their table row (fpkinds.h) and in the
// function that sets the bits.

#include "korvex/fingerprint.h"

#include "contract/quarnel/perception.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fpkinds_local.h"
#include "korvex/fptypes.h"
#include "korvex/hashed_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

bool ZQFingerPrint::operator==(const ZQFingerPrint& other) const {
  if (!type_ || !other.type_) {
    ZQThrow.Warning("ZQFingerPrint::operator== : uninitialized fingerprint type!");
    return false;
  }
  return type_ == other.type_ &&
         static_cast<const ZQBitVector&>(*this) == static_cast<const ZQBitVector&>(other);
}

bool ZQIsFPType(const ZQFingerPrint& fp, unsigned int fptype) {
  return fp.GetFPTypeBase()->GetFPType() == fptype;
}

bool ZQIsSameFPType(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  if (!a || !b) {
    ZQThrow.Warning("ZQIsSameFPType() : uninitialized fingerprint type!");
    return false;
  }
  return a.GetFPTypeBase() == b.GetFPTypeBase();
}

namespace {

bool Fill(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
          const ZQFPTypeValues& values, ZQFillFP fill) {
  return ZQGuardMemory(kind.texts.operation, [&] { return fill(fp, mol, kind, values); });
}

}  // namespace

bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind, ZQFPTypeValues values,
              ZQFillFP fill) {
  if (!mol.IsValid()) {
    fp.SetFPTypeBase(nullptr);
    return false;
  }
  if (kind.IsHashed()) ZQRepairParams(kind, values);
  const bool done = Fill(fp, mol, kind, values, fill);
  fp.SetFPTypeBase(done ? ZQGetFPType(kind, values) : nullptr);
  return static_cast<bool>(fp);
}

bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
              const ZQFPTypeBase* type, ZQFillFP fill) {
  if (!type || type->GetFPType() != kind.number) {
    if (kind.texts.isWrongTypeError) {
      ZQThrow.Error("%s", kind.texts.wrongType);
    } else {
      ZQThrow.Warning("%s", kind.texts.wrongType);
    }
    return false;
  }
  if (!ZQCanMakeFP(type)) {
    return ZQMakeFP(fp, mol, kind, ZQUnpackFPTypeID(kind, type->GetID()), fill) &&
           ZQ_ASSERT(fp.GetFPTypeBase() == type);
  }
  const bool done = mol.IsValid() && Fill(fp, mol, kind, ZQDecodeFPTypeID(type->GetID()), fill);
  fp.SetFPTypeBase(done ? type : nullptr);
  return done;
}

ZQGraphMol ZQPreparedCopy(const ZQMolBase& mol, const ZQFPKind& kind,
                          const ZQFPTypeValues& values) {
  ZQGraphMol copy(mol);
  ZQPrepareForFingerprinting(copy, kind.number);
  if (kind.perceivesSymmetry && values.maxDistance > 3 && mol.NumAtoms() > 20) {
    ZQPerceiveSymmetry(copy, true, false);
  }
  return copy;
}

bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (const ZQFPKind* kind = ZQFindFPKind(type)) {
    return kind->make(fp, mol, type);
  }
  fp.SetFPTypeBase(nullptr);
  return false;
}

bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int fptype,
              bool ignoreChargeAndHyb) {
  const ZQFPTypeBase* type = ZQGetFPType(fptype, ignoreChargeAndHyb);
  if (!type) ZQThrow.Warning("ZQMakeFP() unknown fingerprint type");
  return ZQMakeFP(fp, mol, type);
}

}  // namespace ZQKorvex
