// Layouts and drawings: their structure and what they say about a molecule, not their pixels.

#ifndef __clang__  // g++ 12 warns within <regex> when it builds with sanitizers
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "contract/bostrel/strings.h"
#include "korvex/draw_local.h"
#include "tests/description_helpers.h"
#include "tests/molfile_helpers.h"
#include "tests/xml_helpers.h"

namespace ZQKorvex {
namespace {

ZQLayout LayoutOf(const ZQMolBase& mol) {
  ZQLayout layout;
  EXPECT_TRUE(ZQMakeLayout(layout, mol));
  return layout;
}

double Distance(const ZQPoint& a, const ZQPoint& b) { return std::hypot(a.x - b.x, a.y - b.y); }

double LeastDistance(const ZQLayout& layout) {
  double least = 1e9;
  for (std::size_t i = 0; i < layout.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) least = std::min(least, Distance(layout[i], layout[j]));
  }
  return least;
}

// The largest distance between atoms of the same place in the two layouts.
double Deviation(const ZQLayout& a, const ZQLayout& b) {
  double most = a.size() == b.size() ? 0 : 1e9;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    most = std::max(most, Distance(a[i], b[i]));
  }
  return most;
}

// A layout turned, mirrored if wanted, scaled and moved.
ZQLayout Moved(const ZQLayout& layout, double angle, bool mirrored, double scale = 1) {
  ZQLayout moved;
  for (const ZQPoint& at : layout) {
    const double x = mirrored ? -at.x : at.x;
    moved.push_back({scale * (std::cos(angle) * x - std::sin(angle) * at.y) + 7,
                     scale * (std::sin(angle) * x + std::cos(angle) * at.y) - 3, 0});
  }
  return moved;
}

std::vector<std::string> DrugSmiles() {
  std::ifstream file(KORVEX_SOURCE_DIR "/data/drugs.smi");
  std::vector<std::string> smiles;
  for (std::string line; std::getline(file, line);)
    smiles.push_back(line.substr(0, line.find('\t')));
  return smiles;
}

// Awkward for a layout: alone, linear, in parts, large rings, cages, metals, hydrogens drawn.
constexpr const char* fullerene =
    "c12c3c4c5c1c1c6c7c2c2c8c3c3c9c4c4c%10c5c5c1c1c6c6c%11c7c2c2c7c8c3c3c8c9c4c4c9c%10c5c5c1c1c6c6"
    "c%11c2c2c7c3c3c8c4c4c9c5c1c1c6c2c3c41";
const std::vector<std::string> oddSmiles{"C",
                                         "[H][H]",
                                         "CC#CC=C=C=C",
                                         "[Na+].[Na+].[O-]S(=O)(=O)[O-].O.O.O",
                                         "C1CCCCCCCCCCCCCCCCCCCC1",
                                         "C12C3C4C1C5C2C3C45",
                                         "Cl[Pt](Cl)(N)N",
                                         "N#CC->[Fe](<-CC#N)(<-CC#N)(<-CC#N)(<-CC#N)<-CC#N",
                                         "[H]C([H])([H])C([H])([H])C([H])([H])[H]",
                                         "FS(F)(F)(F)(F)F",
                                         "*c1ccccc1*",
                                         "CC(C)(C)C(C(C)(C)C)(C(C)(C)C)C(C)(C)C",
                                         "C1CC2CC1C1C2C2CC1C1C2C2CCC1C2",
                                         "F/C=C\\C=C/C(/Cl)=C/Br",
                                         fullerene};

// ---- Layouts

TEST(Layout, AtomsStandApartAndBondsAreEven) {
  std::vector<std::string> all = DrugSmiles();
  all.insert(all.end(), oddSmiles.begin(), oddSmiles.end());
  ASSERT_GT(all.size(), 400U);
  for (const std::string& smiles : all) {
    const ZQMol mol = ReadSmiles(smiles);
    const ZQLayout layout = LayoutOf(mol);
    ASSERT_EQ(layout.size(), mol.GetMaxAtomIdx());
    const bool isCage = smiles.find("%11") != std::string::npos;
    EXPECT_GT(LeastDistance(layout), isCage ? 0.2 : 0.49) << smiles;
    EXPECT_TRUE(ZQHasBondStereo(mol, layout)) << smiles;
    std::vector<double> lengths;
    for (auto bond = mol.GetBonds(); bond; ++bond) {
      lengths.push_back(
          Distance(layout[bond->GetBgn()->GetIdx()], layout[bond->GetEnd()->GetIdx()]));
    }
    if (lengths.empty()) continue;
    std::ranges::sort(lengths);
    EXPECT_NEAR(lengths[lengths.size() / 2], 1, 1e-6) << smiles;
  }
}

