#pragma once

/// What SMILES and SMARTS have in common: the text with a cursor, numbers, ring closure numbers,
/// charges, element symbols, and errors with their columns. A `Read...` that fails has filled the
/// error; a number that is missing or too large leaves the cursor where it should begin.

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
  /// What was read last of a text of atoms, bonds and branches.
  enum class After : std::uint8_t { Start, Atom, Bond, Opening, Closing, Dot, GroupEnd };

  /// A chirality class as in "@TH2", and how many of them there are.
  struct ChiralityClass {
    std::string_view name;
    std::uint32_t count;
  };

  void Begin(std::string_view text, ReaderError& error) {
    text_ = text;
    pos_ = 0;
    error_ = &error;
  }
  /// The character at the cursor or ahead of it; '\0' past the end.
  char Peek(std::size_t ahead = 0) const {
    return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0';
  }
  void SkipBlanks() {
    while (IsBlank(Peek())) ++pos_;
  }

  /// Reads a number of at least one digit, at most `most`.
  bool ReadNumber(std::uint32_t& number, std::uint32_t most, const char* expected);
  /// Reads the number of a ring closure: a digit, "%nn" or "%(n)" of up to five digits. `missing`
  /// is what is expected in place of "%()".
  bool ReadRingNumber(std::uint32_t& number, const char* missing);
  /// Reads a sign with a number behind it, or as many signs. A number that is too large is an error
  /// at its first digit, too many signs at the first of them.
  bool ReadCharge(std::int32_t& charge, std::uint32_t most, const char* expected);
  /// The element whose symbol of one or two letters, in either case, is at the cursor; 0 if none,
  /// or none that SMILES has a lower-case symbol for.
  std::uint8_t PeekElement(std::size_t length) const;
  /// The class whose name is at the cursor, or null.
  const ChiralityClass* PeekChiralityClass() const;

  // All return false.
  bool Fail(std::size_t column, std::string found, std::string expected);
  bool FailHere(std::string expected);
  /// Reports what may follow `after`, `bareAtom` being the words for an atom where a letter is
  /// that begins none.
  bool FailExpectingMore(After after, const char* bareAtom);
  bool FailOpenBranch(std::size_t column);
  /// Reports what is wrong with a ring closure, such as " left open".
  bool FailRing(std::size_t column, std::uint32_t number, const std::string& fault,
                std::string expected);

  std::string_view text_;
  std::size_t pos_ = 0;
  ReaderError* error_ = nullptr;
};

}  // namespace Quarnel
