#pragma once

#include <cstdint>
#include <string_view>

namespace Quarnel {

/// `ZQGetAtomicNum` of a `string_view`, for readers.
std::uint8_t GetAtomicNumOf(std::string_view symbol) noexcept;

/// Whether SMILES has a lower-case symbol for the element.
constexpr bool IsAromaticElement(unsigned int atomicNum) {
  switch (atomicNum) {
    case 5:
    case 6:
    case 7:
    case 8:
    case 14:
    case 15:
    case 16:
    case 33:
    case 34:
    case 52:
      return true;
    default:
      return false;
  }
}

/// Mass number to which a mass difference in a molfile is added: the standard atomic weight,
/// rounded. 0 for a dummy atom.
unsigned int GetReferenceMass(unsigned int atomicNum) noexcept;

/// Implicit hydrogens of an atom that is written as aromatic. `sigmaSum` counts an aromatic bond as
/// 1; `hasMultiple`: one of the other bonds is double or triple, which leaves no electron for the
/// ring.
unsigned int GetAromaticHCount(unsigned int atomicNum, int charge, unsigned int sigmaSum,
                               bool hasMultiple) noexcept;

}  // namespace Quarnel
