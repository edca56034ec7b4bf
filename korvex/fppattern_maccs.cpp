#include <set>

#include "korvex/fpexplain.h"
#include "korvex/fppattern_local.h"
#include "korvex/maccs_local.h"

namespace ZQKorvex {

namespace {

ZQAtomBondSet SetOf(const std::vector<ZQAtomBase*>& atoms) {
  ZQAtomBondSet set;
  set.Reserve(atoms.size(), 0);
  for (ZQAtomBase* atom : atoms) set.AddAtom(atom);
  return set;
}

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

// Calls `visit(set)` with each combination of `size` of the atoms from place `first` on, together
// with the chosen ones, in lexicographic order.
template <class Visit>
void ForEachCombination(const std::vector<ZQAtomBase*>& atoms, std::size_t first, unsigned int size,
                        std::vector<ZQAtomBase*>& chosen, Visit& visit) {
  if (size == 0) {
    visit(SetOf(chosen));
    return;
  }
  for (; first + size <= atoms.size(); ++first) {
    chosen.push_back(atoms[first]);
    ForEachCombination(atoms, first + 1, size - 1, chosen, visit);
    chosen.pop_back();
  }
}

std::size_t CountCombinations(std::size_t of, unsigned int size) {
  std::size_t count = 1;
  for (unsigned int i = 0; i < size; ++i) count = ZQSaturatedProduct(count, of - i) / (i + 1);
  return count;
}

// Which matches of a key are visited. The union replaces more than an explanation can list.
enum class Matches { All, First, AllOrUnion };

// Calls `visit(index, key, set, count)` for each match of each key that is a substructure, as a set
// of the caller's atoms and bonds; the count is 1, or the number of matches of which it is the
// union.
template <class Visit>
void ForEachKeyMatch(ZQTracedCopy& copy, Matches matches, Visit visit) {
  const MACCS166Keys& keys = MACCS166Keys::Get();
  const ZQSubSearchTarget target(copy.Mol());
  std::size_t left = ZQMostFragments;
  const auto take = [&left](std::size_t count) {
    if (count > left) throw ZQTooManyFragments();
    left -= count;
  };
  for (unsigned int i = 0; i < keys.size(); ++i) {
    const MACCSKey& key = keys[i];
    const auto visitSet = [&](ZQAtomBondSet set) { visit(i, key, std::move(set), std::size_t{1}); };
    if (key.numParts == 1) {
      // All matches, since the search for unique ones passes through all.
      const std::size_t most = matches == Matches::First ? 1 : left + 1;
      const std::size_t count = key.query.CountMatches(target, false, most);
      take(count);
      if (count == 0) continue;
      for (auto match = key.query.Match(copy.Mol(), true); match; ++match) {
        visitSet(copy.Original(*match));
        if (matches == Matches::First) break;
      }
      continue;
    }
    if (key.part.CountMatches(target, false, key.numParts) < key.numParts) continue;
    std::vector<ZQAtomBase*> atoms;
    for (auto match = key.part.Match(copy.Mol(), true); match; ++match) {
      atoms.push_back(copy.Original(*match->GetAtomPairs().front().target));
    }
    if (matches == Matches::First) atoms.resize(key.numParts);
    const std::size_t count = CountCombinations(atoms.size(), key.numParts);
    if (matches != Matches::AllOrUnion) {
      take(count);
    } else if (count > ZQMostSharedFragments) {
      visit(i, key, SetOf(atoms), count);
      continue;
    }
    std::vector<ZQAtomBase*> chosen;
    ForEachCombination(atoms, 0, key.numParts, chosen, visitSet);
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
    addBit(key, fragments.Add({element, "[#" + std::to_string(element) + "]"},
                              SetOf({copy.Original(atom)})));
  });
  ForEachKeyMatch(copy, forExplanation ? Matches::AllOrUnion : Matches::All,
                  [&](unsigned int i, const MACCSKey& key, ZQAtomBondSet set, std::size_t count) {
                    const std::size_t place =
                        fragments.Add({zqMACCSElements + i, key.smarts}, std::move(set), count);
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
                       distinct.Add(SetOf({copy.Original(atom)}));
                     });
    ForEachKeyMatch(copy, unique ? Matches::First : Matches::All,
                    [&](unsigned int /*index*/, const MACCSKey& /*key*/, ZQAtomBondSet set,
                        std::size_t /*count*/) { distinct.Add(std::move(set)); });
    return ZQIterate(distinct.TakeItems());
  });
}

}  // namespace ZQKorvex