// Whatever was drawn before, and on however many threads.
TEST(Layout, IsTheSameEachTime) {
  std::vector<std::string> all = DrugSmiles();
  all.resize(60);
  std::vector<ZQLayout> expected;
  expected.reserve(all.size());
  for (const std::string& smiles : all) expected.push_back(LayoutOf(ReadSmiles(smiles)));
  OnThreads(3, [&](unsigned int t) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      const std::size_t k = (i * 7 + t * 19) % all.size();
      EXPECT_EQ(Deviation(LayoutOf(ReadSmiles(all[k])), expected[k]), 0) << all[k];
    }
  });
}

TEST(Layout, KeepsHolesAndRefusesTooManyAtoms) {
  ZQMol mol = "CCOC(=O)c1ccccc1"_mol;
  mol.DeleteAtom(mol.GetAtomAt(1));
  EXPECT_GT(LeastDistance([&] {
              ZQLayout layout = LayoutOf(mol);
              EXPECT_EQ(Distance(layout[1], {}), 0);
              layout.erase(layout.begin() + 1);
              return layout;
            }()),
            0.5);
  ZQMol none;
  EXPECT_TRUE(LayoutOf(none).empty());
  const ZQMol large = ReadSmiles(Repeated("C", ZQMostLayoutAtoms + 1));
  CapturedReports reports;
  ZQLayout layout;
  EXPECT_FALSE(ZQMakeLayout(layout, large));
  EXPECT_EQ(reports.Count(ZQErrorLevel::Warning), 1U);
}

// ---- Coordinates of the input

TEST(OwnCoordinates, AreKeptIfTheyCanBeDrawn) {
  const ZQMol mol = "C/C=C/C(=O)c1ccncc1"_mol;
  const ZQLayout drawn = Moved(LayoutOf(mol), 0.7, false);
  for (const bool v3000 : {false, true}) {
    const auto read = [&](const ZQLayout& layout) {
      ZQMol made;
      EXPECT_TRUE(ZQMolfileToMol(made, ToMolfile(mol, v3000, layout)));
      return made;
    };
    // Relative to the first atom, since molfiles round to four decimals.
    ZQMol flat = read(Moved(drawn, 0, false, 1.4));
    const auto isOwn = [&](const ZQMolBase& of) {
      const ZQLayout layout = LayoutOf(of);
      for (std::size_t i = 0; i < drawn.size() && i < layout.size(); ++i) {
        const ZQPoint at{layout[i].x - layout[0].x, layout[i].y - layout[0].y, 0};
        const ZQPoint was{drawn[i].x - drawn[0].x, drawn[i].y - drawn[0].y, 0};
        if (Distance(at, was) > 1e-3) return false;
      }
      return true;
    };
    EXPECT_TRUE(isOwn(flat));
    EXPECT_TRUE(isOwn(ZQGraphMol(flat)));
    ZQLayout bad = drawn;
    bad[2] = bad[0];
    EXPECT_FALSE(isOwn(read(bad))) << "coincident";
    bad = drawn;
    bad[0].x -= 5;
    EXPECT_FALSE(isOwn(read(bad))) << "a very long bond";
    bad = drawn;
    for (ZQPoint& at : bad) at.y = 0;
    EXPECT_FALSE(isOwn(read(bad))) << "on top of each other";
    // The same object after edits.
    flat.GetBondAt(1)->SetStereo(ZQBondStereo::Cis);
    EXPECT_FALSE(isOwn(flat)) << "another configuration";
    flat.GetBondAt(1)->SetStereo(ZQBondStereo::None);
    EXPECT_TRUE(isOwn(flat));
    flat.NewBond(flat.GetAtomAt(0), flat.NewAtom(8), 1);
    EXPECT_FALSE(isOwn(flat)) << "an atom without coordinates";
    EXPECT_TRUE(ZQSmilesToMol(flat, "CCO"));
    EXPECT_FALSE(flat.FindData(ZQCoordinatesTag)) << "left from the molecule before";
  }
  ZQMol empty;
  ASSERT_TRUE(ZQMolfileToMol(empty, ToMolfile(mol, false)));
  EXPECT_FALSE(empty.FindData(ZQCoordinatesTag)) << "all 0";
}

