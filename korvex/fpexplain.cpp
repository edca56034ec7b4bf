#include "korvex/fpexplain.h"

#include <algorithm>

#include "korvex/fppattern_local.h"
#include "korvex/measures_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* operation = "ZQExplainSimilarity()";

using Side = ZQSimilarityExplanation::Side;

double ShareOf(unsigned int part, unsigned int whole) {
  return whole == 0 ? 0.0 : static_cast<double>(part) / whole;
}

void MarkSet(Side& side, const ZQAtomBondSet& set) {
  for (const ZQAtomBase* atom : set.GetAtoms()) side.sharedAtoms[atom->GetIdx()] = true;
  for (const ZQBondBase* bond : set.GetBonds()) side.sharedBonds[bond->GetIdx()] = true;
}

void ComputeShares(Side& side, const ZQMolBase& mol) {
  unsigned int atoms = 0;
  unsigned int covered = 0;
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (!atom || atom->IsHydrogen()) continue;
    ++atoms;
    covered += side.sharedAtoms[i];
  }
  side.coveredAtoms = ShareOf(covered, atoms);
  unsigned int bonds = 0;
  covered = 0;
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    const ZQBondBase* bond = mol.GetBondAt(i);
    if (!bond || bond->GetBgn()->IsHydrogen() || bond->GetEnd()->IsHydrogen()) continue;
    ++bonds;
    covered += side.sharedBonds[i];
  }
  side.coveredBonds = ShareOf(covered, bonds);
}

// The bits to which each atom contributes, of one fingerprint.
struct Contribution {
  unsigned int own = 0;   // in this fingerprint alone
  unsigned int both = 0;  // in the other one too
};

// Each bit counts once for an atom, however many of its fragments set it.
std::vector<Contribution> ContributionsOf(const ZQFPFragments& fragments, unsigned int numAtoms,
                                          const ZQFingerPrint& fp, const ZQFingerPrint& other) {
  std::vector<ZQFPFragments::Setting> settings = fragments.GetSettings();
  std::ranges::sort(settings, {}, &ZQFPFragments::Setting::bit);
  std::vector<Contribution> contributions(numAtoms);
  std::vector<unsigned int> counted(numAtoms, ~0U);  // the last bit counted for an atom
  for (const auto& [bit, occurrence] : settings) {
    if (!fp.IsBitOn(bit)) continue;  // a second key with one match
    for (const ZQAtomBase* atom : fragments[occurrence].GetAtoms()) {
      const unsigned int idx = atom->GetIdx();
      if (std::exchange(counted[idx], bit) == bit) continue;
      ++(other.IsBitOn(bit) ? contributions[idx].both : contributions[idx].own);
    }
  }
  return contributions;
}

// The counts after an atom's bits are removed from one of the two fingerprints.
ZQCounts Without(ZQCounts n, const Contribution& gone, bool fromA) {
  (fromA ? n.onlyA : n.onlyB) -= gone.own;
  (fromA ? n.onlyB : n.onlyA) += gone.both;
  n.both -= gone.both;
  n.neither += gone.own;
  return n;
}

void ListOverlap(ZQSimilarityExplanation& explanation, const ZQFPFragments& a,
                 const ZQFPFragments& b, bool unique) {
  const std::size_t count = ZQCountPairs(a, b);
  if (count > ZQMostSharedFragments) {
    ZQThrow.Error("%s : %zu shared fragments (at most %zu can be listed)", operation, count,
                  ZQMostSharedFragments);
    return;
  }
  ZQMatchList matches(unique);
  std::vector<ZQSharedFragment> overlap;
  ZQAddOverlap(matches, a, b, [&](const std::string& text) { overlap.push_back({text, {}}); });
  std::vector<ZQMatch> list = matches.Take();
  for (std::size_t i = 0; i < list.size(); ++i) overlap[i].match = std::move(list[i]);
  std::ranges::stable_sort(overlap, std::ranges::greater(), [](const ZQSharedFragment& shared) {
    return std::pair(shared.match.NumAtoms(), shared.match.NumBonds());
  });
  explanation.overlap = std::move(overlap);
}

void WeighAtoms(Side& side, const std::vector<Contribution>& contributions,
                const ZQMeasure& measure, const ZQCounts& counts, bool isA, float alpha,
                float beta) {
  const double score = ZQScoreOf(measure, counts, alpha, beta);
  side.weights.reserve(contributions.size());
  for (const Contribution& contribution : contributions) {
    const double rest = ZQScoreOf(measure, Without(counts, contribution, isA), alpha, beta);
    side.weights.push_back(measure.isDistance ? rest - score : score - rest);
  }
}

}  // namespace

bool ZQExplainSimilarity(ZQSimilarityExplanation& explanation, const ZQMolBase& a,
                         const ZQMolBase& b, const ZQFPTypeBase* type, unsigned int measure,
                         float alpha, float beta) {
  explanation = {};
  const ZQMeasure* row = ZQFindMeasure(measure);
  if (!row) {
    ZQThrow.Error("%s : unknown similarity measure %u", operation, measure);
    return false;
  }
  const std::array<const ZQMolBase*, 2> mols{&a, &b};
  auto& [sideA, sideB] = explanation.sides;
  if (!ZQMakeFP(sideA.fp, a, type) || !ZQMakeFP(sideB.fp, b, type)) return false;
  const bool done = ZQGuardMemory(operation, [&] {
    const ZQCounts counts = ZQCountItems(sideA.fp, sideB.fp);
    explanation.both = counts.both;
    explanation.score = ZQGetSimilarity(measure, sideA.fp, sideB.fp, alpha, beta);
    sideA.count = counts.onlyA + counts.both;
    sideB.count = counts.onlyB + counts.both;
    for (std::size_t i = 0; i < mols.size(); ++i) {
      explanation.sides[i].sharedAtoms.resize(mols[i]->GetMaxAtomIdx());
      explanation.sides[i].sharedBonds.resize(mols[i]->GetMaxBondIdx());
    }
    const ZQFPKindFragments& kind = ZQFindFPKind(type)->fragments;
    if (!kind.collect) {
      ZQGetFPOverlap(a, b, type);  // warns
      return true;
    }
    std::array<ZQFPFragments, 2> fragments;
    auto& [ofA, ofB] = fragments;
    if (!kind.collect(ofA, a, type, true) || !kind.collect(ofB, b, type, true)) return true;
    ZQForEachShared(ofA, ofB,
                    [&](const std::string& /*text*/, const auto& placesA, const auto& placesB) {
                      for (const std::size_t place : placesA) MarkSet(sideA, ofA[place]);
                      for (const std::size_t place : placesB) MarkSet(sideB, ofB[place]);
                    });
    for (std::size_t i = 0; i < mols.size(); ++i) {
      Side& side = explanation.sides[i];
      ComputeShares(side, *mols[i]);
      WeighAtoms(side,
                 ContributionsOf(fragments[i], mols[i]->GetMaxAtomIdx(), side.fp,
                                 explanation.sides[1 - i].fp),
                 *row, counts, i == 0, alpha, beta);
    }
    ListOverlap(explanation, ofA, ofB, kind.dropsEqualMatches);
    return true;
  });
  return done || static_cast<bool>(sideB.fp);
}

}  // namespace ZQKorvex
