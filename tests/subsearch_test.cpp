#include "contract/quarnel/subsearch.h"

#include <functional>
#include <set>

#include "contract/quarnel/perception.h"
#include "tests/mol_helpers.h"

using namespace Quarnel;

namespace {

constexpr std::size_t noLimit = ~std::size_t{0};

std::size_t Count(const ZQSubSearch& pattern, const ZQMolBase& mol, bool unique) {
  return pattern.CountMatches(ZQSubSearchTarget(mol), unique, noLimit);
}

// Each case: pattern, molecule, number of matches with distinct sets of atoms, number of all
// matches.
constexpr const char* matchCases =
    // Elements
    R"t(* Cc1ccccc1 7 7   a Cc1ccccc1 6 6   A Cc1ccccc1 1 1   C Cc1ccncc1Cl 1 1
    [#6] Cc1ccncc1Cl 6 6   Cl Cc1ccncc1Cl 1 1   [se] c1cc[se]c1 1 1   [Se] c1cc[se]c1 0 0
    [Sc] [Sc+3].CS 1 1   [Cc] CC 0 0   K [K+].[Cl-] 1 1   [!#6;!#1] CC(=O)N 2 2 )t"
    // Isotopes and charges
    R"t([13C] [13CH3]C 1 1   [!0*] [13CH3]C 1 1   [0C] [13CH3]C 1 1   [+] C[NH3+].[Ca+2] 1 1
    [++] C[NH3+].[Ca+2] 1 1   [+2] C[NH3+].[Ca+2] 1 1   [-0] C[NH3+].[Ca+2] 1 1
    [!+0] C[NH3+].[Ca+2] 2 2   [C:12][N:3] CN 1 1 )t"
    // Hydrogens
    R"t([H] [2H]C([H+])C 2 2   [2H] [2H]CC 1 1   [H+] [H+].C 1 1   [*H] CC(C)O 2 2
    [H2] CC(C)CO 1 1   [H3] [2H]CC 2 2   [h3] [2H]CC 1 1   [h] CC(C)(C)O 4 4
    [!h] CC(C)(C)O 1 1   [!#6;!#1H] CC(=O)O 1 1 )t"
    // Connections and valence
    R"t([D] CC(C)C 3 3   [D3] CC(C)C 1 1   [X4] CC(C)C=C 3 3   [X] C=O 1 1   [v4] c1ccccc1O 6 6
    [v5] CN(=O)=O 1 1   [v] ClC 1 1 )t"
    // Rings
    R"t([R] CC1CC1 3 3   [r] CC1CC1 3 3   [x] CC1CC1 3 3   [R0] CC1CC1 1 1   [!R] CC1CC1 1 1
    [R2] c1ccc2ccccc2c1 2 2   [R1] c1ccc2ccccc2c1 8 8   [x3] c1ccc2ccccc2c1 2 2
    [r5] c1ccc2[nH]ccc2c1 5 5   [r6] c1ccc2[nH]ccc2c1 4 4   [R3] C12C3C4C1C5C2C3C45 8 8
    [R3] C1CC2CCC1CC2 2 2   [R2] C1CC2CCC1CC2 6 6   [R3] C1C2CC3CC1CC(C2)C3 4 4
    [R1] C1CC2CCC1C2 4 4   [r12] C1CCCCCCCCCCC1 12 12   [R4] C1Cc2ccc(cc2)CCc2ccc1cc2 4 4
    [R5] C1Cc2ccc(cc2)CCc2ccc1cc2 4 4   [R;r13] C1CCCCCCCCCCC1 0 0 )t"
    // Hybridization
    R"t([^1] C#CC=CC 2 2   [^2] C#CC=CC 2 2   [C^3] C#CC=CC 1 1   [^0] [Na+].C 1 1 )t"
    // Operators
    R"t([C,N;H1] CC(C)NC 2 2   [C,N&H1] CC(C)NC 5 5   [!C!N] CNO 1 1   [!!C] CNO 1 1
    [F,Cl,Br,I-] FCl.[I-].IC 3 3 )t"
    // Recursion
    R"t([$(C=O)] CC(=O)C=O 2 2   [!$(C=O)] CC(=O)C=O 3 3   [C;$(CO);!$(C=O)] OCC(=O)C 1 1
    [$(C[$(C[$(CO)])])] CCCO 2 2   [$(C(O)C.N)] OCC.N 1 1
    [#7,#8,#16;!h0;!$([o,s,nX3,#7v5,#16v4,*+1])] OCCN(C)CC[NH3+] 1 1 )t"
    // Bonds
    R"t(C-C CC=CC#Cc1ccccc1 2 4   *-* CC=CC#Cc1ccccc1 3 6   cc c1ccccc1-c1ccccc1 13 26
    c:c c1ccccc1-c1ccccc1 12 24   c!:c c1ccccc1-c1ccccc1 1 2   C=,#C CC=CC#C 2 4
    C~C CC=CC#C 4 8   *@* CC1CC1 3 6   *!@* CC1CC1 1 2   *-;!@* C=CC1CC1 1 2
    *-,=;@* C=C1CC1 3 6   C/,=C CC=C 2 4   C$C C$C 1 2 )t"
    // Branches, closures, parts
    R"t(C1CCCCC1 C1CCCCC1 1 12   *1~*~*~*~*~*1 c1ccc2ccccc2c1 2 24
    *1~*~*~*~*~*~*~*~*~*1 c1ccc2ccccc2c1 1 20   C=%12CCC%12 C1=CCC1 1 2
    C%(123)CCC=%(123) C1=CCC1 1 2   C(C)(C)C CC(C)(C)C 4 24   C1.C1 CC 1 2   O.O OCCO 1 2
    O.O OCC 0 0   [#8].[#8].[#8] OCC(O)C(O)CO 4 24   (O.O) OCC.OCC 0 0   (O).(O) OCC.OCC 1 2
    (O).(O) OCCO.C 0 0   (C.O).(C).N CO.CN 1 1 )t"
    // Configurations
    R"t(N[C@H](C)C(=O)O N[C@H](C)C(=O)O 1 1   N[C@H](C)C(=O)O N[C@@H](C)C(=O)O 0 0
    N[C@H](C)C(=O)O NC(C)C(=O)O 0 0   N[C@?H](C)C(=O)O NC(C)C(=O)O 1 1
    N[C@@](C)C(=O)O C[C@@H](C(=O)O)N 1 1   [C@TH2](N)(C)C(=O)O N[C@H](C)C(=O)O 1 1
    [C@AL1](N)C N[C@@H](C)C(=O)O 0 0   [C@,N] N[C@@H](C)C(=O)O 2 2
    [C!@](N)(C)C(=O)O N[C@H](C)C(=O)O 1 1   [C@]1(F)OCC1 [C@]1(F)OCC1 1 1
    Br[C@]1(F)OCC1 C1CO[C@@]1(F)Br 1 1   Br[C@]1(F)OCC1 C1CO[C@]1(F)Br 0 0
    F[C@](Cl)Br F[C@](Cl)(I)Br 0 0   F[C@@](Cl)Br F[C@](Cl)(I)Br 1 1
    [$([C@H](N)(C)O)] [C@H](N)(C)O 1 1   F/C=C/F F/C=C/F 1 2   F/C=C/F F/C=C\F 0 0
    Cl/C=C/F F/C(Cl)=C/F 0 0   Cl/C=C\F F/C(Cl)=C/F 1 1   Cl/C=C\Br F/C(Cl)=C(F)/Br 1 1
    F\C=C\F F/C=C/F 1 2   C(/F)=C/F F/C=C\F 1 2   F/C=C/F FC=CF 0 0   F/?C=C/F FC=CF 1 2
    F/?C=C/F F/C=C\F 0 0   F/C(Cl)=C/[*] F/C(Cl)=C(/Br)I 1 1   F/C(Cl)=C/I F/C(Cl)=C(/Br)I 0 0
    F/C=C FC=C 1 1 )t";

