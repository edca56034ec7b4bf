#include <set>

#include "korvex/fppattern_local.h"
#include "korvex/maccs_local.h"

namespace ZQKorvex {

namespace {

// Calls `visit(atom, atomicNum, key)` for each atom of an element that has a key.
template <class Visit>
void ForEachKeyedAtom(const ZQMolBase& mol, Visit visit) {
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (!atom) continue;
    const unsigned int key = ZQMACCSElementKey(atom->GetAtomicNum());
    if (key != 0) visit(*atom, atom->GetAtomicNum(), key);
  }
}

// Calls `visit(index, key, match)` for each match of each key that is a substructure; with
// `firstOnly`, for the first of each key.
template <class Visit>
void ForEachKeyMatch(const ZQMolBase& mol, bool firstOnly, Visit visit) {
  const MACCS166Keys& keys = MACCS166Keys::Get();
  const ZQSubSearchTarget target(mol);
  for (unsigned int i = 0; i < keys.size(); ++i) {
    if (!keys[i].query.SingleMatch(target)) continue;
    for (auto match = keys[i].query.Match(mol, true); match; ++match) {
      visit(i, keys[i], *match);
      if (firstOnly) break;
    }
  }
}

}  // namespace

bool ZQCollectMACCSFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                             const ZQFPTypeBase* type, bool forExplanation) {
  ZQTracedCopy copy(mol, type->GetFPType());
  const auto addBit = [&](unsigned int key, std::size_t place) {
    if (forExplanation && key != 0) fragments.AddBit(key - 1, place);
  };
  // Elements come before keys, by atomic number.
  ForEachKeyedAtom(copy.Mol(), [&](const ZQAtomBase& atom, unsigned int element, unsigned int key) {
    ZQAtomBondSet set;
    set.AddAtom(copy.Original(atom));
    addBit(key, fragments.Add({element, "[#" + std::to_string(element) + "]"}, std::move(set)));
  });
  ForEachKeyMatch(copy.Mol(), false,
                  [&](unsigned int i, const MACCSKey& key, const ZQMatchBase& match) {
                    const std::size_t place =
                        fragments.Add({zqMACCSElements + i, key.smarts}, copy.Original(match));
                    addBit(key.number, place);
                    addBit(key.secondNumber, place);
                  });
  return true;
}

ZQIter<ZQAtomBondSet> ZQGetMACCSFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                           bool unique) {
  return ZQMakeResult("ZQGetMACCSFPCoverage()", type, ZQFPType::MACCS166, mol.IsValid(), [&] {
    ZQTracedCopy copy(mol, ZQFPType::MACCS166);
    ZQDistinct<ZQAtomBondSet, ZQEqualAtomBondSet> distinct;
    std::set<unsigned int> elements;
    ForEachKeyedAtom(copy.Mol(),
                     [&](const ZQAtomBase& atom, unsigned int element, unsigned int /*key*/) {
                       if (unique && !elements.insert(element).second) return;
                       ZQAtomBondSet set;
                       set.AddAtom(copy.Original(atom));
                       distinct.Add(std::move(set));
                     });
    ForEachKeyMatch(copy.Mol(), unique,
                    [&](unsigned int /*index*/, const MACCSKey& /*key*/, const ZQMatchBase& match) {
                      distinct.Add(copy.Original(match));
                    });
    return ZQIterate(distinct.TakeItems());
  });
}

}  // namespace ZQKorvex
