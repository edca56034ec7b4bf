// Both systems of VSEPR types: the table against printed figures and the rule of electron pairs,
// and the lookup against a search of the table for every combination of values.

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <tuple>

#include "korvex/vsepr_aro_stereo_types.h"
#include "korvex/vsepr_aro_types.h"
#include "tests/foreign_mol.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

// A row as the getters return it.
struct Row {
  unsigned int element;
  int charge;
  unsigned int heavyDegree, heavyValence, hydrogens, lonePairs;
  bool aromatic;
  unsigned int stereo;

  auto AsTuple() const {
    return std::tie(element, charge, heavyDegree, heavyValence, hydrogens, lonePairs, aromatic,
                    stereo);
  }
  friend bool operator==(const Row& a, const Row& b) { return a.AsTuple() == b.AsTuple(); }
  friend bool operator<(const Row& a, const Row& b) { return a.AsTuple() < b.AsTuple(); }
};

Row RowOf(unsigned int type) {
  using namespace VSEPRAroStereoType;
  return {GetAtomicNumber(type),  GetCharge(type),  GetHeavyDegree(type), GetHeavyValence(type),
          GetHydrogenCount(type), GetLPCount(type), GetAromatic(type),    GetStereo(type)};
}

// The ordinary rows with the values of 147 and up, and those of each R and S from 165 up.
constexpr unsigned int aromaticBases[] = {3,  4,  5,  10, 13,  17,  21,  22,  23,
                                          28, 31, 64, 93, 121, 123, 127, 138, 141};
constexpr unsigned int stereoBases[] = {12, 14,  30,  32,  47,  50,  58,  60,  80,
                                        83, 102, 106, 108, 111, 129, 132, 140, 142};

TEST(VseprTypes, TheTableHasThePrintedFigures) {
  const std::map<unsigned int, std::pair<const char*, Row>> ordinary = {
      {0, {"CH2-:PrimarySp3", {6, -1, 1, 1, 2, 1, false, 0}}},
      {6, {"CH3:PrimarySp3", {6, 0, 1, 1, 3, 0, false, 0}}},
      {20, {"N:PrimarySp1", {7, 0, 1, 3, 0, 1, false, 0}}},
      {34, {"PH4:PrimarySp3d", {15, 0, 1, 1, 4, 0, false, 0}}},
      {61, {"O-:PrimarySp3", {8, -1, 1, 1, 0, 3, false, 0}}},
      {87, {"SH5:PrimarySp3d2", {16, 0, 1, 1, 5, 0, false, 0}}},
      {114, {"S:HvyDegree6Sp3d2", {16, 0, 6, 6, 0, 0, false, 0}}},
      {142, {"S++:QuatenarySp3", {16, 2, 4, 4, 0, 0, false, 0}}},
      {144, {"Cl:PrimarySp3", {17, 0, 1, 1, 0, 3, false, 0}}}};
  for (const auto& [number, expected] : ordinary) {
    EXPECT_EQ(VSEPRAroType::GetName(number), expected.first);
    EXPECT_EQ(RowOf(number), expected.second) << number;
  }
  unsigned int type = 147;
  for (const unsigned int base : aromaticBases) {
    const std::string name = VSEPRAroType::GetName(base);
    EXPECT_EQ(VSEPRAroType::GetName(type), name.substr(0, name.rfind("Sp")) + "Aro");
    Row expected = RowOf(base);
    expected.aromatic = true;
    EXPECT_EQ(RowOf(type++), expected) << name;
  }
  for (const unsigned int base : stereoBases) {
    for (const unsigned int stereo : {2U, 3U}) {
      const std::string name = VSEPRAroType::GetName(base) + (stereo == 2 ? ":R" : ":S");
      EXPECT_EQ(VSEPRAroStereoType::GetName(type), name);
      Row expected = RowOf(base);
      expected.stereo = stereo;
      EXPECT_EQ(RowOf(type++), expected) << name;
    }
  }
  EXPECT_EQ(type, VSEPRAroStereoType::Unknown);
  // The element of each row, by the last number of its group.
  const std::map<unsigned int, unsigned int> groups = {
      {14, 6}, {32, 7}, {60, 15}, {64, 8}, {142, 16}, {143, 9}, {144, 17}, {145, 35}, {146, 53}};
  for (type = 0; type <= 146; ++type) {
    EXPECT_EQ(RowOf(type).element, groups.lower_bound(type)->second) << type;
  }
}

