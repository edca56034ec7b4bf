#include "korvex/fppattern.h"

#include <limits>
#include <memory>
#include <set>
#include <string>

#include "korvex/canonicalset_unhashed_local.h"
#include "korvex/circular_local.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fppattern_local.h"
#include "korvex/fptypes.h"
#include "korvex/path_local.h"
#include "korvex/primes.h"
#include "korvex/tree_local.h"

namespace ZQKorvex {

namespace {

// The hashed kinds: each enumerates the fragments of a prepared molecule, in the same order for
// both types of identifier.

template <class T>
using Sets = std::vector<ZQFPAtomBondSet<T>>;

struct Paths {
  static constexpr unsigned int number = ZQFPType::Path;
  template <class T, class Sink>
  static void ForEach(const ZQMolBase& mol, std::vector<T>& atoms, std::vector<T>& bonds,
                      const ZQFPTypeValues& values, Sink sink, Sets<T>* sets) {
    PathGenerator<T>(mol, atoms, bonds, values.minDistance, values.maxDistance, sets)
        .ForEachPath(sink);
  }
  static bool HaveTexts(const ZQMolBase& /*mol*/, const ZQFPTypeValues& /*values*/,
                        const char* /*name*/) {
    return true;
  }
};

struct Environments {
  static constexpr unsigned int number = ZQFPType::Circular;
  template <class T, class Sink>
  static void ForEach(const ZQMolBase& mol, std::vector<T>& atoms, std::vector<T>& bonds,
                      const ZQFPTypeValues& values, Sink sink, Sets<T>* sets) {
    CircularGenerator<T>(mol, atoms, bonds, values.minDistance, values.maxDistance, sets)
        .ForEachCircular(sink);
  }
  static bool HaveTexts(const ZQMolBase& mol, const ZQFPTypeValues& values, const char* name) {
    return values.maxDistance == 0 || ZQHasNameableEnvironments(mol, name);
  }
};

struct Trees : Paths {
  static constexpr unsigned int number = ZQFPType::Tree;
  template <class T, class Sink>
  static void ForEach(const ZQMolBase& mol, std::vector<T>& atoms, std::vector<T>& bonds,
                      const ZQFPTypeValues& values, Sink sink, Sets<T>* sets) {
    TreeGenerator<T>(mol, atoms, bonds, values.minDistance, values.maxDistance, sets)
        .ForEachTree(sink);
  }
};

// The fragments of one molecule under a type: a set and a text each, and the 32-bit identifiers.
template <class Kind>
class Enumeration {
 public:
  Enumeration(const ZQMolBase& mol, const ZQFPTypeBase* type)
      : copy(mol, Kind::number),
        values_(ZQUnpackFPTypeID(ZQGetFPKind(Kind::number), type->GetID())) {}

  // False after a message.
  bool AddTexts(const char* name) {
    if (!Kind::HaveTexts(copy.Mol(), values_, name)) return false;
    const auto checkNumber = [this](const std::string&) {
      if (sets.size() == ZQMostFragments) throw ZQTooManyFragments();
    };
    ForEach<std::string>(checkNumber, &sets);
    return true;
  }
  bool AddHashes() {
    hashSize_ = ZQGetHashSize(values_.numbits);
    if (!ZQ_ASSERT(hashSize_ != 0)) return false;
    ForEach<unsigned int>([this](unsigned int id) { hashes.push_back(id); }, nullptr);
    return ZQ_ASSERT(hashes.size() == sets.size());
  }
  unsigned int BitOf(std::size_t i) const {
    const unsigned int bit = hashes[i] % hashSize_;
    ZQ_ASSERT(bit < values_.numbits);
    return bit;
  }

  ZQTracedCopy copy;
  Sets<std::string> sets;
  std::vector<unsigned int> hashes;  // of the sets

 private:
  template <class T, class Sink>
  void ForEach(Sink sink, Sets<T>* into) {
    if (copy.Mol().NumAtoms() == 0) return;
    std::vector<T> atoms;
    std::vector<T> bonds;
    ZQGetFingerprintAtomTypes(atoms, bonds, copy.Mol(), values_.atype, values_.btype);
    Kind::ForEach(copy.Mol(), atoms, bonds, values_, sink, into);
  }

