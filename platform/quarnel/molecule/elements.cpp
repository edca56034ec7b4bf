#include "platform/quarnel/molecule/elements_local.h"

#include <algorithm>
#include <array>
#include <string>

#include "contract/bostrel/characters_local.h"
#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/valence_electrons_local.h"

namespace Quarnel {

namespace {

constexpr unsigned int numElements = 119;  // the dummy atom included

constexpr std::array<std::string_view, numElements> symbols{
    "*",  "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si",
    "P",  "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu",
    "Zn", "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru",
    "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr",
    "Nd", "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf", "Ta", "W",
    "Re", "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac",
    "Th", "Pa", "U",  "Np", "Pu", "Am", "Cm", "Bk", "Cf", "Es", "Fm", "Md", "No", "Lr", "Rf",
    "Db", "Sg", "Bh", "Hs", "Mt", "Ds", "Rg", "Cn", "Nh", "Fl", "Mc", "Lv", "Ts", "Og",
};

constexpr std::array<std::uint16_t, numElements> referenceMasses{
    0,   1,   4,   7,   9,   11,  12,  14,  16,  19,  20,  23,  24,  27,  28,  31,  32,
    35,  40,  39,  40,  45,  48,  51,  52,  55,  56,  59,  59,  64,  65,  70,  73,  75,
    79,  80,  84,  85,  88,  89,  91,  93,  96,  98,  101, 103, 106, 108, 112, 115, 119,
    122, 128, 127, 131, 133, 137, 139, 140, 141, 144, 145, 150, 152, 157, 159, 163, 165,
    167, 169, 173, 175, 178, 181, 184, 186, 190, 192, 195, 197, 201, 204, 207, 209, 209,
    210, 222, 223, 226, 227, 232, 231, 238, 237, 244, 243, 247, 247, 251, 252, 257, 258,
    259, 262, 267, 268, 269, 270, 270, 278, 281, 282, 285, 286, 289, 290, 293, 294, 294,
};

// Index of a symbol by its letters: 26 capitals times 27, the last for no second letter.
constexpr std::size_t SymbolSlot(char first, char second) {
  return static_cast<std::size_t>(first - 'A') * 27 +
         static_cast<std::size_t>(second == 0 ? 26 : second - 'a');
}

using SymbolTable = std::array<std::uint8_t, std::size_t{26} * 27>;

constexpr SymbolTable MakeSymbolTable() {
  SymbolTable table{};
  for (std::size_t z = 1; z < numElements; ++z) {
    table[SymbolSlot(symbols[z][0], symbols[z].size() == 2 ? symbols[z][1] : char{0})] =
        static_cast<std::uint8_t>(z);
  }
  return table;
}

constexpr SymbolTable symbolTable = MakeSymbolTable();

// The elements that may have implicit hydrogens; metals don't.
constexpr bool TakesHydrogens(unsigned int atomicNum) {
  constexpr std::array<unsigned int, 16> elements{5,  6,  14, 32, 7,  15, 33, 8,
                                                  16, 34, 52, 9,  17, 35, 53, 85};
  return std::ranges::find(elements, atomicNum) != elements.end();
}

}  // namespace

const char* ZQGetAtomicSymbol(unsigned int atomicNum) {
  return atomicNum < numElements ? symbols[atomicNum].data() : "?";
}

unsigned int ZQGetAtomicNum(const std::string& symbol) { return GetAtomicNumOf(symbol); }

std::uint8_t GetAtomicNumOf(std::string_view symbol) noexcept {
  if (symbol.empty() || symbol.size() > 2 || !Bostrel::IsUpper(symbol[0])) return 0;
  if (symbol.size() == 1) return symbolTable[SymbolSlot(symbol[0], 0)];
  if (!Bostrel::IsLower(symbol[1])) return 0;
  return symbolTable[SymbolSlot(symbol[0], symbol[1])];
}

unsigned int GetReferenceMass(unsigned int atomicNum) noexcept {
  return atomicNum < numElements ? referenceMasses[atomicNum] : 0;
}

// A charged atom has the valences of the isoelectronic neutral one: N+ bonds like C, O- like F, B-
// like C. Only elements from the third period on exceed the octet, and neutral nitrogen, whose
// nitro group is often drawn with two double bonds.
unsigned int ZQDefaultHCount(unsigned int atomicNum, int charge, unsigned int bondOrderSum) {
  if (atomicNum == 1) return charge == 0 && bondOrderSum == 0 ? 1 : 0;
  if (!TakesHydrogens(atomicNum)) return 0;
  const auto own = static_cast<int>(GetValenceElectrons(atomicNum));
  if (charge <= own - 8 || charge >= own) return 0;
  const int electrons = own - charge;
  const bool expands =
      (electrons == 5 || electrons == 6) && (atomicNum > 10 || (atomicNum == 7 && charge == 0));
  unsigned int valence = static_cast<unsigned int>(electrons <= 4 ? electrons : 8 - electrons);
  const unsigned int highest = expands ? static_cast<unsigned int>(electrons) : valence;
  while (valence < bondOrderSum && valence < highest) valence += 2;
  return valence > bondOrderSum ? valence - bondOrderSum : 0;
}

unsigned int GetAromaticHCount(unsigned int atomicNum, int charge, unsigned int sigmaSum,
                               bool hasMultiple) noexcept {
  // A charged carbon contributes its lone pair or its empty orbital to the ring, no bond.
  const bool bonds = !hasMultiple && !(atomicNum == 6 && charge != 0);
  const unsigned int lowest = ZQDefaultHCount(atomicNum, charge, 0);
  const unsigned int used = sigmaSum + (bonds ? 1 : 0);
  return lowest > used ? lowest - used : 0;
}

}  // namespace Quarnel