// ---- Wedges

// Reading a drawing gives the molecule that was drawn.
TEST(Wedges, ReadBackAsTheConfigurationDrawn) {
  std::vector<std::string> all = DrugSmiles();
  for (const char* smiles :
       {"C[S@](=O)c1ccccc1", "C[P@](=O)(O)c1ccccc1", "F[C@](Cl)(Br)I", "F[C@@H](Cl)Br",
        "[H][C@](F)(Cl)Br", "C[C@H]1CC[C@@H](C)CC1", "C1C[C@H]2CC[C@@H]1C2", "F/C=C\\Cl",
        // Each carbon between two others, so that bonds between centres carry wedges.
        "O[C@H]1[C@H](O)[C@@H](O)[C@H](O)[C@@H](O)[C@@H]1O", "[C@]12([C@]3([C@@]1(C)[C@@]23F)Cl)Br",
        "C[C@@H]1[C@H]([C@@H]2[C@H]1[C@H]2F)O"}) {
    all.emplace_back(smiles);
  }
  unsigned int numStereo = 0;
  for (const std::string& smiles : all) {
    ZQMol mol = ReadSmiles(smiles);
    ZQFindRingAtomsAndBonds(mol);
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      // A molfile can't describe it.
      if (atom->IsNitrogen() && atom->GetDegree() == 3) atom->SetStereo(ZQAtomStereo::None);
    }
    // As laid out, and turned so that bonds have all directions; every second one mirrored.
    const ZQLayout layout = LayoutOf(mol);
    for (const double angle : {0.0, 1.0, 2.3}) {
      const ZQLayout drawn = Moved(layout, angle, angle > 0.5 && angle < 1.5);
      ZQMol back;
      const std::vector<ZQWedge> wedges = ZQChooseWedges(mol, drawn);
      ASSERT_TRUE(ZQMolfileToMol(back, ToMolfile(mol, angle != 0, drawn, wedges))) << smiles;
      for (auto atom = back.GetAtoms(); atom; ++atom) atom->SetMapIdx(0);
      EXPECT_EQ(ZQMolToCanonicalSmiles(back), ZQMolToCanonicalSmiles(mol)) << smiles;
      for (const ZQWedge& wedge : wedges) numStereo += wedge.narrow != nullptr;
    }
  }
  EXPECT_GT(numStereo, 1000U);
}

// Three bonds around the centre, in a half-plane, and two of them in line; four as a cross and
// within a half-plane.
TEST(Wedges, HoldForAnyAngles) {
  for (const char* smiles : {"F[C@H](Cl)Br", "F[C@](Cl)(Br)I"}) {
    const ZQMol mol = ReadSmiles(smiles);
    for (const std::array<int, 4>& degrees : {std::array{0, 120, 240, 300},
                                              {0, 60, 120, 170},
                                              {0, 180, 90, 270},
                                              {90, 0, 180, 135},
                                              {200, 100, 0, 50},
                                              {10, 350, 170, 190}}) {
      ZQLayout layout{{}, {}};
      for (std::size_t i = 0, atom = 0; atom < mol.NumAtoms(); ++atom) {
        if (atom == 1) continue;
        layout.resize(mol.NumAtoms());
        const double angle = degrees[i++] * 3.14159265 / 180;
        layout[atom] = {std::cos(angle), std::sin(angle), 0};
      }
      ZQMol back;
      ASSERT_TRUE(ZQMolfileToMol(back, ToMolfile(mol, false, layout, ZQChooseWedges(mol, layout))));
      EXPECT_EQ(back.GetAtomAt(1)->GetStereo(), mol.GetAtomAt(1)->GetStereo())
          << smiles << ' ' << degrees[0] << ' ' << degrees[1];
    }
  }
}

