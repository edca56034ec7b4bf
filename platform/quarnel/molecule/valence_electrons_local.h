#pragma once

#include <algorithm>
#include <array>

namespace Quarnel {

/// Valence electrons of an s or p block element; 0 for the d and f blocks and a dummy atom.
constexpr unsigned int GetValenceElectrons(unsigned int element) {
  constexpr std::array<unsigned int, 8> nobleGases{0, 2, 10, 18, 36, 54, 86, 118};
  if (element == 0 || element > nobleGases.back()) return 0;
  const auto* next = std::ranges::lower_bound(nobleGases, element);
  const unsigned int fromStart = element - next[-1];
  if (fromStart <= 2) return fromStart;
  const unsigned int toEnd = *next - element;
  return toEnd <= 5 ? 8 - toEnd : 0;
}

}  // namespace Quarnel
