#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  ZQMol aspirin;
  ZQMol salicylic;
  if (!ZQSmilesToMol(aspirin, "CC(=O)Oc1ccccc1C(=O)O") ||
      !ZQSmilesToMol(salicylic, "OC(=O)c1ccccc1O")) {
    return 1;
  }
  const ZQFPTypeBase* type = ZQGetCircularFPType(4096, 0, 3, ZQFPAtomType::DefaultCircularAtom,
                                                 ZQFPBondType::DefaultCircularBond);

  // Which fragments set which bits of one molecule: the largest of the first atom.
  for (auto pattern = ZQGetFPPatterns(aspirin, type); pattern; ++pattern) {
    if (pattern->GetAtoms().front()->GetIdx() != 0 || pattern->NumAtoms() < 4) continue;
    std::printf("bit %u: %s\n", pattern->GetBit(), pattern->GetSMARTS().c_str());
    break;
  }

  // What two molecules share, and what each atom is worth.
  ZQSimilarityExplanation explanation;
  if (!ZQExplainSimilarity(explanation, aspirin, salicylic, type)) return 1;
  const auto& [a, b] = explanation.sides;
  std::printf("Tanimoto %.3f: %u and %u bits, %u in both\n", explanation.score, a.count, b.count,
              explanation.both);
  const ZQSharedFragment& largest = explanation.overlap.front();
  std::printf("%s: %u atoms\n", largest.text.c_str(), largest.match.NumAtoms());
  for (unsigned int i = 0; i < a.weights.size(); ++i) {
    const ZQAtomBase* atom = aspirin.GetAtomAt(i);
    std::printf("%s%u %s %+.3f\n", ZQGetAtomicSymbol(atom->GetAtomicNum()), i,
                a.sharedAtoms[i] ? "shared" : "alone ", a.weights[i]);
  }
}