  ZQFPTypeValues values_;
  unsigned int hashSize_ = 0;
};

template <class Kind>
ZQIter<ZQFPPattern> GetPatterns(const char* name, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeResult(name, type, Kind::number, mol.IsValid(), [&]() -> ZQIter<ZQFPPattern> {
    Enumeration<Kind> found(mol, type);
    if (!found.AddTexts(name) || !found.AddHashes()) return {};
    std::vector<ZQFPPattern> patterns;
    patterns.reserve(found.sets.size());
    for (std::size_t i = 0; i < found.sets.size(); ++i) {
      patterns.emplace_back(found.copy.Original(found.sets[i]), found.sets[i].GetId(),
                            found.hashes[i], found.BitOf(i));
    }
    return ZQIterate(std::move(patterns));
  });
}

template <class Kind>
ZQIter<ZQAtomBondSet> GetCoverage(const char* name, const ZQMolBase& mol, const ZQFPTypeBase* type,
                                  bool unique) {
  return ZQMakeResult(name, type, Kind::number, mol.IsValid(), [&]() -> ZQIter<ZQAtomBondSet> {
    Enumeration<Kind> found(mol, type);
    if (!found.AddTexts(name)) return {};
    std::set<std::string> texts;
    ZQDistinct<ZQAtomBondSet, ZQEqualAtomBondSet> distinct;
    for (const ZQFPAtomBondSet<std::string>& set : found.sets) {
      if (unique && !texts.insert(set.GetId()).second) continue;
      distinct.Add(found.copy.Original(set));
    }
    return ZQIterate(distinct.TakeItems());
  });
}

template <class Kind>
bool Collect(ZQFPFragments& fragments, const ZQMolBase& mol, const ZQFPTypeBase* type,
             const char* name, bool forExplanation) {
  Enumeration<Kind> found(mol, type);
  if (forExplanation) found.copy.Mol().SetPerceived(ZQPerceived::Symmetry, false);
  if (!found.AddTexts(name) || (forExplanation && !found.AddHashes())) return false;
  for (std::size_t i = 0; i < found.sets.size(); ++i) {
    const std::size_t place =
        fragments.Add({0, found.sets[i].GetId()}, found.copy.Original(found.sets[i]));
    if (forExplanation) fragments.AddBit(found.BitOf(i), place);
  }
  return true;
}

// Iterates over matches that its copies share.
class MatchIter final : public ZQPointerIter<ZQMatchBase> {
 public:
  explicit MatchIter(std::shared_ptr<std::vector<ZQMatch>> matches)
      : ZQPointerIter(PointersTo(*matches)), matches_(std::move(matches)) {}
  MatchIter* Copy() const override { return new MatchIter(*this); }

 private:
  static std::vector<ZQMatchBase*> PointersTo(std::vector<ZQMatch>& matches) {
    std::vector<ZQMatchBase*> pointers;
    pointers.reserve(matches.size());
    for (ZQMatch& match : matches) pointers.push_back(&match);
    return pointers;
  }

  std::shared_ptr<std::vector<ZQMatch>> matches_;
};

// Calls the function of the type's kind, which `column` selects; warns if there is none.
template <class Column, class... Arguments>
auto Dispatch(const char* name, bool areValid, const ZQFPTypeBase* type, Column column,
              Arguments&&... arguments) -> decltype((ZQFPKindFragments().*column)(arguments...)) {
  if (!ZQ_ASSERT(type != nullptr)) {
    ZQThrow.Warning("%s invalid fingerprint type pointer!", name);
    return {};
  }
  if (!areValid) return {};
  const ZQFPKind* kind = ZQFindFPKind(type);
  const auto function = kind ? kind->fragments.*column : nullptr;
  if (function) return function(arguments...);
  ZQThrow.Warning("%s %s", name, kind ? kind->fragments.missing : zqNoFragments);
  return {};
}

}  // namespace

ZQTracedCopy::ZQTracedCopy(const ZQMolBase& mol, unsigned int fptype) {
  struct Tags {
    const ZQMolBase& tagged;
    ~Tags() { ZQDetetePointersAsGenericData(tagged); }
  };
  {
    const Tags tags{mol};
    ZQSetPointersAsGenericData(mol);
    copy_ = mol;
  }
  ZQPrepareForFingerprinting(copy_, fptype);
  atoms_.resize(copy_.GetMaxAtomIdx());
  bonds_.resize(copy_.GetMaxBondIdx());
  const GetOriginalPtr<ZQAtomBase> originalAtom;
  const GetOriginalPtr<ZQBondBase> originalBond;
  for (unsigned int i = 0; i < atoms_.size(); ++i) {
    if (const ZQAtomBase* atom = copy_.GetAtomAt(i)) atoms_[i] = originalAtom(atom);
  }
  for (unsigned int i = 0; i < bonds_.size(); ++i) {
    if (const ZQBondBase* bond = copy_.GetBondAt(i)) bonds_[i] = originalBond(bond);
  }
}

ZQAtomBondSet ZQTracedCopy::Original(const ZQMatchBase& match) const {
  ZQAtomBondSet set;
  for (const auto& pair : match.GetAtomPairs()) set.AddAtom(Original(*pair.target));
  for (const auto& pair : match.GetBondPairs()) set.AddBond(Original(*pair.target));
  return set;
}

ZQIter<ZQMatchBase> ZQGetOverlap(const char* name, const ZQMolBase& a, const ZQMolBase& b,
                                 const ZQFPTypeBase* type, unsigned int fptype) {
  const bool areValid = a.IsValid() && b.IsValid();
  return ZQMakeResult(name, type, fptype, areValid, [&]() -> ZQIter<ZQMatchBase> {
    const ZQFPKindFragments& kind = ZQGetFPKind(fptype).fragments;
    ZQFPFragments ofA;
    ZQFPFragments ofB;
    if (!kind.collect(ofA, a, type, false) || !kind.collect(ofB, b, type, false)) return {};
    if (ZQCountPairs(ofA, ofB) > std::numeric_limits<unsigned int>::max()) throw std::bad_alloc();
    ZQMatchList matches(kind.dropsEqualMatches);
    ZQAddOverlap(matches, ofA, ofB, [](const std::string& /*text*/) {});
    if (matches.Size() == 0) return {};
    return {new MatchIter(std::make_shared<std::vector<ZQMatch>>(matches.Take()))};
  });
}

bool ZQCollectPathFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                            const ZQFPTypeBase* type, bool forExplanation) {
  return Collect<Paths>(fragments, mol, type, "ZQGetPathFPOverlap()", forExplanation);
}
bool ZQCollectCircularFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                                const ZQFPTypeBase* type, bool forExplanation) {
  return Collect<Environments>(fragments, mol, type, "ZQGetCircularFPOverlap()", forExplanation);
}
bool ZQCollectTreeFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                            const ZQFPTypeBase* type, bool forExplanation) {
  return Collect<Trees>(fragments, mol, type, "ZQGetTreeFPOverlap()", forExplanation);
}

