#pragma once

/// What the three hashed kinds with parameters, path, circular and tree, have in common: how
/// parameters are repaired, and the way from a molecule to a fingerprint.

#include <vector>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "korvex/fold_local.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fptypes_local.h"
#include "korvex/memory_local.h"
#include "korvex/primes.h"

namespace ZQKorvex {

/// Names, defaults and messages of one hashed kind.
struct ZQHashedKind {
  const ZQFPKind& kind;
  const char* makeName;  ///< of the operation in messages
  const char* name;      ///< "path"
  ZQFPTypeValues defaults;
  unsigned int largestDistance;  ///< that isn't repaired
  const char* ending;            ///< of most messages
  const char* ofMaxDistance;     ///< what follows the kind in the message on the largest distance
};

/// Replaces what is illegal by the defaults, with a warning each.
void ZQRepairParams(const ZQHashedKind& kind, ZQFPTypeValues& values);

/// Whether finding symmetric atoms, which start equal walks, costs less than it saves.
inline bool ZQIsSymmetryWorthwhile(const ZQMolBase& mol, unsigned int maxbonds) {
  return maxbonds > 3 && mol.NumAtoms() > 20;
}

/// Makes the fingerprint. `generate` gets the working copy, its invariants, the repaired values,
/// and a function to call with each identifier.
template <class Generate>
bool ZQMakeHashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQHashedKind& kind,
                    ZQFPTypeValues values, bool perceiveSymmetry, Generate generate) {
  if (!mol.IsValid()) {
    fp.SetFPTypeBase(nullptr);
    return false;
  }
  ZQRepairParams(kind, values);
  fp.SetSize(values.numbits);
  fp.ClearBits();
  const bool done = ZQGuardMemory(kind.makeName, [&] {
    ZQGraphMol copy(mol);
    ZQPrepareForFingerprinting(copy, kind.kind.number);
    if (copy.NumAtoms() == 0) return true;
    if (perceiveSymmetry && ZQIsSymmetryWorthwhile(mol, values.maxDistance)) {
      ZQPerceiveSymmetry(copy, true, false);
    }
    std::vector<unsigned int> atomInvariants;
    std::vector<unsigned int> bondInvariants;
    ZQGetFingerprintAtomTypes(atomInvariants, bondInvariants, copy, values.atype, values.btype);
    const unsigned int hashSize = ZQGetHashSize(values.numbits);
    if (!ZQ_ASSERT(hashSize != 0 && hashSize <= values.numbits)) return false;
    generate(copy, atomInvariants, bondInvariants, values, ZQFolder(fp, hashSize));
    return true;
  });
  fp.SetFPTypeBase(done ? ZQGetFPType(kind.kind, values) : nullptr);
  return static_cast<bool>(fp);
}

}  // namespace ZQKorvex
