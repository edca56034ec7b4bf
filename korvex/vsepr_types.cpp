#include "korvex/vsepr_types_local.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "korvex/vsepr_aro_stereo_types.h"
#include "korvex/vsepr_aro_types.h"

// The names are the source of the table: the compiler parses them, and refuses one that doesn't
// follow the grammar.

namespace ZQKorvex {

namespace {

// Primary to HvyDegree6 is the heavy degree; Sp1 to Sp3d2 is that, hydrogens and lone pairs
// together.
constexpr const char* ordinaryNames[] = {
    // 0 to 14: carbon
    "CH2-:PrimarySp3",
    "CH1-:PrimarySp2",
    "C-:PrimarySp1",
    "CH1-:SecondarySp3",
    "C-:SecondarySp2",
    "C-:TertiarySp3",
    "CH3:PrimarySp3",
    "CH2:PrimarySp2",
    "CH1:PrimarySp1",
    "CH2:SecondarySp3",
    "CH1:SecondarySp2",
    "C:SecondarySp1",
    "CH1:TertiarySp3",
    "C:TertiarySp2",
    "C:QuatenarySp3",
    // 15 to 32: nitrogen
    "NH1-:PrimarySp3",
    "N-:PrimarySp2",
    "N-:SecondarySp3",
    "NH2:PrimarySp3",
    "NH1:PrimarySp2",
    "N:PrimarySp1",
    "NH1:SecondarySp3",
    "N:SecondarySp2",
    "N:TertiarySp3",
    "NH3+:PrimarySp3",
    "NH2+:PrimarySp2",
    "NH1+:PrimarySp1",
    "NH2+:SecondarySp3",
    "NH1+:SecondarySp2",
    "N+:SecondarySp1",
    "NH1+:TertiarySp3",
    "N+:TertiarySp2",
    "N+:QuatenarySp3",
    // 33 to 60: phosphorus
    "PH2:PrimarySp3",
    "PH4:PrimarySp3d",
    "PH1:PrimarySp2",
    "PH3:PrimarySp3",
    "P:PrimarySp1",
    "PH2:PrimarySp2",
    "PH1:SecondarySp3",
    "PH3:SecondarySp3d",
    "P:SecondarySp2",
    "PH2:SecondarySp3",
    "PH1:SecondarySp2",
    "P:SecondarySp1",
    "P:TertiarySp3",
    "PH2:TertiarySp3d",
    "PH1:TertiarySp3",
    "P:TertiarySp2",
    "PH1:QuatenarySp3d",
    "P:QuatenarySp3",
    "P:HvyDegree5Sp3d",
    "PH3+:PrimarySp3",
    "PH2+:PrimarySp2",
    "PH1+:PrimarySp1",
    "PH2+:SecondarySp3",
    "PH1+:SecondarySp2",
    "P+:SecondarySp1",
    "PH1+:TertiarySp3",
    "P+:TertiarySp2",
    "P+:QuatenarySp3",
    // 61 to 64: oxygen
    "O-:PrimarySp3",
    "OH1:PrimarySp3",
    "O:PrimarySp2",
    "O:SecondarySp3",
    // 65 to 142: sulfur
    "S-:PrimarySp3",
    "SH2-:PrimarySp3d",
    "SH4-:PrimarySp3d2",
    "SH1-:PrimarySp3",
    "SH3-:PrimarySp3d",
    "S-:PrimarySp2",
    "SH2-:PrimarySp3",
    "SH1-:SecondarySp3d",
    "SH3-:SecondarySp3d2",
    "S-:SecondarySp3",
    "SH2-:SecondarySp3d",
    "SH1-:SecondarySp3",
    "S-:SecondarySp2",
    "S-:TertiarySp3d",
    "SH2-:TertiarySp3d2",
    "SH1-:TertiarySp3d",
    "S-:TertiarySp3",
    "SH1-:QuatenarySp3d2",
    "S-:QuatenarySp3d",
    "S-:HvyDegree5Sp3d2",
    "SH1:PrimarySp3",
    "SH3:PrimarySp3d",
    "SH5:PrimarySp3d2",
    "S:PrimarySp2",
    "SH2:PrimarySp3",
    "SH4:PrimarySp3d",
    "SH1:PrimarySp2",
    "SH3:PrimarySp3",
    "S:SecondarySp3",
    "SH2:SecondarySp3d",
    "SH4:SecondarySp3d2",
    "SH1:SecondarySp3",
    "SH3:SecondarySp3d",
    "S:SecondarySp2",
    "SH2:SecondarySp3",
    "SH1:SecondarySp2",
    "S:SecondarySp1",
    "SH1:TertiarySp3d",
    "SH3:TertiarySp3d2",
    "S:TertiarySp3",
    "SH2:TertiarySp3d",
    "SH1:TertiarySp3",
    "S:TertiarySp2",
    "S:QuatenarySp3d",
    "SH2:QuatenarySp3d2",
    "SH1:QuatenarySp3d",
    "S:QuatenarySp3",
    "SH1:HvyDegree5Sp3d2",
    "S:HvyDegree5Sp3d",
    "S:HvyDegree6Sp3d2",
    "SH2+:PrimarySp3",
    "SH4+:PrimarySp3d",
    "SH1+:PrimarySp2",
    "SH3+:PrimarySp3",
    "S+:PrimarySp1",
    "SH2+:PrimarySp2",
    "SH1+:SecondarySp3",
    "SH3+:SecondarySp3d",
    "S+:SecondarySp2",
    "SH2+:SecondarySp3",
    "SH1+:SecondarySp2",
    "S+:SecondarySp1",
    "S+:TertiarySp3",
    "SH2+:TertiarySp3d",
    "SH1+:TertiarySp3",
    "S+:TertiarySp2",
    "SH1+:QuatenarySp3d",
    "S+:QuatenarySp3",
    "S+:HvyDegree5Sp3d",
    "SH3++:PrimarySp3",
    "SH2++:PrimarySp2",
    "SH1++:PrimarySp1",
    "SH2++:SecondarySp3",
    "SH1++:SecondarySp2",
    "S++:SecondarySp1",
    "SH1++:TertiarySp3",
    "S++:TertiarySp2",
    "S++:QuatenarySp3",
    // 143 to 146: halogens
    "F:PrimarySp3",
    "Cl:PrimarySp3",
    "Br:PrimarySp3",
    "I:PrimarySp3",
};
// The names of the aromatic rows, each with the ordinary row of the same values.
constexpr struct {
  const char* name;
  unsigned int base;
} aromaticRows[] = {
    {"CH1-:SecondaryAro", 3},  {"C-:SecondaryAro", 4},      {"C-:TertiaryAro", 5},
    {"CH1:SecondaryAro", 10},  {"C:TertiaryAro", 13},       {"N-:SecondaryAro", 17},
    {"NH1:SecondaryAro", 21},  {"N:SecondaryAro", 22},      {"N:TertiaryAro", 23},
    {"NH1+:SecondaryAro", 28}, {"N+:TertiaryAro", 31},      {"O:SecondaryAro", 64},
    {"S:SecondaryAro", 93},    {"SH1+:SecondaryAro", 121},  {"S+:SecondaryAro", 123},
    {"S+:TertiaryAro", 127},   {"SH1++:SecondaryAro", 138}, {"S++:TertiaryAro", 141},
};
// The rows that have an R and an S.
constexpr unsigned int stereoBases[] = {12, 14,  30,  32,  47,  50,  58,  60,  80,
                                        83, 102, 106, 108, 111, 129, 132, 140, 142};

constexpr unsigned int firstAromatic = std::size(ordinaryNames);
constexpr unsigned int firstStereo = firstAromatic + std::size(aromaticRows);
constexpr unsigned int tableSize = firstStereo + 2 * std::size(stereoBases);
static_assert(firstStereo == VSEPRAroType::Unknown && tableSize == VSEPRAroStereoType::Unknown);

struct Element {
  std::string_view symbol;
  std::uint8_t atomicNumber;
  std::uint8_t valenceElectrons;
};
constexpr Element elements[] = {{"C", 6, 4},   {"N", 7, 5},   {"O", 8, 6},
                                {"F", 9, 7},   {"P", 15, 5},  {"S", 16, 6},
                                {"Cl", 17, 7}, {"Br", 35, 7}, {"I", 53, 7}};

// The heavy degree is one more than the place.
constexpr std::string_view positions[] = {"Primary",   "Secondary",  "Tertiary",
                                          "Quatenary", "HvyDegree5", "HvyDegree6"};
// Heavy degree, hydrogens and lone pairs together are two more than the place.
constexpr std::string_view hybridizations[] = {"Sp1", "Sp2", "Sp3", "Sp3d", "Sp3d2"};

// Removes the prefix if the text begins with it.
constexpr bool Take(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// The row of a name. That of an aromatic row doesn't determine lone pairs and heavy valence, which
// are those of its base, a row with the same values but for the flag.
constexpr ZQVseprRow Parse(const char* name, const ZQVseprRow* base) {
  ZQVseprRow row;
  row.name = name;
  std::string_view rest = name;
  const std::size_t symbolSize = rest[1] >= 'a' && rest[1] <= 'z' ? 2 : 1;
  unsigned int valenceElectrons = 0;
  for (const Element& element : elements) {
    if (element.symbol != rest.substr(0, symbolSize)) continue;
    row.atomicNumber = element.atomicNumber;
    valenceElectrons = element.valenceElectrons;
  }
  if (row.atomicNumber == 0) throw "unknown element";
  rest.remove_prefix(symbolSize);
  if (Take(rest, "H")) {
    row.hydrogenCount = static_cast<std::uint8_t>(rest[0] - '0');
    rest.remove_prefix(1);
  }
  if (Take(rest, "-")) row.charge = -1;
  while (Take(rest, "+")) ++row.charge;
  if (!Take(rest, ":")) throw "expected a colon";
  for (std::size_t i = 0; i < std::size(positions); ++i) {
    if (row.heavyDegree == 0 && Take(rest, positions[i])) {
      row.heavyDegree = static_cast<std::uint8_t>(i + 1);
    }
  }
  if (row.heavyDegree == 0) throw "unknown position";
  if (base) {
    if (rest != "Aro") throw "expected Aro";
    if (row.atomicNumber != base->atomicNumber || row.charge != base->charge ||
        row.heavyDegree != base->heavyDegree || row.hydrogenCount != base->hydrogenCount) {
      throw "the base has other values";
    }
    row.heavyValence = base->heavyValence;
    row.lonePairs = base->lonePairs;
    row.isAromatic = true;
    return row;
  }
  std::size_t place = 0;
  while (place < std::size(hybridizations) && rest != hybridizations[place]) ++place;
  if (place == std::size(hybridizations)) throw "unknown hybridization";
  const auto lonePairs = static_cast<int>(place) + 2 - row.heavyDegree - row.hydrogenCount;
  const auto heavyValence =
      static_cast<int>(valenceElectrons) - row.charge - row.hydrogenCount - 2 * lonePairs;
  if (lonePairs < 0 || heavyValence < row.heavyDegree) throw "impossible numbers";
  row.lonePairs = static_cast<std::uint8_t>(lonePairs);
  row.heavyValence = static_cast<std::uint8_t>(heavyValence);
  return row;
}

constexpr std::array<ZQVseprRow, tableSize> MakeRows() {
  std::array<ZQVseprRow, tableSize> rows;
  auto row = rows.begin();
  for (const char* name : ordinaryNames) *row++ = Parse(name, nullptr);
  for (const auto& [name, base] : aromaticRows) *row++ = Parse(name, &rows[base]);
  for (const unsigned int base : stereoBases) {
    for (const std::uint8_t stereo : {2, 3}) {
      *row = rows[base];
      (row++)->stereo = stereo;
    }
  }
  return rows;
}

constexpr std::array<ZQVseprRow, tableSize> table = MakeRows();

// The lookup of an atom's row: one entry for each combination of values, its index a number whose
// digits are the values.
constexpr unsigned int maxHeavyValence = 6;
constexpr unsigned int maxHeavyDegree = std::size(positions);
constexpr unsigned int maxHydrogenCount = 5;
constexpr int minCharge = -1;
constexpr int maxCharge = 2;

constexpr std::size_t IndexOf(std::size_t element, unsigned int heavyValence,
                              unsigned int heavyDegree, unsigned int hydrogenCount, int charge) {
  std::size_t index = element * (maxCharge - minCharge + 1);
  index += static_cast<std::size_t>(charge - minCharge);
  index = index * (maxHydrogenCount + 1) + hydrogenCount;
  index = index * (maxHeavyDegree + 1) + heavyDegree;
  return index * (maxHeavyValence + 1) + heavyValence;
}

constexpr std::size_t indexEnd =
    IndexOf(std::size(elements) - 1, maxHeavyValence, maxHeavyDegree, maxHydrogenCount, maxCharge) +
    1;

template <std::size_t size>
constexpr std::array<std::uint8_t, size> NoRows() {
  std::array<std::uint8_t, size> rows{};
  for (std::uint8_t& row : rows) row = ZQNoVseprRow;
  return rows;
}

// By atomic number.
constexpr std::array<std::uint8_t, 54> elementPlaces = [] {
  auto places = NoRows<54>();
  std::uint8_t place = 0;
  for (const Element& element : elements) places[element.atomicNumber] = place++;
  return places;
}();

constexpr std::array<std::uint8_t, indexEnd> rowOfValues = [] {
  auto rows = NoRows<indexEnd>();
  for (std::uint8_t i = 0; i < firstAromatic; ++i) {
    const ZQVseprRow& row = table[i];
    if (row.heavyValence > maxHeavyValence || row.hydrogenCount > maxHydrogenCount ||
        row.charge > maxCharge) {
      throw "a value beyond the limits";
    }
    std::uint8_t& entry = rows[IndexOf(elementPlaces[row.atomicNumber], row.heavyValence,
                                       row.heavyDegree, row.hydrogenCount, row.charge)];
    if (entry != ZQNoVseprRow) throw "two rows with the same values";
    entry = i;
  }
  return rows;
}();

constexpr std::array<std::uint8_t, firstAromatic> aromaticOf = [] {
  auto rows = NoRows<firstAromatic>();
  std::uint8_t row = firstAromatic;
  for (const auto& [name, base] : aromaticRows) rows[base] = row++;
  return rows;
}();

// The R row; the S row follows it.
constexpr std::array<std::uint8_t, firstAromatic> stereoOf = [] {
  auto rows = NoRows<firstAromatic>();
  std::uint8_t row = firstStereo;
  for (const unsigned int base : stereoBases) {
    rows[base] = row;
    row += 2;
  }
  return rows;
}();

constexpr std::string_view StereoSuffix(const ZQVseprRow& row) {
  return row.stereo == 2 ? ":R" : row.stereo == 3 ? ":S" : "";
}

class ZQIsTypeImpl final : public ZQUnaryPredicate<ZQAtomBase> {
 public:
  explicit ZQIsTypeImpl(const ZQVseprRow& row) : row_(row) {}

  bool operator()(const ZQAtomBase& atom) const override {
    return atom.GetAtomicNum() == row_.atomicNumber && atom.GetFormalCharge() == row_.charge &&
           atom.GetHvyDegree() == row_.heavyDegree && atom.GetHvyValence() == row_.heavyValence &&
           atom.GetTotalHCount() == row_.hydrogenCount && atom.IsAromatic() == row_.isAromatic;
  }
  ZQIsTypeImpl* CreateCopy() const override { return new ZQIsTypeImpl(*this); }

 private:
  ZQVseprRow row_;
};

}  // namespace

const ZQVseprRow& ZQVseprTypes::GetRow(const char* function, unsigned int type) const {
  static constexpr ZQVseprRow zeros;
  if (type < numRows) return table[type];
  ZQThrow.Error("%s::%s : Invalid %s %d", name, function, name, static_cast<int>(type));
  return zeros;
}

std::string ZQVseprTypes::GetName(unsigned int type) const {
  if (type >= numRows) return "INVALID";
  return std::string(table[type].name).append(StereoSuffix(table[type]));
}

unsigned int ZQVseprTypes::GetType(const std::string& rowName) const {
  unsigned int type = 0;
  while (type < numRows && GetName(type) != rowName) ++type;
  return type;
}

ZQUnaryPredicate<ZQAtomBase>* ZQVseprTypes::CreatePredicate(unsigned int type) const {
  if (type < numRows) return new ZQIsTypeImpl(table[type]);
  for (const char* column : {"GetAtomicNumber", "GetCharge", "GetHeavyDegree", "GetHeavyValence",
                             "GetHydrogenCount", "GetAromatic"}) {
    GetRow(column, type);
  }
  if (numRows == tableSize) GetRow("GetStereo", type);
  return nullptr;
}

unsigned int ZQFindVseprRow(const ZQAtomBase& atom) {
  const unsigned int atomicNumber = atom.GetAtomicNum();
  if (atomicNumber >= elementPlaces.size()) return ZQNoVseprRow;
  const std::size_t element = elementPlaces[atomicNumber];
  if (element == ZQNoVseprRow) return ZQNoVseprRow;
  // One pass in place of GetHvyValence, GetHvyDegree and GetTotalHCount, and a short one at the
  // centre of a star, which each of its neighbours looks at too.
  unsigned int heavyValence = 0;
  unsigned int heavyDegree = 0;
  unsigned int hydrogenCount = atom.GetImplicitHCount();
  for (const ZQBondBase* b = atom.NextBond(nullptr); b; b = atom.NextBond(b)) {
    if (b->GetNbr(&atom)->IsHydrogen()) {
      ++hydrogenCount;
    } else {
      if (++heavyDegree > maxHeavyDegree) return ZQNoVseprRow;
      heavyValence += b->GetOrder();
    }
  }
  if (heavyValence > maxHeavyValence || hydrogenCount > maxHydrogenCount) return ZQNoVseprRow;
  const int charge = atom.GetFormalCharge();
  if (charge < minCharge || charge > maxCharge) return ZQNoVseprRow;
  return rowOfValues[IndexOf(element, heavyValence, heavyDegree, hydrogenCount, charge)];
}

unsigned int ZQGetAromaticVseprRow(unsigned int row) { return aromaticOf[row]; }

unsigned int ZQGetStereoVseprRow(unsigned int row, unsigned int stereo) {
  const unsigned int first = stereoOf[row];
  return first == ZQNoVseprRow ? first : first + (stereo - 2);
}

}  // namespace ZQKorvex