TEST(SubSearch, CountsMatches) {
  std::istringstream cases(matchCases);
  std::size_t unique = 0;
  std::size_t total = 0;
  for (std::string smarts, smiles; cases >> smarts >> smiles >> unique >> total;) {
    SCOPED_TRACE(testing::Message() << smarts << " in " << smiles);
    const ZQSubSearch pattern(smarts);
    ASSERT_TRUE(pattern.IsValid());
    const ZQMol mol = ReadSmiles(smiles);
    EXPECT_EQ(Count(pattern, mol, true), unique);
    EXPECT_EQ(Count(pattern, mol, false), total);
    EXPECT_EQ(pattern.SingleMatch(mol), total != 0);
  }
  EXPECT_TRUE(cases.eof());
}

TEST(SubSearch, CanIgnoreStereo) {
  // The same text with and without stereo, in one target.
  const ZQMol mol = "N[C@H](C)/C=C/F"_mol;
  const ZQSubSearchTarget target(mol);
  const std::string smarts = "[$(N[C@@H](C)/C=C\\F)]";
  EXPECT_FALSE(ZQSubSearch(smarts).SingleMatch(target));
  EXPECT_TRUE(ZQSubSearch(smarts, true).SingleMatch(target));
  EXPECT_FALSE(ZQSubSearch(smarts).SingleMatch(target));
}

