// The identifiers of circular and tree fingerprints, computed independently.

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <map>
#include <random>
#include <set>

#include "korvex/circular_local.h"
#include "korvex/tree_local.h"
#include "tests/generator_helpers.h"
#include "tests/memory_helpers.h"
#include "tests/processor_helpers.h"

namespace ZQKorvex {

namespace {

using Ids = std::vector<unsigned int>;

// A molecule as sets of numbers, with identifiers straight from the definition.
class Definition {
 public:
  explicit Definition(const Prepared<unsigned int>& from) : from_(from) {
    for (auto bond = from.mol.GetBonds(); bond; ++bond) {
      const unsigned int a = bond->GetBgn()->GetIdx();
      const unsigned int b = bond->GetEnd()->GetIdx();
      bonds_[a][b] = bonds_[b][a] = from.bonds[bond->GetIdx()];
    }
  }

  unsigned int Hash(const std::set<unsigned int>& atoms) {
    std::map<unsigned int, unsigned int> values;
    for (const unsigned int a : atoms) values[a] = from_.atoms[a];
    for (std::size_t pass = 0; pass < atoms.size() / 2; ++pass) {
      const auto before = values;
      for (auto& [a, value] : values) {
        Ids terms;
        for (const auto& [b, bond] : bonds_[a]) {
          if (atoms.count(b) != 0) terms.push_back(bond + before.at(b));
        }
        std::sort(terms.begin(), terms.end());
        for (std::size_t k = 0; k < terms.size(); ++k) value += terms[k] * PublishedMultiplier(k);
      }
    }
    Ids sorted;
    for (const auto& [a, value] : values) sorted.push_back(value);
    std::sort(sorted.begin(), sorted.end());
    unsigned int id = 0;
    std::size_t k = 1;
    for (const unsigned int value : sorted) {
      if (value != 0) id += value * PublishedMultiplier(++k);
    }
    return id;
  }