ZQIter<ZQFPPattern> ZQGetFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return Dispatch("ZQGetFPPatterns()", mol.IsValid(), type, &ZQFPKindFragments::patterns, mol,
                  type);
}
ZQIter<ZQFPPattern> ZQGetPathFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return GetPatterns<Paths>("ZQGetPathFPPatterns()", mol, type);
}
ZQIter<ZQFPPattern> ZQGetCircularFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return GetPatterns<Environments>("ZQGetCircularFPPatterns()", mol, type);
}
ZQIter<ZQFPPattern> ZQGetTreeFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return GetPatterns<Trees>("ZQGetTreeFPPatterns()", mol, type);
}

ZQIter<ZQAtomBondSet> ZQGetFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type, bool unique) {
  return Dispatch("ZQGetFPCoverage()", mol.IsValid(), type, &ZQFPKindFragments::coverage, mol, type,
                  unique);
}
ZQIter<ZQAtomBondSet> ZQGetPathFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                          bool unique) {
  return GetCoverage<Paths>("ZQGetPathFPCoverage()", mol, type, unique);
}
ZQIter<ZQAtomBondSet> ZQGetCircularFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                              bool unique) {
  return GetCoverage<Environments>("ZQGetCircularFPCoverage()", mol, type, unique);
}
ZQIter<ZQAtomBondSet> ZQGetTreeFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                          bool unique) {
  return GetCoverage<Trees>("ZQGetTreeFPCoverage()", mol, type, unique);
}

ZQIter<ZQMatchBase> ZQGetFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                   const ZQFPTypeBase* type) {
  return Dispatch("ZQGetFPOverlap()", a.IsValid() && b.IsValid(), type, &ZQFPKindFragments::overlap,
                  a, b, type);
}
ZQIter<ZQMatchBase> ZQGetPathFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                       const ZQFPTypeBase* type) {
  return ZQGetOverlap("ZQGetPathFPOverlap()", a, b, type, ZQFPType::Path);
}
ZQIter<ZQMatchBase> ZQGetCircularFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                           const ZQFPTypeBase* type) {
  return ZQGetOverlap("ZQGetCircularFPOverlap()", a, b, type, ZQFPType::Circular);
}
ZQIter<ZQMatchBase> ZQGetTreeFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                       const ZQFPTypeBase* type) {
  return ZQGetOverlap("ZQGetTreeFPOverlap()", a, b, type, ZQFPType::Tree);
}
ZQIter<ZQMatchBase> ZQGetMACCSFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                        const ZQFPTypeBase* type) {
  return ZQGetOverlap("ZQGetMACCSFPOverlap()", a, b, type, ZQFPType::MACCS166);
}

}  // namespace ZQKorvex