TEST(SubSearch, ReportsWhatCantBeParsed) {
  const struct {
    std::string smarts;
    int column;
    const char *found, *expected;
  } cases[] = {
      {"", 1, "the end", "an atom"},
      {"CC.", 4, "the end", "an atom"},
      {"C=", 3, "the end", "an atom or a ring closure"},
      {"C-,C", 4, "\"C\"", "a bond symbol"},
      {"-C", 1, "\"-C\"", "an atom"},
      {"CQ", 2, "\"Q\"",
       "an atom (elements other than B C N O P S F Cl Br I K V W Y U and b c n o p s in brackets)"},
      {"C]", 2, "\"]\"", "an atom, a bond, a branch, a ring closure or a dot"},
      {"C(", 3, "the end", "an atom or a bond of the branch"},
      {"C()C", 3, "\")C\"", "an atom or a bond of the branch"},
      {"C(C", 2, "a branch that isn't closed", "its \")\""},
      {"C)", 2, "\")\"", "an atom or a bond, as no branch is open"},
      {"(C", 1, "a component group that isn't closed", "its \")\""},
      {"()", 2, "\")\"", "an atom"},
      {"(C)C", 4, "\"C\"", "a dot or the end behind a component group"},
      {"1CC1", 1, "\"1CC1\"", "an atom"},
      {"C1CC", 2, "ring closure 1 left open", "the same number at a second atom"},
      {"C11", 3, "ring closure 1 from an atom to itself", "another atom"},
      {"C1C1", 4, "ring closure 1 between atoms that are bonded already", "two other atoms"},
      {"C=1CC-1", 7, "ring closure 1 with the bond \"-\"",
       "the bond \"=\" of its opening at column 3"},
      {"C/1CC/1", 7, "ring closure 1 with the bond \"/\"",
       "the bond \"/\" of its opening at column 3"},
      {"(C1).(C1)", 8, "ring closure 1 between component groups", "an atom of the same group"},
      {"C%1", 3, "\"1\"", "two digits or \"(\" behind \"%\""},
      {"C%()", 4, "\")\"", "a ring closure number of up to five digits"},
      {"C%(123456)", 4, "\"123456)\"", "a ring closure number of up to five digits"},
      {"C%(12C", 6, "\"C\"", "\")\" behind the ring closure number"},
      {"[]", 2, "\"]\"", "an atom primitive"},
      {"[C", 1, "a bracket that isn't closed", "its \"]\""},
      {"[!]", 3, "\"]\"", "an atom primitive"},
      {"[CQ]", 3, "\"Q]\"", "an atom primitive"},
      {"[#]", 3, "\"]\"", "an atomic number up to 118"},
      {"[#119]", 3, "\"119]\"", "an atomic number up to 118"},
      {"[D1000]", 3, "\"1000]\"", "a number up to 999"},
      {"[65536C]", 2, "\"65536C]\"", "an isotope up to 65535"},
      {"[C+16]", 4, "\"16]\"", "a charge from -15 to +15"},
      {"[C----------------]", 3, "\"----------------...\"", "a charge from -15 to +15"},
      {"[^6]", 3, "\"6]\"", "a hybridization from 0 to 5"},
      {"[C@TH3]", 6, "\"3]\"", "the number of a chirality class, 1 or 2"},
      {"[C:]", 4, "\"]\"", "an atom class of up to eight digits"},
      {"[$C]", 3, "\"C]\"", "\"(\" behind \"$\""},
      {"[$()]", 4, "\")]\"", "an atom"},
      {"[$(C]", 5, "\"]\"", "an atom, a bond, a branch, a ring closure or a dot"},
      {"[$(C", 2, "\"$(\" that isn't closed", "its \")\""},
      {"[$(C1)]", 5, "ring closure 1 left open", "the same number at a second atom"},
      {Repeated("[$(", 33) + "C" + Repeated(")]", 33), 98, "\"$(C)])])])])])])...\"",
       "at most 32 \"$(\" within each other"},
      {std::string("C\x01", 2), 2, "\"\\x01\"",
       "an atom, a bond, a branch, a ring closure or a dot"},
  };
  const ZQMol mol = "CC"_mol;
  for (const auto& [smarts, column, found, expected] : cases) {
    CapturedReports reports;
    const ZQSubSearch pattern(smarts);
    EXPECT_EQ(reports.Take(), Texts{"SMARTS column " + Finding(column, found, expected)}) << smarts;
    EXPECT_FALSE(pattern.IsValid());
    EXPECT_FALSE(pattern.SingleMatch(mol));
    EXPECT_FALSE(pattern.Match(mol, true));
    EXPECT_EQ(pattern.GetPattern().NumAtoms(), 0U);
  }
}

