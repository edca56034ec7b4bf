#include "platform/quarnel/readers/smiles_scanner_local.h"

#include <algorithm>
#include <utility>

#include "platform/quarnel/molecule/elements_local.h"

namespace Quarnel {

bool SmilesScanner::ReadNumber(std::uint32_t& number, std::uint32_t most, const char* expected) {
  const std::size_t start = pos_;
  std::uint64_t sum = 0;
  for (; IsDigit(Peek()) && sum <= most; ++pos_) {
    sum = sum * 10 + static_cast<std::uint64_t>(Peek() - '0');
  }
  if (pos_ == start || sum > most) {
    pos_ = start;
    return FailHere(expected);
  }
  number = static_cast<std::uint32_t>(sum);
  return true;
}

bool SmilesScanner::ReadRingNumber(std::uint32_t& number, const char* missing) {
  if (Peek() != '%') {
    number = static_cast<std::uint32_t>(text_[pos_++] - '0');
    return true;
  }
  ++pos_;
  if (Peek() == '(') {
    ++pos_;
    if (!IsDigit(Peek())) return FailHere(missing);
    if (!ReadNumber(number, 99999, "a ring closure number of up to five digits")) return false;
    if (Peek() != ')') return FailHere("\")\" behind the ring closure number");
    ++pos_;
    return true;
  }
  if (!IsDigit(Peek()) || !IsDigit(Peek(1))) return FailHere("two digits or \"(\" behind \"%\"");
  number = static_cast<std::uint32_t>((Peek() - '0') * 10 + (Peek(1) - '0'));
  pos_ += 2;
  return true;
}

bool SmilesScanner::ReadCharge(std::int32_t& charge, std::uint32_t most, const char* expected) {
  const char sign = Peek();
  const std::size_t start = pos_++;
  std::uint32_t size = 0;
  if (IsDigit(Peek())) {
    if (!ReadNumber(size, most, expected)) return false;
  } else {
    while (Peek() == sign) ++pos_;
    if (pos_ - start > most) {
      pos_ = start;
      return FailHere(expected);
    }
    size = static_cast<std::uint32_t>(pos_ - start);
  }
  charge = sign == '+' ? static_cast<std::int32_t>(size) : -static_cast<std::int32_t>(size);
  return true;
}

std::uint8_t SmilesScanner::PeekElement(std::size_t length) const {
  const char symbol[2] = {Bostrel::ToUpper(Peek()), Peek(1)};
  const std::uint8_t atomicNum = GetAtomicNumOf({symbol, length});
  return IsLower(Peek()) && !IsAromaticElement(atomicNum) ? 0 : atomicNum;
}

const SmilesScanner::ChiralityClass* SmilesScanner::PeekChiralityClass() const {
  static constexpr ChiralityClass classes[] = {
      {"TH", 2}, {"AL", 2}, {"SP", 3}, {"TB", 20}, {"OH", 30}};
  for (const ChiralityClass& kind : classes) {
    if (text_.substr(pos_, 2) == kind.name) return &kind;
  }
  return nullptr;
}

bool SmilesScanner::Fail(std::size_t column, std::string found, std::string expected) {
  *error_ = {column + 1, std::move(found), std::move(expected)};
  return false;
}

bool SmilesScanner::FailHere(std::string expected) {
  return Fail(pos_, QuoteStart(text_.substr(std::min(pos_, text_.size()))), std::move(expected));
}

bool SmilesScanner::FailExpectingMore(After after, const char* bareAtom) {
  switch (after) {
    case After::Start:
    case After::Dot:
      return FailHere("an atom");
    case After::Bond:
      return FailHere("an atom or a ring closure");
    case After::Opening:
      return FailHere("an atom or a bond of the branch");
    case After::GroupEnd:
      return FailHere("a dot or the end behind a component group");
    default:
      return FailHere(IsLower(Peek()) || IsUpper(Peek())
                          ? bareAtom
                          : "an atom, a bond, a branch, a ring closure or a dot");
  }
}

bool SmilesScanner::FailOpenBranch(std::size_t column) {
  return Fail(column, "a branch that isn't closed", "its \")\"");
}

bool SmilesScanner::FailRing(std::size_t column, std::uint32_t number, const std::string& fault,
                             std::string expected) {
  return Fail(column, "ring closure " + std::to_string(number) + fault, std::move(expected));
}

}  // namespace Quarnel