TEST(VseprTypes, EveryRowHasItsElectronsItsNameAndBothSystems) {
  const std::map<unsigned int, int> valenceElectrons = {{6, 4}, {7, 5},  {15, 5}, {8, 6}, {16, 6},
                                                        {9, 7}, {17, 7}, {35, 7}, {53, 7}};
  std::set<std::string> names;
  std::set<Row> rows;
  std::uint64_t hash = 0xcbf29ce484222325;  // FNV-1a of all names, a line each
  for (unsigned int type = 0; type < VSEPRAroStereoType::Unknown; ++type) {
    const Row row = RowOf(type);
    const std::string name = VSEPRAroStereoType::GetName(type);
    EXPECT_EQ(valenceElectrons.at(row.element) - row.charge - static_cast<int>(row.heavyValence) -
                  static_cast<int>(row.hydrogens),
              2 * static_cast<int>(row.lonePairs))
        << name;
    EXPECT_TRUE(names.insert(name).second && rows.insert(row).second) << name;
    for (const char c : name + "\n") hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    EXPECT_EQ(VSEPRAroStereoType::GetType(name), type);
    EXPECT_EQ(VSEPRAroStereoType::GetDegree(type), row.heavyDegree + row.hydrogens);
    EXPECT_EQ(VSEPRAroStereoType::GetValence(type), row.heavyValence + row.hydrogens);
    EXPECT_EQ(row.aromatic, type >= 147 && type <= 164) << name;
    using namespace VSEPRAroType;
    EXPECT_EQ(GetType(name), std::min(type, 165U));
    if (type >= Unknown) continue;
    EXPECT_EQ(GetName(type), name);
    EXPECT_EQ(
        (Row{GetAtomicNumber(type), GetCharge(type), GetHeavyDegree(type), GetHeavyValence(type),
             GetHydrogenCount(type), GetLPCount(type), GetAromatic(type), 0}),
        row);
    EXPECT_EQ(GetDegree(type) + GetValence(type),
              row.heavyDegree + row.heavyValence + 2 * row.hydrogens);
  }
  EXPECT_EQ(hash, 0x4c5076d16c087f5aU);  // a number never changes its name
  for (const char* name : {"", "INVALID", "CH3:PrimarySp", "CH3:PrimarySp3 ", "CH3:PrimarySp3:R"}) {
    EXPECT_EQ(VSEPRAroStereoType::GetType(name), 201U);
  }
}

TEST(VseprTypes, BadNumbersAreReported) {
  CapturedReports reports;
  const auto expect = [&](const Texts& functions, const std::string& system, unsigned int type) {
    Texts texts;
    for (const std::string& function : functions) {
      std::string& text = texts.emplace_back(system);
      text.append("::").append(function).append(" : Invalid ").append(system).append(" ");
      text.append(std::to_string(static_cast<int>(type)));
    }
    EXPECT_EQ(reports.Count(ZQErrorLevel::Error), texts.size());
    EXPECT_EQ(reports.Take(), texts);
  };
  const Texts columns{"GetAtomicNumber", "GetCharge",        "GetHeavyDegree",
                      "GetHeavyValence", "GetHydrogenCount", "GetAromatic"};
  for (const unsigned int type : {165U, 200U, ~0U}) {
    using namespace VSEPRAroType;
    EXPECT_EQ(GetName(type), "INVALID");
    EXPECT_EQ(GetAtomicNumber(type) + GetHeavyDegree(type) + GetHeavyValence(type) +
                  GetHydrogenCount(type) + GetLPCount(type) + GetAromatic(type),
              0U);
    EXPECT_EQ(GetCharge(type), 0);
    expect({"GetAtomicNumber", "GetHeavyDegree", "GetHeavyValence", "GetHydrogenCount",
            "GetLPCount", "GetAromatic", "GetCharge"},
           "VSEPRAroType", type);
    EXPECT_EQ(GetDegree(type), 0U);
    expect({"GetHeavyDegree", "GetHydrogenCount"}, "VSEPRAroType", type);
    EXPECT_EQ(GetValence(type), 0U);
    expect({"GetHeavyValence", "GetHydrogenCount"}, "VSEPRAroType", type);
    EXPECT_EQ(CreatePredicate(type), nullptr);
    expect(columns, "VSEPRAroType", type);
  }
  EXPECT_EQ(VSEPRAroStereoType::GetName(201), "INVALID");
  EXPECT_EQ(VSEPRAroStereoType::GetStereo(201) + VSEPRAroStereoType::GetDegree(200), 4U);
  expect({"GetStereo"}, "VSEPRAroStereoType", 201);
  const auto mol = "CC"_mol;
  EXPECT_FALSE(VSEPRAroStereoType::ZQIsType(201)(*mol.GetAtoms()));
  EXPECT_EQ(reports.Take().size(), columns.size() + 1 + 1);  // one of them an assertion
  EXPECT_FALSE(VSEPRAroType::ZQIsType()(*mol.GetAtoms()));
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
}