// The components of random patterns, with their meaning as code.
const std::pair<const char*, std::function<bool(const ZQAtomBase&)>> atomTerms[] = {
    {"[!Xe]", [](const ZQAtomBase& a) { return a.GetAtomicNum() != 54; }},
    {"[!Xe;!$([Xe])]", [](const ZQAtomBase& a) { return a.GetAtomicNum() != 54; }},
    {"[#6]", [](const ZQAtomBase& a) { return a.IsCarbon(); }},
    {"[#7,#8]", [](const ZQAtomBase& a) { return a.IsNitrogen() || a.GetAtomicNum() == 8; }},
    {"[R]", [](const ZQAtomBase& a) { return a.IsInRing(); }},
    {"[#6;D3]", [](const ZQAtomBase& a) { return a.IsCarbon() && a.GetHvyDegree() == 3; }},
};
const std::pair<const char*, std::function<bool(const ZQBondBase&)>> bondTerms[] = {
    {"", [](const ZQBondBase& b) { return b.IsAromatic() || b.GetOrder() == 1; }},
    {"~", [](const ZQBondBase&) { return true; }},
    {"@", [](const ZQBondBase& b) { return b.IsInRing(); }},
    {"-,=", [](const ZQBondBase& b) { return !b.IsAromatic() && b.GetOrder() < 3; }},
};

struct RandomPattern {
  struct Bond {
    std::size_t bgn, end, term;
  };
  std::vector<std::size_t> atoms;
  std::vector<Bond> bonds;

