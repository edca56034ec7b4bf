#include "korvex/maccs.h"

#include <algorithm>
#include <array>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fpkinds_local.h"
#include "korvex/maccs_local.h"

namespace ZQKorvex {

namespace {

// Key by atomic number, 0 if none.
constexpr std::array<std::uint8_t, zqMACCSElements> atomicNumBit = [] {
  std::array<std::uint8_t, zqMACCSElements> keys{};
  const auto set = [&keys](std::uint8_t key, std::initializer_list<std::uint8_t> atomicNums) {
    for (const std::uint8_t atomicNum : atomicNums) keys[atomicNum] = key;
  };
  set(2, {104, 105, 106, 107, 108, 109, 110, 111, 112});
  set(3, {32, 33, 34, 50, 51, 52, 82, 83, 84});
  set(4, {90, 91, 92, 93, 94, 95, 96, 97, 98, 99, 100, 101, 102, 103});
  set(5, {21, 22, 39, 40, 57, 72, 89});
  set(6, {58, 59, 60, 61, 62, 63, 64, 65, 66, 67, 68, 69, 70, 71});
  set(7, {23, 24, 25, 41, 42, 43, 73, 74, 75});
  set(9, {26, 27, 28, 44, 45, 46, 76, 77, 78});
  set(10, {4, 12, 20, 38, 56, 88});
  set(12, {29, 30, 47, 48, 79, 80});
  set(18, {5, 13, 31, 49, 81});
  set(20, {14});
  set(27, {53});
  set(29, {15});
  set(35, {1, 3, 11, 19, 37, 55, 87});
  set(42, {9});
  set(46, {35});
  set(88, {16});
  set(103, {17});
  set(161, {7});
  set(164, {8});
  return keys;
}();

struct Row {
  const char* smarts;
  std::uint32_t number;
  std::uint32_t secondNumber = 0;
};

// Imprecise and duplicate texts are the public set's own. Key 44 is left out on purpose: it has no
// definition.
constexpr Row rows[] = {
    {"[!0*]", 1},
    {"[!#6;!#1]~1~*~*~*~1", 8},
    {"*~1~*~*~*~1", 11},
    {"[#8]~[#7](~[#6])~[#6]", 13},
    {"S-S", 14},
    {"[#8]~[#6](~[#8])~[#8]", 15},
    {"[!#6;!#1]~1~*~*~1", 16},
    {"[#6]#[#6]", 17},
    {"*~1~*~*~*~*~*~*~1", 19},
    {"[#6]=[#6](~[!#6;!#1])~[!#6;!#1]", 21},
    {"*~1~*~*~1", 22},
    {"[#7]~[#6](~[#8])~[#8]", 23},
    {"[#7]-[#8]", 24},
    {"[#7]~[#6](~[#7])~[#7]", 25},
    {"[#6]@=[#6](@*)@*", 26},
    {"[!#6;!#1]~[CH2]~[!#6,!#1]", 28},
    {"[#6]~[!#6](~[#6])(~[#6])~*", 30},
    {"[!#6;!#1]~[#9,#17,#35,#53]", 31},
    {"[#6]~[#16]~[#7]", 32},
    {"[#7]~[#16]", 33},
    {"[CH2]=*", 34},
    {"[#16]@*", 36},
    {"[#7]~[#6](~[#8])~[#7]", 37},
    {"[#7]~[#6](~[#6])~[#7]", 38},
    {"[#8]~[#16](~[#8])~[#8]", 39},
    {"[#16]-[#8]", 40},
    {"[#6]#[#7]", 41},
    {"[!#6;!#1H]~*~[!#6;!#1H]", 43},
    {"[#6]=[#6]~[#7]", 45},
    {"[#16]~*~[#7]", 47},
    {"[#8]~[!#6;!#1](~[#8])~[#8]", 48},
    {"[!+0]", 49},
    {"[#6]=[#6](~[#6])~[#6]", 50},
    {"[#6]~[#16]~[#8]", 51},
    {"[#7]~[#7]", 52},
    {"[!#6;!#1H]~*~*~*~[!#6;!#1H]", 53},
    {"[!#6;!#1H]~*~*~[!#6;!#1H]", 54},
    {"[#8]~[#16]~[#8]", 55},
    {"[#8]~[#7](~[#8])~[#6]", 56},
    {"[#8]@*", 57},
    {"[!#6;!#1]~[#16]~[!#6;!#1]", 58},
    {"[#16]!:*:*", 59},
    {"[#16]=[#8]", 60},
    {"[#16X3]", 61},
    {"*@*!@*@*", 62},
    {"[#7]=[#8]", 63},
    {"[#16]!@*@*", 64},
    {"[#7]:[#6]", 65},
    {"[#6]~[#6](~[#6])(~[#6])~*", 66},
    {"[#16]~[!#6;!#1]", 67},
    {"[!#6;!#1H]~[!#6;!#1H]", 68},
    {"[!#6;!#1]~[!#6;!#1H]", 69},
    {"[!#6;!#1]~[#7]~[!#6;!#1]", 70},
    {"[#7]~[#8]", 71},
    {"[#8]~*~*~[#8]", 72},
    {"[#16]=*", 73},
    {"[#6H3]~*~[#6H3]", 74},
    {"[#7](@*)!@*", 75},
    {"[#6]=[#6](~*)~*", 76},
    {"[#7]~*~[#7]", 77},
    {"[#7]=[#6]", 78},
    {"[#7]~*~*~[#7]", 79},
    {"[#7]~*~*~*~[#7]", 80},
    {"[#16]~*(~*)~*", 81},
    {"[#6H2](~[!#6;!#1H])~*", 82},
    {"[!#6;!#1]~1~*~*~*~*~1", 83},
    {"[#7H2]", 84},
    {"[#7](~[#6])(~[#6])~[#6]", 85},
    {"[#6H2]~[!#6;!#1]~[#6H2]", 86},
    {"[#7,#17,#35,#53]!@*@*", 87},
    {"[#8]~*~*~*~[#8]", 89},
    {"[#6H2](~*)~*~*~[!#6;!#1H]", 90},
    {"[#6H2](~*)~*~*~*~[!#6;!#1H]", 91},
    {"[#8]~[#6](~[#7])~[#6]", 92},
    {"[#6H3]~[!#6;!#1]", 93},
    {"[#7]~[!#6;!#1]", 94},
    {"[#7]~*~*~[#8]", 95},
    {"*~1~*~*~*~*~1", 96},
    {"[#7]~*~*~*~[#8]", 97},
    {"[!#6;!#1]~1~*~*~*~*~*~1", 98},
    {"[#6]=[#6]", 99},
    {"[#7]~[#6H2]~*", 100},
    {"*@*@*@*@*@*@*@*", 101},
    {"[#8]~[!#6;!#1]", 102},
    {"[#6H2](~*)~*~[!#6;!#1H]", 104},
    {"*(@*)(@*)@*", 105},
    {"*(~[!#6;!#1])(~[!#6;!#1])~[!#6;!#1]", 106},
    {"[#9,#17,#35,#53]~*(~*)~*", 107},
    {"[#6H3]~*~*~*~[#6H2]~*", 108},
    {"[#8]~[#6H2]~*", 109},
    {"[#7]~[#6]~[#8]", 110},
    {"[#7]~*~[#6H2]~*", 111},
    {"[X4]", 112},
    {"[#8]!:*:*", 113},
    {"[#6H3]~[#6H2]~*", 114},
    {"[#6H3]~*~[#6H2]~*", 115},
    {"[#6H3]~*~*~[#6H2]~*", 116},
    {"[#7]~*~[#8]", 117},
    {"[#7]=*", 119},
    {"[#7]@*", 121},
    {"[#7X3]", 122},
    {"[#8]~[#6]~[#8]", 123},
    {"[!#6;!#1]~[!#6;!#1]", 124, 130},
    {"[#8](@*)@*", 126},
    {"*~[#6H2]~*~*~*~[#6H2]~*", 128},
    {"*~[#6H2]~*~*~[#6H2]~*", 129},
    {"[!#6;!#1H].[!#6;!#1H]", 131},
    {"[#8]~*~[#6H2]~*", 132},
    {"[#7]!@*@*", 133},
    {"[#9,#17,#35,#53]", 134},
    {"[#7]!:*:*", 135},
    {"[#8]=*", 136},
    {"[#7,#8,#14,#16]@*", 137, 120},
    {"[#8H]", 139},
    {"[#8].[#8].[#8].[#8]", 140},
    {"[#6H3].[#6H3].[#6H3]", 141},
    {"[#7].[#7]", 142},
    {"[#8]!@*@*", 143, 127},
    {"*!:*:*!:*", 144},
    {"[#8].[#8]", 146},
    {"[#6H2](~*)~*~[#6H2]", 147, 118},
    {"[!#6;!#1X3]", 148},
    {"*!@*@*!@*", 150},
    {"[#7H]", 151},
    {"[#8](~[#6])(~[#6])~[#6]", 152},
    {"[#6H2](~[!#6;!#1])~*", 153, 138},
    {"[#6]=[#8]", 154},
    {"[#6H2](!@*)!@*", 155},
    {"[#7X3]", 156},
    {"[#8]-[#6]", 157},
    {"[#7]-[#6]", 158},
    {"[#8].[#8]", 159},
    {"[#6H3]", 160, 149},
    {"*~1~*~*~*~*~*~1", 163, 145},
    {"[!R0]", 165},
};

void SetKey(ZQFingerPrint& fp, unsigned int key) { fp.SetBitOn(key - 1); }

void SetElementKeys(ZQFingerPrint& fp, const ZQMolBase& mol) {
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    const unsigned int key = atom ? ZQMACCSElementKey(atom->GetAtomicNum()) : 0;
    if (key != 0) SetKey(fp, key);
  }
}

void SetSmartsKeys(ZQFingerPrint& fp, const ZQMolBase& mol) {
  const ZQSubSearchTarget target(mol);
  for (const MACCSKey& key : MACCS166Keys::Get()) {
    if (key.secondNumber != 0) {
      const std::size_t matches = key.query.CountMatches(target, true, 2);
      if (matches >= 1) SetKey(fp, key.number);
      if (matches >= 2) SetKey(fp, key.secondNumber);
    } else if (key.equalNumber != 0 ? fp.IsBitOn(key.equalNumber - 1)
                                    : key.query.SingleMatch(target)) {
      SetKey(fp, key.number);
    }
  }
}

bool Fill(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
          const ZQFPTypeValues& values) {
  fp.SetSize(values.numbits);
  fp.ClearBits();
  if (ZQIsPreparedForFingerprinting(mol, kind.number)) {
    ZQMakeMACCS166SetBits(fp, mol);
    return true;
  }
  const ZQGraphMol copy = ZQPreparedCopy(mol, kind, values);
  if (copy.NumAtoms() != 0) ZQMakeMACCS166SetBits(fp, copy);
  return true;
}

}  // namespace

