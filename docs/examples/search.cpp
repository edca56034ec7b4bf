#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  const char* molecules = "data/drugs.smi";
  if (!ZQCreateFastFPDatabaseFile("drugs.fpbin", molecules, ZQGetFPType(ZQFPType::Path))) return 1;

  const ZQFastFPDatabase database("drugs.fpbin", ZQFastFPDatabaseMemoryType::MemoryMapped);
  ZQMolDatabase records;
  ZQMol aspirin;
  if (!database.IsValid() || !records.Open(molecules) ||
      !ZQSmilesToMol(aspirin, "CC(=O)Oc1ccccc1C(=O)O")) {
    return 1;
  }

  ZQFPDatabaseOptions options;
  options.SetLimit(5);
  for (auto hit = database.GetSortedScores(aspirin, options); hit; ++hit) {
    const auto record = static_cast<unsigned int>(hit->GetIdx());
    std::printf("%.3f %s\n", hit->GetScore(), records.GetTitle(record).c_str());
  }
}