  explicit RandomPattern(std::mt19937& random) : atoms(1 + random() % 4) {
    for (std::size_t i = 0; i < atoms.size(); ++i) {
      atoms[i] = random() % std::size(atomTerms);
      for (std::size_t j = 0; j < i; ++j) {
        if (random() % 2 != 0) bonds.push_back({j, i, random() % std::size(bondTerms)});
      }
    }
  }

  // Every bond as a ring closure between parts separated by dots.
  std::string Text() const {
    std::string text;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
      text += (i != 0 ? "." : "") + std::string(atomTerms[atoms[i]].first);
      for (std::size_t b = 0; b < bonds.size(); ++b) {
        if (bonds[b].bgn == i) text += bondTerms[bonds[b].term].first;
        if (bonds[b].bgn == i || bonds[b].end == i) text += "%" + std::to_string(10 + b);
      }
    }
    return text;
  }

  void Extend(const ZQMolBase& mol, std::vector<unsigned int>& images,
              std::vector<std::vector<unsigned int>>& found) const {
    const std::size_t i = images.size();
    if (i == atoms.size()) return found.push_back(images);
    for (unsigned int a = 0; a < mol.GetMaxAtomIdx(); ++a) {
      const ZQAtomBase& atom = *mol.GetAtomAt(a);
      bool fits = std::find(images.begin(), images.end(), a) == images.end() &&
                  atomTerms[atoms[i]].second(atom);
      for (const Bond& bond : bonds) {
        if (!fits || bond.end != i) continue;
        const ZQBondBase* b = atom.NextBond(nullptr);
        while (b && b->GetNbr(&atom)->GetIdx() != images[bond.bgn]) b = atom.NextBond(b);
        fits = b && bondTerms[bond.term].second(*b);
      }
      if (!fits) continue;
      images.push_back(a);
      Extend(mol, images, found);
      images.pop_back();
    }
  }
};

TEST(SubSearch, FindsWhatTryingEverythingFinds) {
  std::mt19937 random(5);
  std::size_t numMatches = 0;
  for (const char* smiles : {"CC(=O)Nc1ccc(O)cc1", "C1CC2CCC1CC2", "OC1C(O)C1N", "CC#N.C1=CO1"}) {
    ZQMol mol = ReadSmiles(smiles);
    ZQFindRingAtomsAndBonds(mol);
    // Above 64 atoms the search uses other code.
    ZQMol big = ReadSmiles(smiles + Repeated(".[Xe]", 70));
    ZQFindRingAtomsAndBonds(big);
    for (int i = 0; i < 400; ++i) {
      const RandomPattern pattern(random);
      const ZQSubSearch search(pattern.Text());
      std::vector<unsigned int> images;
      std::vector<std::vector<unsigned int>> expected;
      pattern.Extend(mol, images, expected);
      std::set<std::set<unsigned int>> sets;
      for (const auto& match : expected) sets.insert({match.begin(), match.end()});
      for (const ZQMolBase* target : {&mol, &big}) {
        std::vector<std::vector<unsigned int>> found;
        for (auto match = search.Match(*target, false); match; ++match) {
          std::vector<unsigned int>& atoms = found.emplace_back();
          for (const auto& pair : match->GetAtomPairs()) atoms.push_back(pair.target->GetIdx());
        }
        std::sort(found.begin(), found.end());
        ASSERT_EQ(found, expected) << pattern.Text() << " in " << smiles;
        ASSERT_EQ(Count(search, *target, true), sets.size()) << pattern.Text() << " in " << smiles;
      }
      numMatches += expected.size();
    }
  }
  EXPECT_GT(numMatches, 10000U);
}

