#pragma once

/// The common parts of SMILES and SMARTS: the text with a cursor, numbers, ring closure numbers,
/// charges, element symbols, and errors with their columns. A failing `Read...` fills the error; if
/// a number is missing or too large, the cursor remains at its expected start.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "contract/bostrel/characters_local.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

using Bostrel::IsBlank;
using Bostrel::IsDigit;
using Bostrel::IsLower;
using Bostrel::IsUpper;

class SmilesScanner {
 protected:
  /// The item read last in a text of atoms, bonds and branches.
  enum class After : std::uint8_t { Start, Atom, Bond, Opening, Closing, Dot, GroupEnd };

  /// A chirality class as in "@TH2", and the number of its members.
  struct ChiralityClass {
    std::string_view name;
    std::uint32_t count;
  };

  void Begin(std::string_view text, ReaderError& error) {
    text_ = text;
    pos_ = 0;
    error_ = &error;
  }
  /// The character `ahead` bytes after the cursor; '\0' past the end.
  char Peek(std::size_t ahead = 0) const {
    return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0';
  }
  void SkipBlanks() {
    while (IsBlank(Peek())) ++pos_;
  }

  /// Reads a number of at least one digit and with a value of at most `most`.
  bool ReadNumber(std::uint32_t& number, std::uint32_t most, const char* expected);
  /// Reads the number of a ring closure: a digit, "%nn" or "%(n)" of up to five digits. `missing`
  /// is the expected text for the error at "%()".
  bool ReadRingNumber(std::uint32_t& number, const char* missing);
  /// Reads a sign followed by a number, or repeated signs. A number that is too large is an error
  /// at its first digit, too many signs at the first of them.
  bool ReadCharge(std::int32_t& charge, std::uint32_t most, const char* expected);
  /// The element whose symbol of one or two letters, in either case, is at the cursor; 0 if there
  /// is none or SMILES has no lower-case symbol for it.
  std::uint8_t PeekElement(std::size_t length) const;
  /// The class whose name is at the cursor, or null.
  const ChiralityClass* PeekChiralityClass() const;

  // These return false.
  bool Fail(std::size_t column, std::string found, std::string expected);
  bool FailHere(std::string expected);
  /// Reports the items that may follow `after`; `bareAtom` is the text for an atom if the letter at
  /// the cursor begins none.
  bool FailExpectingMore(After after, const char* bareAtom);
  bool FailOpenBranch(std::size_t column);
  /// Reports an error of a ring closure, such as " left open".
  bool FailRing(std::size_t column, std::uint32_t number, const std::string& fault,
                std::string expected);

  std::string_view text_;
  std::size_t pos_ = 0;
  ReaderError* error_ = nullptr;
};

}  // namespace Quarnel