// An atom with these values: bonds to fluorine, whose orders add up.
struct Atom {
  explicit Atom(const Row& row, unsigned int explicitHydrogens = 0) {
    atom = static_cast<ForeignAtom*>(mol.NewAtom(row.element));
    for (unsigned int i = 0; i < row.heavyDegree; ++i) {
      const bool isLast = i + 1 == row.heavyDegree;
      const unsigned int order = isLast ? row.heavyValence - i : row.heavyValence > i ? 1 : 0;
      mol.NewBond(mol.NewAtom(9), atom, order);
    }
    for (unsigned int i = 0; i < explicitHydrogens; ++i) mol.NewBond(atom, mol.NewAtom(1), 1);
    atom->hydrogens = row.hydrogens - explicitHydrogens;
    atom->charge = row.charge;
    atom->SetAromatic(row.aromatic);
    atom->ownStereo = [stereo = row.stereo](const auto&, unsigned int) { return stereo; };
  }
  ForeignMol mol;
  ForeignAtom* atom;
};

TEST(VseprTypes, AnAtomHasTheRowOfItsValuesOrNone) {
  std::map<Row, unsigned int> types;  // without lone pairs, which aren't read
  for (unsigned int type = 0; type < 201; ++type) {
    Row row = RowOf(type);
    row.lonePairs = 0;
    types[row] = type;
  }
  std::size_t found = 0;
  const auto check = [&](const Row& row) {
    const Atom made(row);
    const auto expected = types.find(row);
    Row plain = row;
    plain.stereo = 0;
    const auto expectedPlain = types.find(plain);
    found += expected != types.end();
    ASSERT_EQ(VSEPRAroStereoType::GetType(*made.atom),
              expected == types.end() ? 201 : expected->second);
    ASSERT_EQ(VSEPRAroType::GetType(*made.atom),
              expectedPlain == types.end() ? 165 : expectedPlain->second);
  };
  for (const unsigned int element :
       {0U, 1U, 5U, 6U, 7U, 8U, 9U, 15U, 16U, 17U, 34U, 35U, 53U, 85U, 200U}) {
    for (int charge = -2; charge <= 3; ++charge) {
      for (unsigned int degree = 0; degree <= 7; ++degree) {
        for (unsigned int valence = degree; valence <= (degree == 0 ? 0 : 7); ++valence) {
          for (unsigned int hydrogens = 0; hydrogens <= 6; ++hydrogens) {
            check({element, charge, degree, valence, hydrogens, 0, false, 0});
          }
        }
      }
    }
  }
  EXPECT_EQ(found, 147U);
  for (unsigned int type = 0; type < 147; ++type) {
    Row row = RowOf(type);
    row.lonePairs = 0;
    for (row.stereo = 0; row.stereo <= 4; ++row.stereo) {
      for (const bool aromatic : {false, true}) {
        row.aromatic = aromatic;
        check(row);
      }
    }
  }
  EXPECT_EQ(found, 147U + 201U);
}

TEST(VseprTypes, ReadsHydrogensAndTheNeighboursInOrder) {
  // A bond of no order counts as a neighbour without valence, explicit hydrogens like implicit.
  const Atom ammine({7, 0, 1, 0, 3, 1, false, 0}, 2);
  EXPECT_EQ(VSEPRAroType::GetType(*ammine.atom), 165U);
  Row row = RowOf(12);
  const Atom mixed(row, 1);
  EXPECT_EQ(VSEPRAroType::GetType(*mixed.atom), 12U);

  // C(F)(Si)(CH3)(O): Si has no type. Equal types, like hydrogens and Si, come by bond.
  ForeignMol mol;
  Fill(mol, "C([Si])(F)([H])C"_mol, true);
  auto centre = mol.GetAtoms();
  std::vector<unsigned int> asked;
  static_cast<ForeignAtom&>(*centre).ownStereo = [&](const std::vector<ZQAtomBase*>& neighbours,
                                                     unsigned int stereoClass) {
    EXPECT_EQ(stereoClass, 57U);
    for (const ZQAtomBase* neighbour : neighbours) asked.push_back(neighbour->GetAtomicNum());
    return 3U;
  };
  EXPECT_EQ(VSEPRAroStereoType::GetType(*centre), 166U);
  EXPECT_EQ(asked, (std::vector<unsigned int>{6, 9, 14, 1}));
}

TEST(VseprTypes, PredicatesCompareAllButStereo) {
  for (unsigned int type = 0; type < 201; ++type) {
    std::optional<VSEPRAroStereoType::ZQIsType> original(type);
    const std::unique_ptr<ZQUnaryPredicate<ZQAtomBase>> copy(original->CreateCopy());
    const auto assigned = *original;
    original.reset();
    for (unsigned int other = 0; other < 201; ++other) {
      Row expected = RowOf(type);
      const Row row = RowOf(other);
      expected.stereo = row.stereo;
      const Atom made(row, row.hydrogens / 2);
      EXPECT_EQ((*copy)(*made.atom), row == expected) << type << " " << other;
      EXPECT_EQ(ZQNot<ZQAtomBase>(assigned)(*made.atom), row != expected);
    }
  }
  EXPECT_FALSE(VSEPRAroType::ZQIsType(12)(*Atom(RowOf(14)).atom));
}

}  // namespace
}  // namespace ZQKorvex