// A substituent carries the wedge, neither a ring bond nor a bond to another centre.
TEST(Wedges, StandOnSubstituents) {
  for (const auto& [smiles, bonds] :
       {std::pair<const char*, std::set<unsigned int>>{"C[C@H]1CCC[C@@H](O)C1", {0, 5}},
        {"CCCC[C@H](O)CCCC", {4}},
        {"C[C@@H](O)[C@H](N)C(=O)O", {}}}) {
    ZQMol mol = ReadSmiles(smiles);
    ZQFindRingAtomsAndBonds(mol);
    std::set<unsigned int> chosen;
    const std::vector<ZQWedge> wedges = ZQChooseWedges(mol, LayoutOf(mol));
    for (unsigned int i = 0; i < wedges.size(); ++i) {
      if (!wedges[i].narrow) continue;
      chosen.insert(i);
      const ZQAtomBase* wide = mol.GetBondAt(i)->GetNbr(wedges[i].narrow);
      EXPECT_EQ(wide->GetStereo(), ZQAtomStereo::None) << smiles;
    }
    if (!bonds.empty()) {
      EXPECT_EQ(chosen, bonds) << smiles;
    }
  }
}

// ---- Orientation

TEST(Orientation, ACopyLiesOnItsOriginal) {
  unsigned int seed = 0;
  for (const std::string& smiles : DrugSmiles()) {
    ZQMol mol = ReadSmiles(smiles);
    if (mol.NumAtoms() < 8 || ++seed % 4 != 0) continue;
    for (auto atom = mol.GetAtoms(); atom; ++atom) atom->SetMapIdx(atom->GetIdx() + 1);
    std::vector<unsigned int> parts;
    if (ZQDetermineComponents(mol, parts) > 1) continue;
    const ZQLayout reference = LayoutOf(mol);
    const ZQMol copy = Shuffled(mol, seed);
    ZQLayout layout(reference.size());
    for (auto atom = copy.GetAtoms(); atom; ++atom) {
      layout[atom->GetIdx()] = reference[atom->GetMapIdx() - 1];
    }
    const ZQLayout target = layout;
    layout = Moved(layout, seed, seed % 8 == 0);
    ASSERT_TRUE(ZQOrientLayout(layout, copy, reference, mol)) << smiles;
    // An atom may lie on an equal one.
    for (const ZQPoint& at : layout) {
      double least = 1e9;
      for (const ZQPoint& other : reference) least = std::min(least, Distance(at, other));
      EXPECT_LT(least, 0.02) << smiles;
    }
  }
}

TEST(Orientation, AlignsTheCommonPartOnly) {
  // A benzisoxazole with different tails; the fragment is found whatever its Kekulé structure.
  const ZQMol mol = "CCCCC(=O)c1cc2onc(CN)c2cc1Cl"_mol;
  const ZQMol reference = "OCC1CCN(CC1)c1c(Cl)cc2c(CO)noc2c1"_mol;
  const ZQLayout target = LayoutOf(reference);
  ZQLayout layout = Moved(LayoutOf(mol), 2, true);
  const ZQLayout before = layout;
  ASSERT_TRUE(ZQOrientLayout(layout, mol, target, reference));
  // The chlorine and the oxygen and nitrogen of the ring.
  for (const auto& [atom, of] : {std::pair{17U, 10U}, {9U, 17U}, {10U, 16U}}) {
    EXPECT_LT(Distance(layout[atom], target[of]), 0.35) << atom;
  }
  for (std::size_t i = 1; i < layout.size(); ++i) {
    EXPECT_NEAR(Distance(layout[i], layout[0]), Distance(before[i], before[0]), 1e-9) << "rigid";
  }
  ZQLayout same = before;
  for (const char* smiles : {"", "CCO", "C1CCCCCC1", "FC(F)(F)C(F)(F)C(F)(F)F"}) {
    const ZQMol other = ReadSmiles(smiles);
    EXPECT_FALSE(ZQOrientLayout(same, mol, LayoutOf(other), other)) << smiles;
    EXPECT_EQ(Deviation(same, before), 0) << smiles;
  }
}

