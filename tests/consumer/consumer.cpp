#include <korvex/korvex.h>

#include <iostream>

int main() {
  ZQKorvex::ZQGraphMol mol;
  ZQKorvex::ZQSmilesToMol(mol, "CCO");
  ZQKorvex::ZQFingerPrint fp;
  if (!ZQKorvex::ZQMakePathFP(fp, mol)) return 1;
  std::cout << fp.CountBits() << " bits by " << ZQKorvex::ZQKorvexGetRelease() << '\n';
}