unsigned int ZQMACCSElementKey(unsigned int atomicNum) {
  return atomicNum < atomicNumBit.size() ? atomicNumBit[atomicNum] : 0;
}

MACCS166Keys::MACCS166Keys() {
  reserve(std::size(rows));
  for (const Row& row : rows) {
    const auto equal = std::find_if(
        begin(), end(), [&row](const MACCSKey& key) { return key.smarts == row.smarts; });
    const std::uint32_t equalNumber = equal == end() ? 0 : equal->number;
    emplace_back(row.smarts, row.number, row.secondNumber).equalNumber = equalNumber;
  }
}

const MACCS166Keys& MACCS166Keys::Get() {
  static const MACCS166Keys keys;
  return keys;
}

void ZQMakeMACCS166SetBits(ZQFingerPrint& fp, const ZQMolBase& mol) {
  SetElementKeys(fp, mol);
  SetSmartsKeys(fp, mol);
  std::vector<unsigned int> parts;
  if (ZQDetermineComponents(mol, parts) > 1) SetKey(fp, 166);
  const unsigned int systems = ZQDetermineAromaticRingSystems(mol, parts);
  if (systems >= 1) SetKey(fp, 162);
  if (systems > 1) SetKey(fp, 125);
}

bool ZQMakeMACCS166FP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  const ZQFPKind& kind = ZQGetFPKind(ZQFPType::MACCS166);
  return ZQMakeFP(fp, mol, kind, kind.defaults, Fill);
}

}  // namespace ZQKorvex
