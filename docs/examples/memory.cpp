#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  ZQFPDatabase database(ZQFPType::MACCS166);
  database.SetSimFunc(ZQSimMeasure::Dice, true);
  for (const char* smiles : {"CCO", "CCCO", "c1ccccc1O", "CC(=O)O"}) {
    ZQMol mol;
    if (!ZQSmilesToMol(mol, smiles) || database.AddFP(mol) == ZQFPDatabase::noIndex) return 1;
  }
  ZQMol query;
  if (!ZQSmilesToMol(query, "CCCCO")) return 1;
  // The best two of all: an end of 0 is the last one.
  for (auto hit = database.GetSortedScores(query, 2, 0, 0); hit; ++hit) {
    std::printf("%lu %.3f\n", hit->GetIdx(), hit->GetScore());
  }
}
