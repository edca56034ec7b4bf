#pragma once

/// Shared by the tests of the generators.

#include <vector>

#include "contract/quarnel/perception.h"
#include "korvex/fingerprint.h"
#include "korvex/fpatomtyper.h"
#include "tests/mol_helpers.h"

inline std::vector<unsigned int> BitsOf(const ZQKorvex::ZQFingerPrint& fp) {
  std::vector<unsigned int> bits;
  for (unsigned int i = 0; i < fp.GetSize(); ++i) {
    if (fp.IsBitOn(i)) bits.push_back(i);
  }
  return bits;
}

/// A fingerprint whose bits are the bytes of a text.
inline ZQKorvex::ZQFingerPrint FingerPrintOfText(const std::string& text, unsigned int kind) {
  ZQKorvex::ZQFingerPrint fp;
  fp.SetSize(static_cast<unsigned int>(8 * text.size()));
  std::copy(text.begin(), text.end(), reinterpret_cast<char*>(fp.Words()));
  fp.SetFPTypeBase(ZQKorvex::ZQGetFPType(kind));
  return fp;
}

/// The multipliers of identifiers, digit by digit as published, and the next two; after these every
/// fifth prime.
inline unsigned int PublishedMultiplier(std::size_t index) {
  static std::vector<unsigned int> multipliers{
      947,  983,  1019, 1049, 1087, 1109, 1153, 1193, 1229, 1277, 1297, 1321, 1381,
      1429, 1453, 1487, 1523, 1559, 1597, 1619, 1663, 1699, 1741, 1783, 1823, 1871,
      1901, 1949, 1993, 2017, 2063, 2089, 2131, 2161, 2221, 2267, 2293, 2339, 2371,
      2399, 2441, 2477, 2543, 2591, 2633, 2671, 2693, 2719, 2749, 2791, 2833, 2861};
  const auto isPrime = [](unsigned int n) {
    unsigned int divisor = 2;
    while (n % divisor != 0) ++divisor;
    return divisor == n;
  };
  while (multipliers.size() <= index) {
    unsigned int next = multipliers.back();
    for (int primes = 0; primes < 5; primes += isPrime(next)) ++next;
    multipliers.push_back(next);
  }
  return multipliers[index];
}

/// A prepared molecule with its invariants.
template <class T>
struct Prepared {
  Quarnel::ZQGraphMol mol;
  std::vector<T> atoms;
  std::vector<T> bonds;

  Prepared(const Quarnel::ZQMolBase& from, unsigned int atype, unsigned int btype,
           bool symmetry = false)
      : mol(from) {
    ZQKorvex::ZQPrepareForFingerprinting(mol, ZQKorvex::ZQFPType::Path);
    ZQKorvex::ZQGetFingerprintAtomTypes(atoms, bonds, mol, atype, btype);
    // The perception of chirality may leave classes set.
    for (auto atom = mol.GetAtoms(); atom; ++atom) atom->SetSymmetryClass(0);
    if (symmetry) Quarnel::ZQPerceiveSymmetry(mol, true, false);
  }
};

/// Molecules equal to this one: atoms and bonds in another order, another Kekulé structure, and
/// every second one with explicit hydrogens, whose preparation leaves holes in the indices.
inline std::vector<Quarnel::ZQMol> OtherGuises(const Quarnel::ZQMolBase& mol, unsigned int count) {
  std::vector<Quarnel::ZQMol> others;
  for (unsigned int seed = 0; seed < count; ++seed) {
    others.push_back(Shuffled(mol, seed));
    EXPECT_TRUE(Quarnel::ZQKekulize(others.back()));
    if (seed % 2 != 0) others.back() = Shuffled(WithHydrogens(others.back()), seed);
  }
  return others;
}
