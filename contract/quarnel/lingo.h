#pragma once

/// LINGO: similarity of molecules by the substrings of their canonical SMILES (D. Vidal, M.
/// Thormann and M. Pons, J. Chem. Inf. Model. 45, 386-393, 2005).

#include <memory>
#include <string>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Creates Lingo texts. Stateless: any number of threads may use one object.
class ZQ_EXPORT ZQLingoMap {
 public:
  /// The canonical SMILES of a molecule (`ZQMolToCanonicalSmiles`) with every ring closure number,
  /// of one digit or more, written as 0 and every element symbol of two letters as one letter that
  /// isn't a symbol: L for Cl, R for Br, otherwise by position in the periodic table:
  ///
  ///     A  Li Na Rb Cs Fr        J  Al Ga In Tl Nh     E  Se Te Po Lv
  ///     Q  Be Mg Ca Sr Ba Ra     T  Si Ge Sn Pb Fl     X  At Ts
  ///     M  the d block           D  As Sb Bi Mc        G  noble gases
  ///     Z  the f block, La and Ac among them
  ///
  /// in lower case where the symbol is ("[se]" becomes "[e]"). Other digits are unchanged.
  void CreateString(std::string& text, const ZQMolBase& mol) const;
};

/// A text prepared for comparison with many others. Any number of threads may use one object.
class ZQ_EXPORT ZQLingoSim {
 public:
  /// Substrings of four characters, with multiplicity.
  class ZQ_EXPORT Impl {
   public:
    virtual ~Impl() = default;
    /// Counts the substrings of the own text alone, of `other` alone, and of both, as multisets. A
    /// text of fewer than four characters has none. Time is proportional to the length of `other`
    /// plus the number of distinct substrings of the own text. No memory is allocated once the
    /// thread has compared with a text of that length.
    virtual void Compare(const char* other, unsigned int* onlyA, unsigned int* onlyB,
                         unsigned int* both) const = 0;
  };

  /// `step` is the distance between the starts of consecutive substrings, of this text and of those
  /// compared with it: 1 for all substrings.
  ZQLingoSim(const char* text, unsigned int step);

  /// False for a text of fewer than four characters and for a step of 0; `GetImpl` then returns
  /// null.
  bool IsValid() const { return impl_ != nullptr; }
  const Impl* GetImpl() const { return impl_.get(); }

 private:
  std::unique_ptr<const Impl> impl_;
};

}  // namespace Quarnel
