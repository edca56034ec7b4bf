#pragma once

/// Random fingerprints, as objects, as records and as `.fpbin` files, for tests without molecules.

#include <cstdint>
#include <random>

#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpfast_local.h"
#include "tests/program_helpers.h"

/// Index and score of each hit.
using Hits = std::vector<std::pair<std::uint64_t, double>>;
inline Hits HitsOf(ZQKorvex::ZQIter<ZQKorvex::ZQSimScore> iter) {
  Hits hits;
  for (; iter; ++iter) hits.emplace_back(iter->GetIdx(), iter->GetScore());
  return hits;
}

inline const ZQKorvex::ZQFPTypeBase* PathTypeOf(unsigned int numbits) {
  return ZQKorvex::ZQGetPathFPType(numbits, 0, 5, 1, 1);
}

/// Each is one of a few patterns with some bits changed, so that scores spread from 0 to 1 and many
/// are equal; every ninth has no bits.
inline std::vector<ZQKorvex::ZQFingerPrint> RandomFingerPrints(std::size_t n, unsigned int numbits,
                                                               unsigned int seed = 1) {
  std::mt19937_64 random(seed);
  std::vector<ZQKorvex::ZQFingerPrint> fps(n);
  for (std::size_t i = 0; i < n; ++i) {
    fps[i].SetSize(numbits);
    fps[i].SetFPTypeBase(PathTypeOf(numbits));
    if (i % 9 == 8) continue;
    std::mt19937_64 pattern(random() % 5);
    const bool exact = random() % 3 == 0;
    for (unsigned int w = 0; w < fps[i].NumWords(); ++w) {
      const std::uint64_t word = pattern() & pattern();
      fps[i].Words()[w] =
          exact ? word : (word & (random() | random())) | (random() & random() & random());
    }
  }
  return fps;
}

/// The records of a database, after `offset` further words.
inline std::vector<std::uint64_t> RecordsOf(const std::vector<ZQKorvex::ZQFingerPrint>& fps,
                                            std::size_t offset = 0) {
  std::vector<std::uint64_t> records(offset);
  for (std::size_t i = 0; i < fps.size(); ++i) {
    records.push_back(i);
    records.push_back(fps[i].CountBits());
    records.insert(records.end(), fps[i].Words(), fps[i].Words() + fps[i].NumWords());
  }
  return records;
}

/// A private file of this test, deleted at the end.
class TempFile {
 public:
  explicit TempFile(const std::string& name) : name_(folder_ / name) {}
  const std::string& Name() const { return name_; }
  void Write(const std::string& content) const { WriteFile(name_, content); }
  std::string Read() const { return ReadFile(name_); }

 private:
  WorkFolder folder_;
  std::string name_;
};

/// The bytes of a `.fpbin` file.
inline std::string DatabaseBytes(const std::vector<ZQKorvex::ZQFingerPrint>& fps,
                                 const ZQKorvex::ZQFPTypeBase* type) {
  ZQKorvex::ZQFastFPDatabaseParams params;
  params.SetMoleculeFile("mols.smi");
  params.SetFPTypeBase(type);
  params.SetNumFingerPrints(fps.size());
  std::string bytes = ZQKorvex::ZQWriteFastFPDatabaseHeaderBlob(params);
  for (std::size_t i = 0; i < fps.size(); ++i) {
    bytes += ZQKorvex::ZQWriteFastFingerPrintBlob(i, fps[i]);
  }
  return bytes;
}
