#pragma once

/// The one table behind `VSEPRAroType` and `VSEPRAroStereoType`.

#include <cstdint>
#include <string>

#include "contract/bostrel/functions.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

struct ZQVseprRow {
  const char* name = "";  // without ":R" or ":S"
  std::uint8_t atomicNumber = 0;
  std::int8_t charge = 0;
  std::uint8_t heavyDegree = 0;
  std::uint8_t heavyValence = 0;
  std::uint8_t hydrogenCount = 0;
  std::uint8_t lonePairs = 0;
  bool isAromatic = false;
  std::uint8_t stereo = 0;
};

/// One of the two systems: a name for messages, and the number of rows at the table's beginning
/// that belong to it.
struct ZQVseprTypes {
  const char* name;
  unsigned int numRows;

  /// The row of a type; for one beyond the last row, reports an error that names the function, and
  /// returns a row of zeros.
  const ZQVseprRow& GetRow(const char* function, unsigned int type) const;
  std::string GetName(unsigned int type) const;
  unsigned int GetType(const std::string& rowName) const;
  /// A predicate for the values of the row, but not its stereo. For a type beyond the last row,
  /// reports the errors of all columns that it reads, and returns null.
  ZQUnaryPredicate<ZQAtomBase>* CreatePredicate(unsigned int type) const;
};

/// No row.
inline constexpr unsigned int ZQNoVseprRow = 255;

/// The row that isn't aromatic, R or S, of an atom's other values; or `ZQNoVseprRow`.
unsigned int ZQFindVseprRow(const ZQAtomBase& atom);
/// The aromatic row, and the R or S row (stereo 2 or 3), that has the other values of such a row;
/// or `ZQNoVseprRow`.
unsigned int ZQGetAromaticVseprRow(unsigned int row);
unsigned int ZQGetStereoVseprRow(unsigned int row, unsigned int stereo);

}  // namespace ZQKorvex
