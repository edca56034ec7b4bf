#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  ZQMol alanine;
  ZQMol mirrored;
  ZQMol glycine;
  if (!ZQSmilesToMol(alanine, "N[C@@H](C)C(=O)O") || !ZQSmilesToMol(mirrored, "N[C@H](C)C(=O)O") ||
      !ZQSmilesToMol(glycine, "NCC(=O)O")) {
    return 1;
  }
  for (ZQMol* mol : {&alanine, &mirrored}) {
    ZQPrepareForVsepr(*mol);
    ZQPrepVsepr(*mol, ZQVseprOptions());
  }
  for (auto atom = alanine.GetAtoms(); atom; ++atom) {
    const unsigned int type = VSEPRAroStereoType::GetType(*atom);
    std::printf("%u: %u %s\n", atom->GetIdx(), type, VSEPRAroStereoType::GetName(type).c_str());
  }
  std::printf("whole molecules %.3f\n", ZQGetVseprTanimoto(alanine, mirrored, 0.0));

  const ZQVseprOptions flat = ZQVseprOptions().SetStereoAware(false);
  const ZQVseprFingerprint whole(alanine, flat);
  std::printf("without stereo  %.3f\n", whole.GetTanimoto(ZQVseprFingerprint(mirrored, flat)));
  // What surrounds the carbon of the acid group.
  const ZQVseprFingerprint acid(*alanine.GetAtomAt(3), flat);
  const ZQVseprFingerprint other(*glycine.GetAtomAt(2), flat);
  std::printf("acid groups     %.3f\n", ZQGetTanimoto(acid, other));
}