  Ids Circular(unsigned int min, unsigned int max) {
    Ids ids = min == 0 ? Singles() : Ids{};
    for (auto atom = from_.mol.GetAtoms(); atom; ++atom) {
      const unsigned int centre = atom->GetIdx();
      std::set<unsigned int> ball{centre};
      bool grew = true;
      for (unsigned int radius = 1; radius <= max && grew; ++radius) {
        std::set<unsigned int> larger = ball;
        for (const unsigned int a : ball) {
          for (const auto& neighbour : bonds_[a]) larger.insert(neighbour.first);
        }
        grew = larger.size() != ball.size();
        ball = larger;
        if (radius >= min) ids.push_back(ball.size() == 1 ? from_.atoms[centre] : Hash(ball));
      }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
  }

  // Every connected subset, for molecules of few atoms.
  Ids Trees(unsigned int min, unsigned int max) {
    Ids ids = min == 0 ? Singles() : Ids{};
    for (std::uint32_t mask = 1; mask < 1U << from_.mol.GetMaxAtomIdx(); ++mask) {
      const auto bonds = static_cast<unsigned int>(std::popcount(mask)) - 1;
      if (bonds < std::max(min, 1U) || bonds > max) continue;
      std::set<unsigned int> atoms;
      for (unsigned int a = 0; a < 32; ++a) {
        if (mask >> a & 1) atoms.insert(a);
      }
      if (!IsConnected(atoms)) continue;
      if (bonds == 1) {
        const unsigned int x = from_.atoms[*atoms.begin()];
        const unsigned int y = from_.atoms[*atoms.rbegin()];
        ids.push_back(std::max(x, y) * 947 + std::min(x, y) * 1019 +
                      bonds_[*atoms.begin()][*atoms.rbegin()] * 983);
      } else {
        ids.push_back(Hash(atoms));
      }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
  }

  // The atoms of each set in the order of discovery: depth first, without sets seen before.
  using Rows = std::vector<std::vector<unsigned int>>;
  void Discover(Rows& rows, std::set<std::set<unsigned int>>& seen,
                const std::vector<unsigned int>& row, std::size_t max) {
    for (const unsigned int a : row) {
      for (auto bond = from_.mol.GetAtomAt(a)->GetBonds(); bond; ++bond) {
        const unsigned int next = bond->GetNbr(from_.mol.GetAtomAt(a))->GetIdx();
        auto longer = row;
        longer.push_back(next);
        const std::set<unsigned int> atoms(longer.begin(), longer.end());
        if (atoms.size() != longer.size() || !seen.insert(atoms).second) continue;
        rows.push_back(longer);
        if (row.size() < max) Discover(rows, seen, longer, max);
      }
    }
  }

 private:
  Ids Singles() const {
    Ids ids;
    for (auto atom = from_.mol.GetAtoms(); atom; ++atom) ids.push_back(from_.atoms[atom->GetIdx()]);
    return ids;
  }
  bool IsConnected(const std::set<unsigned int>& atoms) {
    std::set<unsigned int> reached{*atoms.begin()};
    for (std::vector<unsigned int> queue{*atoms.begin()}; !queue.empty();) {
      const unsigned int a = queue.back();
      queue.pop_back();
      for (const auto& neighbour : bonds_[a]) {
        if (atoms.count(neighbour.first) != 0 && reached.insert(neighbour.first).second) {
          queue.push_back(neighbour.first);
        }
      }
    }
    return reached.size() == atoms.size();
  }

  const Prepared<unsigned int>& from_;
  std::map<unsigned int, std::map<unsigned int, unsigned int>> bonds_;
};

using Generate = unsigned int (*)(Ids&, const ZQMolBase&, const Ids&, const Ids&, unsigned int,
                                  unsigned int, unsigned int, unsigned int);
constexpr Generate circular = ZQCircularIdGenerator;
constexpr Generate tree = ZQTreeIdGenerator;

Ids Sorted(Generate generate, const Prepared<unsigned int>& from, unsigned int min,
           unsigned int max) {
  Ids ids{99};
  const unsigned int count = generate(ids, from.mol, from.atoms, from.bonds, min, max, 0, 0);
  EXPECT_EQ(count, ids.size());
  std::sort(ids.begin(), ids.end());
  return ids;
}

// Larger than the sample molecules, with atoms of many neighbours.
std::string LargeSmiles() { return "FS(F)(F)(F)(F)" + Repeated("C(C)(C)OP(=O)(N)", 10) + "C"; }

}  // namespace

TEST(Fragments, WorkedIdentifiers) {
  // A pair: one round, then the lesser value times 1019 and the greater times 1049.
  Prepared<unsigned int> pair("CO"_mol, 1, 1);
  pair.atoms = {2, 3};
  pair.bonds = {1};
  EXPECT_EQ(Sorted(circular, pair, 1, 1), Ids(2, (3 + 3 * 947U) * 1019 + (2 + 4 * 947U) * 1049));
  EXPECT_EQ(Sorted(tree, pair, 1, 1), Ids{3 * 947U + 2 * 1019U + 983U});
  // A final value of 0 consumes no weight.
  pair.atoms[1] = 0U - 3 * 947U;
  EXPECT_EQ(Sorted(circular, pair, 1, 1), Ids(2, (2 + (1 - 3 * 947U) * 947U) * 1019));
}

TEST(Fragments, CircularIdentifiersFollowTheDefinition) {
  std::vector<std::string> all = SampleSmiles();
  all.push_back(LargeSmiles());
  const std::pair<unsigned int, unsigned int> windows[] = {{0, 0}, {0, 2}, {1, 5}, {3, 4}, {6, 70}};
  for (const std::string& smiles : all) {
    const Prepared<unsigned int> from(ReadSmiles(smiles), 4239, 1);
    for (const auto& [min, max] : windows) {
      EXPECT_EQ(Sorted(circular, from, min, max), Definition(from).Circular(min, max))
          << smiles << " " << min << " to " << max;
    }
  }
}

// One generator names sets of every size around the register widths, with values that are equal, 0
// up to the end or maximal.
TEST_P(EveryVariant, SetsAreNamedByTheDefinition) {
  Prepared<unsigned int> from(ReadSmiles(LargeSmiles() + "C12C3C4C1C5C2C3C45"), 63, 1);
  const ZQConnectionTable connections(from.mol, ZQConnectionTable::Hydrogens::LeftOut);
  const std::vector<Ids> pools = {{0}, {0, 0, 0, 0, 0, 0, 7}, {1}, {1, ~0U}, {2, 3, 1U << 31, 99}};
  std::mt19937 random(5);
  ZQHashedCanonicalIdGenerator generator(from.atoms, from.bonds);
  EXPECT_EQ(ZQGetLatestProcessor(), GetParam());
  for (const Ids& pool : pools) {
    for (unsigned int& atom : from.atoms) atom = pool[random() % pool.size()];
    for (unsigned int& bond : from.bonds) bond = pool.size() < 3 ? 0 : random() % 3;
    for (std::size_t size = 2; size <= 40; ++size) {
      ZQSubgraph subgraph(connections);
      for (int repeat = 0; repeat < 4; ++repeat, subgraph.Clear()) {
        subgraph.Add(random() % from.mol.GetMaxAtomIdx());
        while (subgraph.NumAtoms() < size) {
          const auto& neighbours = connections[subgraph.Atoms()[random() % subgraph.NumAtoms()]];
          const unsigned int next = neighbours.begin()[random() % neighbours.size()].atom;
          if (!subgraph.Has(next)) subgraph.Add(next);
        }
        unsigned int id = 0;
        ASSERT_TRUE(generator.GetCanonicalID(id, subgraph));
        const std::span<const unsigned int> atoms = subgraph.Atoms();
        ASSERT_EQ(id, Definition(from).Hash({atoms.begin(), atoms.end()})) << size << " atoms";
      }
    }
  }
}

TEST(Fragments, TreeIdentifiersAreThoseOfAllConnectedSets) {
  for (const char* smiles : {"C1CC1", "CC(C)(C)O", "C12C3C4C1C5C2C3C45", "c1ccc2[nH]ccc2c1", "O.O",
                             "FS(F)(F)(F)(F)F", "CC(=O)Oc1ccccc1C(=O)O", "[Na+].[O-]C(=O)C#N"}) {
    const Prepared<unsigned int> from(ReadSmiles(smiles), 63, 1);
    for (const auto& [min, max] : {std::pair{0U, 0U}, {0U, 1U}, {2U, 2U}, {0U, 4U}, {1U, 12U}}) {
      EXPECT_EQ(Sorted(tree, from, min, max), Definition(from).Trees(min, max))
          << smiles << " " << min << " to " << max;
    }
  }
}

TEST(Fragments, SymmetryClassesLeaveNoIdentifierOut) {
  for (const std::string& smiles : SampleSmiles()) {
    const Prepared<unsigned int> every(ReadSmiles(smiles), 127 + 4096, 7, false);
    const Prepared<unsigned int> filtered(ReadSmiles(smiles), 127 + 4096, 7, true);
    for (const Generate generate : {circular, tree}) {
      Ids all = Sorted(generate, every, 0, 5);
      Ids some = Sorted(generate, filtered, 0, 5);
      EXPECT_TRUE(smiles != "C12C3C4C1C5C2C3C45" || some.size() < all.size());
      all.erase(std::unique(all.begin(), all.end()), all.end());
      some.erase(std::unique(some.begin(), some.end()), some.end());
      EXPECT_EQ(some, all) << smiles;
    }
  }
}

TEST(Fragments, PatternsHoldAtomsInOrderOfDiscoveryAndASpanningTree) {
  const auto expectTree = [](const ZQFPAtomBondSet<unsigned int>& pattern) {
    ASSERT_EQ(pattern.NumAtoms(), pattern.NumBonds() + 1);
    for (unsigned int i = 1; i < pattern.NumAtoms(); ++i) {
      const ZQAtomBase* atom = pattern.GetAtoms()[i];
      const ZQAtomBase* earlier = pattern.GetBonds()[i - 1]->GetNbr(atom);
      ASSERT_NE(earlier, nullptr);
      for (const ZQAtomBase* other : pattern.GetAtoms()) {
        if (other == earlier) break;
        for (auto bond = atom->GetBonds(); bond; ++bond) EXPECT_NE(bond->GetNbr(atom), other);
      }
    }
  };
  const Prepared<unsigned int> from(Shuffled("CC1(O)CC2CC1N2Cl"_mol, 3), 63, 1);
  std::vector<ZQFPAtomBondSet<unsigned int>> patterns;
  Ids ids;
  TreeGenerator<unsigned int>(from.mol, from.atoms, from.bonds, 1, 5, &patterns)
      .ForEachTree([&ids](unsigned int id) { ids.push_back(id); });
  Definition::Rows rows;
  std::set<std::set<unsigned int>> seen;
  for (unsigned int centre = 0; centre < from.mol.GetMaxAtomIdx(); ++centre) {
    Definition(from).Discover(rows, seen, {centre}, 5);
  }
  ASSERT_EQ(patterns.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::vector<unsigned int> row;
    for (const ZQAtomBase* atom : patterns[i].GetAtoms()) row.push_back(atom->GetIdx());
    EXPECT_EQ(row, rows[i]);
    EXPECT_EQ(patterns[i].GetId(), ids[i]);
    expectTree(patterns[i]);
  }
  patterns.clear();
  CircularGenerator<unsigned int>(from.mol, from.atoms, from.bonds, 0, 4, &patterns)
      .ForEachCircular([](unsigned int) {});
  ASSERT_FALSE(patterns.empty());
  for (const auto& pattern : patterns) expectTree(pattern);
}

TEST(Fragments, HugeAndStrangeMoleculesTakeNoLongerThanTheyMust) {
  // A star of 2,000 arms, whose environments of radius 2 are the whole molecule, and a chain.
  const std::string star = "[U]" + Repeated("(C)", 1999) + "C";
  for (const std::string& smiles : {star, std::string(2000, 'C'), LargeSmiles()}) {
    const ZQMol mol = ReadSmiles(smiles);
    ZQFingerPrint fp;
    ZQFingerPrint again;
    EXPECT_TRUE(ZQMakeCircularFP(fp, mol, 4096, 0, 5, 4239, 1));
    EXPECT_TRUE(ZQMakeCircularFP(again, Shuffled(mol, 1), 4096, 0, 5, 4239, 1));
    EXPECT_TRUE(fp == again);
    EXPECT_TRUE(ZQMakeTreeFP(fp, mol, 4096, 0, 2, 63, 1));
  }
}

TEST(Fragments, StopsWithAnErrorWhereMemoryEnds) {
  const Prepared<unsigned int> from(ReadSmiles(LargeSmiles()), 63, 1);
  CapturedReports reports;
  Ids ids;
  largestRequest = std::size_t{1} << 17;
  const unsigned int count = ZQTreeIdGenerator(ids, from.mol, from.atoms, from.bonds, 0, 12, 63, 1);
  ZQFingerPrint fp;
  const bool made = ZQMakeTreeFP(fp, from.mol, 4096, 0, 8, 63, 1);  // keeps no identifiers
  largestRequest = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(count, 0U);
  EXPECT_TRUE(ids.empty());
  EXPECT_TRUE(made);
  EXPECT_EQ(reports.Take(), Texts{"ZQTreeIdGenerator() : out of memory"});
}

TEST(Fragments, InvariantsMustFitTheMolecule) {
  Prepared<unsigned int> from("CCO"_mol, 1, 1);
  from.atoms.pop_back();
  from.bonds.push_back(1);
  CapturedReports reports;
  EXPECT_TRUE(Sorted(circular, from, 0, 5).empty());
  EXPECT_TRUE(Sorted(tree, from, 0, 5).empty());
  EXPECT_EQ(reports.Take(), Texts(4, "Assertion"));
}

}  // namespace ZQKorvex
