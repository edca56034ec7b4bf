#include "korvex/hashed_local.h"

#include "korvex/fpatomtyper.h"
#include "korvex/primes.h"

namespace ZQKorvex {

void ZQRepairParams(const ZQFPKind& kind, ZQFPTypeValues& values) {
  const ZQFPTypeValues& defaults = kind.defaults;
  const ZQFPKindTexts& texts = kind.texts;
  const char* distance = kind.distanceKey;
  if (values.numbits < 16 || values.numbits > 65535) {
    ZQThrow.Warning("%s : invalid bit vector size %d for %s fingerprint (default %d is used)%s",
                    texts.operation, values.numbits, texts.name, defaults.numbits, texts.ending);
    values.numbits = defaults.numbits;
  }
  if (values.minDistance > kind.largestUnrepaired) {
    ZQThrow.Warning("%s : invalid min %s %d for %s fingerprint (default %d is used)%s",
                    texts.operation, distance, values.minDistance, texts.name, defaults.minDistance,
                    texts.ending);
    values.minDistance = defaults.minDistance;
  }
  if (values.maxDistance > kind.largestUnrepaired) {
    ZQThrow.Warning("%s : invalid max %s %d for %s fingerprint%s (default %d is used)%s",
                    texts.operation, distance, values.maxDistance, texts.name, texts.ofMaxDistance,
                    defaults.maxDistance, texts.ending);
    values.maxDistance = defaults.maxDistance;
  }
  if (values.minDistance > values.maxDistance) {
    ZQThrow.Warning(
        "%s : invalid min %s %d > max %s %d for %s fingerprint (min%s = max%s is used)%s",
        texts.operation, distance, values.minDistance, distance, values.maxDistance, texts.name,
        distance, distance, texts.ending);
    values.minDistance = values.maxDistance;
  }
  if (values.atype == ZQFPAtomType::None && values.btype == ZQFPBondType::None) {
    ZQThrow.Warning(
        "%s : invalid to have both atom and bond types set to be None (default types are used)!",
        texts.operation);
    values.atype = defaults.atype;
    values.btype = defaults.btype;
  }
}

bool ZQFillHashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                    const ZQFPTypeValues& values, ZQFoldIds foldIds) {
  fp.SetSize(values.numbits);
  fp.ClearBits();
  ZQGraphMol copy = ZQPreparedCopy(mol, kind, values);
  if (copy.NumAtoms() == 0) return true;
  std::vector<unsigned int> atomInvariants;
  std::vector<unsigned int> bondInvariants;
  ZQGetFingerprintAtomTypes(atomInvariants, bondInvariants, copy, values.atype, values.btype);
  const unsigned int hashSize = ZQGetHashSize(values.numbits);
  if (!ZQ_ASSERT(hashSize != 0 && hashSize <= values.numbits)) return false;
  foldIds(copy, atomInvariants, bondInvariants, values, ZQFolder(fp, hashSize));
  return true;
}

}  // namespace ZQKorvex
