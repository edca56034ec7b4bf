#include "korvex/path.h"

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "korvex/fold_local.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fptypes_local.h"
#include "korvex/path_local.h"
#include "korvex/primes.h"

namespace ZQKorvex {

namespace {

constexpr const char* makeName = "ZQMakePathFP()";
constexpr unsigned int defaultNumbits = 4096;
constexpr unsigned int defaultMinbonds = 0;
constexpr unsigned int defaultMaxbonds = 5;
constexpr unsigned int largestBonds = 20;

// Replaces what is illegal by the defaults, with a warning each.
void RepairParams(unsigned int& numbits, unsigned int& minbonds, unsigned int& maxbonds,
                  unsigned int& atype, unsigned int& btype) {
  if (numbits < 16 || numbits > 65535) {
    ZQThrow.Warning("%s : invalid bit vector size %d for path fingerprint (default %d is used)!",
                    makeName, numbits, defaultNumbits);
    numbits = defaultNumbits;
  }
  if (minbonds > largestBonds) {
    ZQThrow.Warning("%s : invalid min bonds %d for path fingerprint (default %d is used)!",
                    makeName, minbonds, defaultMinbonds);
    minbonds = defaultMinbonds;
  }
  if (maxbonds > largestBonds) {
    ZQThrow.Warning("%s : invalid max bonds %d for path fingerprint (default %d is used)!",
                    makeName, maxbonds, defaultMaxbonds);
    maxbonds = defaultMaxbonds;
  }
  if (maxbonds < minbonds) {
    ZQThrow.Warning(
        "%s : invalid min bonds %d > max bonds %d for path fingerprint (minbonds = maxbonds is "
        "used)!",
        makeName, minbonds, maxbonds);
    minbonds = maxbonds;
  }
  if (atype == ZQFPAtomType::None && btype == ZQFPBondType::None) {
    ZQThrow.Warning(
        "%s : invalid to have both atom and bond types set to be None (default types are used)!",
        makeName);
    atype = ZQFPAtomType::DefaultPathAtom;
    btype = ZQFPBondType::DefaultPathBond;
  }
}

// Symmetric atoms start equal walks. Finding them pays off for larger molecules only.
bool IsSymmetryWorthwhile(const ZQMolBase& mol, unsigned int maxbonds) {
  return maxbonds > 3 && mol.NumAtoms() > 20;
}

}  // namespace

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                  unsigned int minbonds, unsigned int maxbonds, unsigned int atype,
                  unsigned int btype) {
  if (!mol.IsValid()) {
    fp.SetFPTypeBase(nullptr);
    return false;
  }
  RepairParams(numbits, minbonds, maxbonds, atype, btype);
  fp.SetSize(numbits);
  fp.ClearBits();
  ZQGraphMol copy(mol);
  ZQPrepareForFingerprinting(copy, ZQFPType::Path);
  if (copy.NumAtoms() != 0) {
    if (IsSymmetryWorthwhile(mol, maxbonds)) ZQPerceiveSymmetry(copy, true, false);
    std::vector<unsigned int> atomInvariants;
    std::vector<unsigned int> bondInvariants;
    ZQGetFingerprintAtomTypes(atomInvariants, bondInvariants, copy, atype, btype);
    const unsigned int hashSize = ZQGetHashSize(numbits);
    if (!ZQ_ASSERT(hashSize != 0 && hashSize <= numbits)) return false;
    PathGenerator<unsigned int>(copy, atomInvariants, bondInvariants, minbonds, maxbonds)
        .ForEachPath(ZQFolder(fp, hashSize));
  }
  fp.SetFPTypeBase(ZQGetPathFPType(numbits, minbonds, maxbonds, atype, btype));
  return static_cast<bool>(fp);
}

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  return ZQMakePathFP(fp, mol, defaultNumbits, defaultMinbonds, defaultMaxbonds,
                      ZQFPAtomType::DefaultPathAtom, ZQFPBondType::DefaultPathBond);
}

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (!type || type->GetFPType() != ZQFPType::Path) {
    ZQThrow.Warning("%s : invalid path fingerprint type!", "ZQMakePathFP");
    return false;
  }
  unsigned int numbits = 0;
  unsigned int min = 0;
  unsigned int max = 0;
  unsigned int atype = 0;
  unsigned int btype = 0;
  ZQFPPathType::SetParamsFromID(type->GetID(), numbits, min, max, atype, btype);
  if (!ZQMakePathFP(fp, mol, numbits, min, max, atype, btype)) return false;
  return ZQ_ASSERT(fp.GetFPTypeBase() == type);
}

unsigned int ZQPathIdGenerator(std::set<unsigned int>& ids, const ZQMolBase& mol,
                               std::vector<unsigned int>& atomInvariants,
                               std::vector<unsigned int>& bondInvariants, unsigned int minbonds,
                               unsigned int maxbonds) {
  return PathGenerator<unsigned int>(mol, atomInvariants, bondInvariants, minbonds, maxbonds)
      .GeneratePathIds(ids);
}

unsigned int ZQPathIdGenerator(std::set<std::string>& ids, const ZQMolBase& mol,
                               std::vector<std::string>& atomInvariants,
                               std::vector<std::string>& bondInvariants, unsigned int minbonds,
                               unsigned int maxbonds) {
  return PathGenerator<std::string>(mol, atomInvariants, bondInvariants, minbonds, maxbonds)
      .GeneratePathIds(ids);
}

unsigned int ZQPathIdGeneratorStack(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                    std::vector<unsigned int>& atomInvariants,
                                    std::vector<unsigned int>& bondInvariants,
                                    unsigned int minbonds, unsigned int maxbonds) {
  return PathGenerator<unsigned int>(mol, atomInvariants, bondInvariants, minbonds, maxbonds)
      .GeneratePathIdsStack(ids);
}

unsigned int ZQPathIdGeneratorStack(std::vector<std::string>& ids, const ZQMolBase& mol,
                                    std::vector<std::string>& atomInvariants,
                                    std::vector<std::string>& bondInvariants, unsigned int minbonds,
                                    unsigned int maxbonds) {
  return PathGenerator<std::string>(mol, atomInvariants, bondInvariants, minbonds, maxbonds)
      .GeneratePathIdsStack(ids);
}

}  // namespace ZQKorvex