// The numbers of relevant cycles by atom: of all cycles, those that aren't a sum of shorter ones.
std::vector<unsigned int> CountRelevantCycles(const ZQMolBase& mol) {
  std::vector<std::pair<unsigned int, unsigned int>> cycles;  // length, bonds
  for (unsigned int bonds = 1; bonds < 1U << mol.NumBonds(); ++bonds) {
    std::vector<unsigned int> degrees(mol.NumAtoms());
    std::vector<unsigned int> parts(mol.NumAtoms());
    for (unsigned int a = 0; a < mol.NumAtoms(); ++a) parts[a] = a;
    unsigned int size = 0;
    unsigned int joins = 0;
    for (unsigned int b = 0; b < mol.NumBonds(); ++b) {
      if ((bonds >> b & 1) == 0) continue;
      const unsigned int bgn = mol.GetBondAt(b)->GetBgn()->GetIdx();
      const unsigned int end = mol.GetBondAt(b)->GetEnd()->GetIdx();
      ++size;
      ++degrees[bgn];
      ++degrees[end];
      joins += parts[bgn] != parts[end];
      std::replace(parts.begin(), parts.end(), unsigned{parts[bgn]}, unsigned{parts[end]});
    }
    const bool even = std::all_of(degrees.begin(), degrees.end(),
                                  [](unsigned int degree) { return degree == 0 || degree == 2; });
    if (even && joins + 1 == size) cycles.emplace_back(size, bonds);
  }
  std::sort(cycles.begin(), cycles.end());
  std::vector<unsigned int> counts(mol.NumAtoms());
  std::vector<unsigned int> basis;
  const auto reduce = [&basis](unsigned int bonds) {
    for (const unsigned int vector : basis) bonds = std::min(bonds, bonds ^ vector);
    return bonds;
  };
  for (std::size_t first = 0; first < cycles.size();) {
    std::size_t next = first;
    for (; next < cycles.size() && cycles[next].first == cycles[first].first; ++next) {
      if (reduce(cycles[next].second) == 0) continue;
      for (unsigned int b = 0; b < mol.NumBonds(); ++b) {
        if ((cycles[next].second >> b & 1) == 0) continue;
        ++counts[mol.GetBondAt(b)->GetBgn()->GetIdx()];  // once at each end of every bond
        ++counts[mol.GetBondAt(b)->GetEnd()->GetIdx()];
      }
    }
    for (; first < next; ++first) {
      const unsigned int rest = reduce(cycles[first].second);
      if (rest != 0) basis.push_back(rest);
    }
  }
  for (unsigned int& count : counts) count /= 2;
  return counts;
}

TEST(SubSearch, RingsAreTheRelevantCycles) {
  std::mt19937 random(11);
  for (int i = 0; i < 150; ++i) {
    ZQMol mol;
    const unsigned int size = 4 + random() % 5;
    for (unsigned int a = 0; a < size; ++a) mol.NewAtom(6);
    for (unsigned int b = 0; b < size + 4; ++b) {
      mol.NewBond(mol.GetAtomAt(random() % size), mol.GetAtomAt(random() % size), 1);
    }
    const std::vector<unsigned int> expected = CountRelevantCycles(mol);
    for (unsigned int n = 0; n < 12; ++n) {
      EXPECT_EQ(Count(ZQSubSearch("[R" + std::to_string(n) + "]"), mol, true),
                std::count(expected.begin(), expected.end(), n))
          << n << " in " << ZQMolToSmiles(mol);
    }
  }
}

TEST(SubSearch, MatchesNameAtomsAndBonds) {
  const ZQMol mol = "OCC(=O)NCCO"_mol;
  auto pattern = std::make_unique<ZQSubSearch>("[OH]CC");
  ASSERT_EQ(pattern->GetPattern().NumAtoms(), 3U);
  auto match = pattern->Match(mol, true);
  pattern.reset();
  std::vector<unsigned int> firsts;
  for (; match; ++match) {
    ASSERT_EQ(match->NumAtoms(), 3U);
    ASSERT_EQ(match->NumBonds(), 2U);
    for (unsigned int i = 0; i < 2; ++i) {
      const auto& bond = match->GetBondPairs()[i];
      EXPECT_EQ(bond.pattern->GetIdx(), i);
      EXPECT_EQ(bond.target->GetNbr(match->GetAtomPairs()[i].target),
                match->GetAtomPairs()[i + 1].target);
    }
    auto atom = match->GetTargetAtoms();
    firsts.push_back(atom->GetIdx());
    atom += 2U;
    EXPECT_TRUE(atom->IsCarbon());
    EXPECT_EQ(match->GetPatternAtoms()->GetIdx(), 0U);
    EXPECT_EQ(match->GetPatternBonds()->GetIdx(), 0U);
    EXPECT_TRUE(match->GetTargetBonds());
  }
  EXPECT_EQ(firsts, (std::vector<unsigned int>{0, 7}));
}