// ---- Drawings

// The values of an attribute of the elements that a pattern selects, with repetitions.
std::multiset<std::string> Found(const std::string& svg, const std::string& pattern) {
  std::multiset<std::string> values;
  const std::regex regex(pattern);
  for (std::sregex_iterator at(svg.begin(), svg.end(), regex), end; at != end; ++at) {
    values.insert((*at)[1]);
  }
  return values;
}

std::multiset<std::string> Numbers(unsigned int count) {
  std::multiset<std::string> numbers;
  for (unsigned int i = 0; i < count; ++i) numbers.insert(std::to_string(i));
  return numbers;
}

double NumberAfter(const std::string& svg, const std::string& text) {
  return std::stod(svg.substr(svg.find(text) + text.size()));
}

TEST(Drawing, HasEachAtomAndBondOnceAndHighlightsWhatIsWanted) {
  std::vector<std::string> all = oddSmiles;
  all.emplace_back("CC(=O)Oc1ccccc1C(=O)O");
  for (const std::string& smiles : all) {
    const ZQMol mol = ReadSmiles(smiles);
    const ZQLayout layout = LayoutOf(mol);
    ZQDrawStyle style;
    const std::string plain = ZQDrawSVG(mol, layout, style);
    style.atoms = {0, 99999};
    style.bonds = {1};
    style.isInteractive = true;
    style.weights = {0.5, -2, NAN, INFINITY};
    const std::string full = ZQDrawSVG(mol, layout, style);
    for (const std::string& svg : {plain, full}) {
      EXPECT_FALSE(ReadXml(svg).empty()) << svg;
      EXPECT_EQ(svg.find("nan"), std::string::npos) << smiles;
      EXPECT_EQ(Found(svg, "<g class=\"atom\" data-atom=\"(\\d+)\""), Numbers(mol.NumAtoms()));
      EXPECT_EQ(Found(svg, "<path class=\"bond\" data-bond=\"(\\d+)\""), Numbers(mol.NumBonds()));
    }
    EXPECT_EQ(plain.find("halo"), std::string::npos);
    EXPECT_EQ(Found(full, "<circle class=\"halo[ on]*\" data-atom=\"(\\d+)\""),
              Numbers(mol.NumAtoms()));
    EXPECT_EQ(Found(full, "<path class=\"halo[ on]*\" data-bond=\"(\\d+)\""),
              Numbers(mol.NumBonds()));
    EXPECT_EQ(Found(full, "halo on\" data-atom=\"(\\d+)\""), Numbers(1)) << smiles;
    EXPECT_EQ(Found(full, "halo on\" data-bond=\"(\\d+)\"").size(), mol.NumBonds() > 1 ? 1U : 0U);
    EXPECT_EQ(Found(full, "shade\" data-atom=\"(\\d+)\""), Numbers(std::min(2U, mol.NumAtoms())));
  }
}

// The text of each labelled atom, in the order it is read; "|" between lines.
std::map<unsigned int, std::string> Labels(const std::string& svg) {
  std::map<unsigned int, std::string> labels;
  const std::regex group("data-atom=\"(\\d+)\"(?: fill=\"[^\"]*\")?>(.*?)</g>");
  for (std::sregex_iterator at(svg.begin(), svg.end(), group), end; at != end; ++at) {
    std::string text = std::regex_replace((*at)[2].str(), std::regex("</text><text[^>]*>"), "|");
    text = std::regex_replace(text, std::regex("<[^>]*>"), "");
    labels[static_cast<unsigned int>(std::stoul((*at)[1]))] = text;
  }
  return labels;
}

