#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  ZQMol aspirin;
  ZQMol salicylicAcid;
  if (!ZQSmilesToMol(aspirin, "CC(=O)Oc1ccccc1C(=O)O") ||
      !ZQSmilesToMol(salicylicAcid, "OC(=O)c1ccccc1O")) {
    return 1;
  }
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    ZQFingerPrint a;
    ZQFingerPrint b;
    if (!ZQMakeFP(a, aspirin, kind.number) || !ZQMakeFP(b, salicylicAcid, kind.number)) return 1;
    std::printf("%.3f by %s\n", ZQTanimoto(a, b), a.GetFPTypeBase()->GetFPTypeString().c_str());
  }

  // A search reads rings and aromaticity as they are flagged. A pattern is parsed once, and any
  // number of threads may search with it.
  ZQFindRingAtomsAndBonds(aspirin);
  ZQAssignAromaticFlags(aspirin, 2, true, 0, false);
  const ZQSubSearch acid("c-C(=O)[OH]");
  for (auto match = acid.Match(aspirin, true); match; ++match) {
    std::printf("atoms");
    for (auto atom = match->GetTargetAtoms(); atom; ++atom) std::printf(" %u", atom->GetIdx());
    std::printf("\n");
  }
}