TEST(SubSearch, IteratorGoesBothWays) {
  const ZQMol mol = "CCCCC"_mol;
  auto match = ZQSubSearch("CC").Match(mol, false);
  const auto first = [](const auto& iter) { return iter->GetTargetAtoms()->GetIdx(); };
  std::vector<unsigned int> forward;
  for (; match; ++match) forward.push_back(first(match));
  ASSERT_EQ(forward.size(), 8U);
  match.ToFirst();
  auto copy = match;
  match.ToLast();
  for (std::size_t i = forward.size(); i-- != 0; --match) EXPECT_EQ(first(match), forward[i]);
  EXPECT_FALSE(match);
  copy += 7U;
  EXPECT_EQ(first(copy), forward[7]);
  EXPECT_FALSE(++copy);
}

TEST(SubSearch, StaysSmallOnLargeTargets) {
  const ZQMol chain = ReadSmiles(Repeated("CO", 1000));
  const ZQSubSearchTarget target(chain);
  const auto count = [&](const std::string& smarts, std::size_t limit) {
    return ZQSubSearch(smarts).CountMatches(target, true, limit);
  };
  EXPECT_EQ(count("[#8].[#8].[#8].[#8]", 2), 2U);
  EXPECT_EQ(count("COCO.COCO.COCO.S", 2), 0U);
  EXPECT_EQ(count("COCO.COCO.COCO.C(O)(O)O", 2), 0U);
  EXPECT_EQ(count(Repeated("CO", 1000), noLimit), 1U);
  EXPECT_EQ(count("C" + Repeated("~*", 2000), noLimit), 0U);
  EXPECT_EQ(count(Repeated("C(", 20000) + "C" + Repeated(")", 20000), 1), 0U);
  EXPECT_EQ(count("*", 0), 0U);

  // Each macrocycle takes one of two sides of forty rings.
  const ZQMol phane = ReadSmiles("C1" + Repeated("Cc2ccc(cc2)", 40) + "C1");
  EXPECT_EQ(Count(ZQSubSearch("[R999]"), phane, true), 0U);
  EXPECT_EQ(Count(ZQSubSearch("[r6]"), phane, true), 240U);
  EXPECT_FALSE(ZQSubSearch("*").SingleMatch(ZQMol()));
}

TEST(SubSearch, ThreadsShareAPattern) {
  const auto makeAll = [] {
    std::vector<ZQSubSearch> all;
    all.reserve(4);
    for (const char* smarts : {"[$(C=O)]~[!#6]", "[#6;!R]-*", "[R2]", "[C@](*)(*)*"}) {
      all.emplace_back(smarts);
    }
    return all;
  };
  const auto countAll = [](const std::vector<ZQSubSearch>& all) {
    std::size_t hash = 0;
    for (const std::string& smiles : SampleSmiles()) {
      const ZQMol mol = ReadSmiles(smiles);
      for (const ZQSubSearch& pattern : all) hash = hash * 31 + Count(pattern, mol, true);
    }
    return hash;
  };
  const std::vector<ZQSubSearch> shared = makeAll();
  const std::size_t expected = countAll(shared);
  EXPECT_NE(expected, 0U);
  OnThreads(4, [&](unsigned int) {
    EXPECT_EQ(countAll(shared), expected);
    // Patterns of the same text, created and destroyed at the same time.
    EXPECT_EQ(countAll(makeAll()), expected);
  });
}

}  // namespace
