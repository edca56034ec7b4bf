#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  // A type is made once, by its string or by its numbers; equal types are one object.
  const ZQFPTypeBase* type =
      ZQGetFPType("Path,ver=2.0.0,size=2048,bonds=0-5,atype=DefaultPathAtom,btype=DefaultPathBond");
  if (!type || type != ZQGetPathFPType(2048, 0, 5, ZQFPAtomType::DefaultPathAtom,
                                       ZQFPBondType::DefaultPathBond)) {
    return 1;
  }

  ZQMol ethanol;
  ZQMol propanol;
  ZQFingerPrint a;
  ZQFingerPrint b;
  if (!ZQSmilesToMol(ethanol, "CCO") || !ZQSmilesToMol(propanol, "CCCO") ||
      !ZQMakeFP(a, ethanol, type) || !ZQMakeFP(b, propanol, type)) {
    return 1;
  }
  std::printf("%u bits and %u bits of %u\n", a.CountBits(), b.CountBits(), a.GetSize());
  std::printf("Tanimoto %.3f\n", ZQTanimoto(a, b));
  std::printf("Tversky  %.3f\n", ZQTversky(a, b, 1.0F, 0.0F));
}