TEST(Drawing, LabelsAtoms) {
  using Expected = std::map<unsigned int, std::string>;
  const std::string minus = "\xE2\x88\x92";
  const ZQLayout line{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
  // Atoms in a row: hydrogens on the free side, above or below between two bonds.
  for (const auto& [smiles, labels] : std::vector<std::pair<std::string, Expected>>{
           {"OCN", {{0, "HO"}, {2, "NH2"}}},
           {"NCO", {{0, "H2N"}, {2, "OH"}}},
           {"[NH3+]C[O-]", {{0, "+H3N"}, {2, "O" + minus}}},
           {"CNC", {{1, "N|H"}}},
           {"N=C=S", {{0, "HN"}, {1, "C"}, {2, "S"}}},  // else HN=S
           {"[13CH3]C[18F]", {{0, "H313C"}, {2, "18F"}}},
           {"[2H]C[3H]", {{0, "D"}, {2, "T"}}},
           {"[CH3:7]C*", {{0, "H3C|:7"}, {2, "*"}}},
           {"C[CH]C", {{1, "C|H"}}},
           {"CC[Fe+2]", {{2, "Fe2+"}}},
           {"C", {{0, "CH4"}}},
           {"O", {{0, "H2O"}}},
           {"[OH-]", {{0, "HO" + minus}}},
           {"[NH4+]", {{0, "NH4+"}}}}) {
    EXPECT_EQ(Labels(ZQDrawSVG(ReadSmiles(smiles), line)), labels) << smiles;
  }
  // The oxygen of water is in its halo, the hydrogens before it.
  ZQDrawStyle style;
  style.isInteractive = true;
  const std::string water = ZQDrawSVG("O"_mol, line, style);
  std::smatch found;
  const std::regex places("cx=\"([\\d.]+)\"[^]*<text x=\"([\\d.]+)\"");
  ASSERT_TRUE(std::regex_search(water, found, places));
  EXPECT_GT(std::stod(found[1]) - std::stod(found[2]), 15.0);
}

// Lines of a bond: their ends, with y downwards.
std::vector<std::array<double, 4>> LinesOf(const std::string& svg, unsigned int bond) {
  std::vector<std::array<double, 4>> lines;
  const std::regex path("data-bond=\"" + std::to_string(bond) + "\" d=\"([^\"]*)\"");
  std::smatch found;
  EXPECT_TRUE(std::regex_search(svg, found, path)) << bond;
  const std::string data = found[1];
  const std::regex line("M(-?[\\d.]+) (-?[\\d.]+)L(-?[\\d.]+) (-?[\\d.]+)");
  for (std::sregex_iterator at(data.begin(), data.end(), line), end; at != end; ++at) {
    lines.push_back(
        {std::stod((*at)[1]), std::stod((*at)[2]), std::stod((*at)[3]), std::stod((*at)[4])});
  }
  return lines;
}

TEST(Drawing, SecondLinesOfRingsAreInside) {
  const ZQMol mol = "Cc1ccc2cc(C=O)ccc2c1"_mol;
  const ZQLayout layout = LayoutOf(mol);
  const std::string svg = ZQDrawSVG(mol, layout);
  ZQMol rings(mol);
  ZQFindRingAtomsAndBonds(rings);
  unsigned int checked = 0;
  for (auto bond = rings.GetBonds(); bond; ++bond) {
    const auto lines = LinesOf(svg, bond->GetIdx());
    ASSERT_EQ(lines.size(), bond->GetOrder());
    if (!bond->IsInRing() || bond->GetOrder() != 2) continue;
    const double first = std::hypot(lines[0][0] - lines[0][2], lines[0][1] - lines[0][3]);
    const double second = std::hypot(lines[1][0] - lines[1][2], lines[1][1] - lines[1][3]);
    EXPECT_LT(second, 0.9 * first);  // the outer one would not be shorter
    EXPECT_GT(second, 0.6 * first);
    ++checked;
  }
  EXPECT_EQ(checked, 5U);
}

TEST(Drawing, FitsIntoItsSize) {
  const ZQMol mol = "CC(=O)Oc1ccccc1C(=O)O"_mol;
  const ZQLayout layout = LayoutOf(mol);
  const std::string natural = ZQDrawSVG(mol, layout);
  const double width = NumberAfter(natural, " width=\"");
  for (const unsigned int size : {10U, 50U, 80U, 120U, 1000U}) {
    ZQDrawStyle style;
    style.width = size;
    style.height = 2 * size;
    const std::string svg = ZQDrawSVG(mol, layout, style);
    EXPECT_EQ(NumberAfter(svg, " width=\""), size);
    EXPECT_EQ(NumberAfter(svg, " height=\""), 2 * size);
    const double left = NumberAfter(svg, "viewBox=\"");
    if (size == 1000) {
      EXPECT_NEAR(left, (width - size) / 2, 0.1) << "in the middle";
      EXPECT_EQ(svg.substr(svg.find("<g")), natural.substr(natural.find("<g"))) << "not enlarged";
    } else if (size >= 50) {
      EXPECT_NEAR(left, 0, 0.05 * size) << "uses the room " << size;
      EXPECT_EQ(NumberAfter(svg, "stroke-width=\""), NumberAfter(natural, "stroke-width=\""));
    }
  }
}

TEST(Drawing, IsWellFormedForAnyInput) {
  ZQDrawStyle style;
  const ZQMol mol = "CCO"_mol;
  for (const auto& [title, shown] :
       {std::pair<std::string, std::string>{"a < b & c > \"d'", "a &lt; b &amp; c &gt; \"d'"},
        {std::string("a\0\t\n\x1f\x7f", 6), "a     "},
        {"\xC3\xA9\xF0\x9F\x98\x80", "\xC3\xA9\xF0\x9F\x98\x80"},
        {"\xFF\xC3", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xEF\xBF\xBF", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"</title><script>", "&lt;/title&gt;&lt;script&gt;"}}) {
    style.title = title;
    const std::string svg = ZQDrawSVG(mol, LayoutOf(mol), style);
    EXPECT_FALSE(ReadXml(svg).empty()) << svg;
    EXPECT_NE(svg.find("<title>" + shown + "</title>"), std::string::npos) << svg;
  }
  // Nothing, a layout that is too short, and one that isn't a number.
  ZQMol none;
  EXPECT_FALSE(ReadXml(ZQDrawSVG(none, {})).empty());
  EXPECT_EQ(Found(ZQDrawSVG(mol, {{0, 0, 0}, {1, 0, 0}}), "data-bond=\"(\\d+)\""), Numbers(1));
  EXPECT_EQ(Found(ZQDrawSVG(mol, {{0, 0, 0}, {1, 0, 0}, {NAN, 0, 0}}), "data-bond=\"(\\d+)\""),
            Numbers(1));
  // More atoms than a layout is generated for, in a given one.
  constexpr unsigned int many = 2000;
  const ZQMol chain = ReadSmiles(Repeated("C", many));
  ZQLayout row;
  for (unsigned int i = 0; i < many; ++i) row.push_back({i * 0.87, i % 2 * 0.5, 0});
  style.width = 300;
  const std::string svg = ZQDrawSVG(chain, row, style);
  EXPECT_EQ(Found(svg, "class=\"bond\" data-bond=\"(\\d+)\"").size(), many - 1);
  EXPECT_LE(NumberAfter(svg, " width=\""), 300);
}

double Luminance(const std::string& color) {
  const auto linear = [&](std::size_t at) {
    const double value = std::stoi(color.substr(at, 2), nullptr, 16) / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(1) + 0.7152 * linear(3) + 0.0722 * linear(5);
}

// Contrast by WCAG 2.1, at least 4 on either background.
TEST(Drawing, ColorsAreReadableOnWhiteAndOnBlack) {
  std::set<std::string> colors;
  for (unsigned int element = 0; element < 119; ++element) {
    ZQMol mol;
    mol.NewAtom(element);
    for (const std::string& color :
         Found(ZQDrawSVG(mol, {{0, 0, 0}}), "data-atom=\"0\" fill=\"(#\\w+)\"")) {
      colors.insert(color);
    }
  }
  EXPECT_GE(colors.size(), 7U);
  for (const std::string& color : colors) {
    EXPECT_GT(1.05 / (Luminance(color) + 0.05), 4) << color;
    EXPECT_GT((Luminance(color) + 0.05) / (Luminance("#111111") + 0.05), 4) << color;
  }
}

}  // namespace
}  // namespace ZQKorvex
