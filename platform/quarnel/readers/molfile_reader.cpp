#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "contract/bostrel/characters_local.h"
#include "contract/quarnel/coordinates.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/molecule/adjacency_local.h"
#include "platform/quarnel/molecule/elements_local.h"
#include "platform/quarnel/perception/stereo_local.h"
#include "platform/quarnel/readers/file_format_local.h"

// Both versions of the format are read into the same flat arrays; interpreting the numbers comes
// after that, shared by both.

namespace Quarnel {

using Bostrel::Trimmed;

namespace {

constexpr std::uint32_t none = ~0U;
constexpr int maxMapIdx = 999999999;  // as for the atom classes of a SMILES

using Point = ZQPoint;

Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point operator*(const Point& a, double factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
double Dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point Cross(const Point& a, const Point& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Point Normalized(const Point& a) {
  const double length = std::sqrt(Dot(a, a));
  return length > 0 ? a * (1 / length) : a;
}

// Reads an integer with optional blanks around it; a blank field counts as 0.
bool ToInt(std::string_view text, int& value) {
  text = Trimmed(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  value = 0;
  if (text.empty()) return true;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
  return status == std::errc() && end == text.data() + text.size();
}

bool ToReal(std::string_view text, double& value) {
  text = Trimmed(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  value = 0;
  if (text.empty()) return true;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
  return status == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

// Removes the first word from `text` and returns it. Parentheses, brackets and quotes group words.
std::string_view TakeWord(std::string_view& text) {
  text = Trimmed(text);
  std::size_t length = 0;
  int depth = 0;
  bool quoted = false;
  for (; length < text.size(); ++length) {
    const char c = text[length];
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '(' || c == '[') ++depth;
    if (c == ')' || c == ']') --depth;
    if ((c == ' ' || c == '\t') && depth <= 0) break;
  }
  const std::string_view word = text.substr(0, length);
  text.remove_prefix(length);
  return word;
}

// The orientation of a triangle in the plane: the sine of its smallest angle, positive for
// counterclockwise.
double TurnOf(const Point& a, const Point& b, const Point& c) {
  const double ab = std::hypot(b.x - a.x, b.y - a.y);
  const double ac = std::hypot(c.x - a.x, c.y - a.y);
  const double bc = std::hypot(c.x - b.x, c.y - b.y);
  return Cross(b - a, c - a).z / std::max({ab * ac, ab * bc, ac * bc});
}

// The configuration of four points in the plane with heights from wedges. Either the segments of
// two pairs cross, or one point is inside the triangle of the other three (J. Radon, Math. Ann. 83,
// 113, 1921). Wedges on points of one side agree if they have the same direction, wedges on both
// sides if they have opposite directions: no point of the lower side may be above one of the higher
// side.
ZQAtomStereo GetWedgedStereo(const std::array<Point, 4>& around) {
  constexpr double leastTurn = 3e-5;  // less is rounding
  std::array<double, 2> lowest{2, 2};
  std::array<double, 2> highest{-2, -2};
  for (std::size_t i = 0; i < 4; ++i) {
    const double turn =
        TurnOf(around[i == 0 ? 1 : 0], around[i <= 1 ? 2 : 1], around[i == 3 ? 2 : 3]);
    if (!(std::abs(turn) > leastTurn)) continue;  // the other three are collinear
    const std::size_t side = (turn > 0) == (i % 2 == 0) ? 0 : 1;
    lowest[side] = std::min(lowest[side], around[i].z);
    highest[side] = std::max(highest[side], around[i].z);
  }
  if (lowest[0] >= highest[1] && highest[0] > lowest[1]) return ZQAtomStereo::CounterClockwise;
  if (lowest[1] >= highest[0] && highest[1] > lowest[0]) return ZQAtomStereo::Clockwise;
  return ZQAtomStereo::None;
}

class MolfileParser {
 public:
  bool Read(ZQMolBase& mol, std::string_view text, ReaderError& error);

 private:
  enum class Wedge : std::uint8_t { None, Up, Down, Either };  // as seen from the begin atom

  struct Atom {
    Point at;
    std::uint32_t line = 0;
    std::uint32_t firstEdge = 0;
    std::uint32_t degree = 0;
    unsigned int atomicNum = 0;
    int charge = 0;
    int isotope = 0;
    int mapIdx = 0;
    int radicalElectrons = 0;
    int valence = 0;  // 0: not specified, -1: zero
    int parity = 0;   // 1 odd, 2 even
    unsigned int hCount = 0;
    unsigned int bondSum = 0;  // an aromatic bond counts as 1
    unsigned int numWithoutOrder = 0;
    unsigned int doubles = 0;
    bool isotopeFromDifference = false;
    bool aromatic = false;
    bool multiple = false;
    ZQAtomStereo stereo = ZQAtomStereo::None;
  };
  struct Bond {
    std::uint32_t bgn = 0;
    std::uint32_t end = 0;
    std::uint32_t line = 0;
    unsigned int order = 1;
    Wedge wedge = Wedge::None;
    bool aromatic = false;
    bool crossed = false;  // a double bond drawn as cis or trans
    ZQBondStereo stereo = ZQBondStereo::None;
  };

  bool NextLine();
  bool ReadText();
  bool ReadV2000(std::string_view counts);
  bool ReadV2000Atom();
  bool ReadV2000Bond();
  bool ReadV2000Properties();
  bool ReadPairs(std::string_view kind);
  bool ReadV3000();
  bool NextV3000(std::string_view& content);
  bool ReadV3000Block(std::string_view name, int count);
  bool ReadV3000Atom(std::string_view content);
  bool ReadV3000Bond(std::string_view content);
  bool SetSymbol(Atom& atom, std::string_view symbol);
  bool SetBondType(Bond& bond, int type);
  bool SetRadical(Atom& atom, int radical);
  bool SetCharge(Atom& atom, int charge);
  bool SetIsotope(Atom& atom, int massNumber);
  bool AddBond(Bond bond);
  void CountHydrogens();
  void SetStereo();
  bool HasTwins(std::uint32_t atom, std::uint32_t without) const;
  bool MayBeCentre(std::uint32_t atom) const;
  DrawnAtom DrawingOf(std::uint32_t idx) const {
    const Atom& atom = atoms_[idx];
    return {atom.atomicNum, atom.degree, atom.hCount, atom.doubles, atom.multiple, atom.aromatic};
  }
  ZQAtomStereo GetDrawnStereo(std::uint32_t atom) const;
  ZQAtomStereo GetParityStereo(std::uint32_t atom) const;
  ZQBondStereo GetBondStereo(std::uint32_t bond) const;
  bool Fill(ZQMolBase& mol);

  std::string_view Field(std::size_t start, std::size_t length) const {
    return start < line_.size() ? line_.substr(start, length) : std::string_view();
  }
  std::span<const Edge> Edges(std::uint32_t atom) const { return EdgesOf(atoms_[atom], edges_); }
  bool FailAt(std::uint32_t line, std::string found, std::string expected) {
    error_->place = line;
    error_->found = std::move(found);
    error_->expected = std::move(expected);
    return false;
  }
  bool Fail(std::string_view found, const char* expected) {
    return FailAt(lineNumber_, atEnd_ ? "the end" : QuoteStart(Trimmed(found)), expected);
  }

  std::string_view rest_;
  std::string_view line_;
  std::uint32_t lineNumber_ = 0;
  bool atEnd_ = false;
  ReaderError* error_ = nullptr;
  std::string_view title_;
  std::string joined_;  // a V3000 line joined from several
  std::vector<Atom> atoms_;
  std::vector<Bond> bonds_;
  std::vector<Edge> edges_;
  std::unordered_map<int, std::uint32_t> numbers_;  // of V3000 atoms
  bool sawCharges_ = false;
  bool sawIsotopes_ = false;
  bool hasDepth_ = false;  // three dimensions
  bool isDrawn_ = false;   // two or three
};

bool MolfileParser::NextLine() {
  ++lineNumber_;
  if (rest_.empty()) {
    line_ = {};
    atEnd_ = true;
    return false;
  }
  const std::size_t end = std::min(rest_.find('\n'), rest_.size());
  line_ = rest_.substr(0, end);
  rest_.remove_prefix(std::min(end + 1, rest_.size()));
  if (!line_.empty() && line_.back() == '\r') line_.remove_suffix(1);
  return true;
}

bool MolfileParser::Read(ZQMolBase& mol, std::string_view text, ReaderError& error) {
  rest_ = text;
  error_ = &error;
  if (!ReadText()) return false;
  LinkBonds(atoms_, bonds_, edges_);
  CountHydrogens();
  SetStereo();
  return Fill(mol);
}

bool MolfileParser::ReadText() {
  NextLine();
  title_ = Trimmed(line_);
  NextLine();
  NextLine();
  if (!NextLine()) return Fail({}, "the counts line, the fourth of a molfile");
  const std::string_view counts = line_;
  return counts.find("V3000") != std::string_view::npos ? ReadV3000() : ReadV2000(counts);
}

bool MolfileParser::ReadV2000(std::string_view counts) {
  int numAtoms = 0;
  int numBonds = 0;
  if (Trimmed(Field(0, 3)).empty() || !ToInt(Field(0, 3), numAtoms) ||
      !ToInt(Field(3, 3), numBonds) || numAtoms < 0 || numBonds < 0) {
    return Fail(counts, "the numbers of atoms and bonds, three columns each");
  }
  for (int i = 0; i < numAtoms; ++i) {
    if (!NextLine() || !ReadV2000Atom()) {
      return atEnd_ ? Fail({}, "an atom, as the counts line promises more") : false;
    }
  }
  for (int i = 0; i < numBonds; ++i) {
    if (!NextLine() || !ReadV2000Bond()) {
      return atEnd_ ? Fail({}, "a bond, as the counts line promises more") : false;
    }
  }
  return ReadV2000Properties();
}

bool MolfileParser::ReadV2000Atom() {
  Atom atom;
  int charge = 0;
  int massDifference = 0;
  int valence = 0;
  if (line_.size() < 32 || !ToReal(Field(0, 10), atom.at.x) || !ToReal(Field(10, 10), atom.at.y) ||
      !ToReal(Field(20, 10), atom.at.z)) {
    return Fail(line_, "an atom: three coordinates of ten columns, a blank and a symbol");
  }
  atom.line = lineNumber_;
  if (!SetSymbol(atom, Trimmed(Field(31, 3)))) return false;
  if (!ToInt(Field(34, 2), massDifference) || !ToInt(Field(39, 3), atom.parity) ||
      !ToInt(Field(60, 3), atom.mapIdx) || atom.mapIdx < 0) {
    return Fail(Field(34, 29), "whole numbers behind the symbol of an atom");
  }
  if (!ToInt(Field(36, 3), charge) || charge < 0 || charge > 7) {
    return Fail(Field(36, 3), "a charge code from 0 to 7");
  }
  if (!ToInt(Field(48, 3), valence) || valence < 0 || valence > 15) {
    return Fail(Field(48, 3), "a valence from 0 to 15");
  }
  if (massDifference != 0) {
    atom.isotopeFromDifference = true;
    atom.isotope = std::max(0, static_cast<int>(GetReferenceMass(atom.atomicNum)) + massDifference);
  }
  if (charge == 4) {
    atom.radicalElectrons = 1;
  } else if (charge != 0) {
    atom.charge = 4 - charge;
  }
  atom.valence = valence == 15 ? -1 : valence;
  atoms_.push_back(atom);
  return true;
}

bool MolfileParser::ReadV2000Bond() {
  Bond bond;
  int type = 0;
  int stereo = 0;
  int bgn = 0;
  int end = 0;
  if (!ToInt(Field(0, 3), bgn) || !ToInt(Field(3, 3), end) || !ToInt(Field(6, 3), type) ||
      !ToInt(Field(9, 3), stereo)) {
    return Fail(line_, "a bond: two atom numbers, type and stereo, three columns each");
  }
  const int size = static_cast<int>(atoms_.size());
  if (bgn < 1 || bgn > size || end < 1 || end > size) {
    return Fail(Field(0, 6), "two numbers of atoms of this molfile");
  }
  bond.bgn = static_cast<std::uint32_t>(bgn - 1);
  bond.end = static_cast<std::uint32_t>(end - 1);
  if (!SetBondType(bond, type)) return false;
  bond.crossed = bond.order == 2 && stereo == 3;
  bond.wedge = stereo == 1   ? Wedge::Up
               : stereo == 6 ? Wedge::Down
               : stereo == 4 ? Wedge::Either
                             : Wedge::None;
  return AddBond(bond);
}

bool MolfileParser::ReadV2000Properties() {
  while (NextLine()) {
    if (line_.starts_with("M  END")) return true;
    if (line_.starts_with("$$$$") || line_.starts_with("> ")) break;
    if (line_.starts_with("A  ") || line_.starts_with("G  ")) {
      NextLine();  // their text is on the next line
    } else if (line_.starts_with("S  SKP")) {
      int count = 0;
      if (!ToInt(Field(6, 3), count)) return Fail(line_, "the number of lines to skip");
      while (count-- > 0 && NextLine()) continue;
    } else if (line_.starts_with("M  CHG") || line_.starts_with("M  RAD") ||
               line_.starts_with("M  ISO")) {
      if (!ReadPairs(line_.substr(3, 3))) return false;
    }
  }
  return Fail(line_, "\"M  END\"");
}

// The first charge or radical line voids every charge and radical of the atom block, the first
// isotope line every mass difference.
bool MolfileParser::ReadPairs(std::string_view kind) {
  const bool isIsotope = kind == "ISO";
  bool& seen = isIsotope ? sawIsotopes_ : sawCharges_;
  for (Atom& atom : atoms_) {
    if (seen) break;
    if (!isIsotope) {
      atom.charge = 0;
      atom.radicalElectrons = 0;
    } else if (atom.isotopeFromDifference) {
      atom.isotope = 0;
    }
  }
  seen = true;
  std::string_view words = line_.substr(6);
  int count = 0;
  if (!ToInt(TakeWord(words), count)) return Fail(line_, "a number of pairs");
  for (int i = 0; i < count; ++i) {
    const std::string_view pair = Trimmed(words);
    int number = 0;
    int value = 0;
    if (!ToInt(TakeWord(words), number) || Trimmed(words).empty() ||
        !ToInt(TakeWord(words), value)) {
      return Fail(pair, "an atom number and a value");
    }
    if (number < 1 || number > static_cast<int>(atoms_.size())) {
      return Fail(pair, "the number of an atom of this molfile");
    }
    Atom& atom = atoms_[static_cast<std::size_t>(number) - 1];
    if (kind == "RAD" ? !SetRadical(atom, value)
        : isIsotope   ? !SetIsotope(atom, value)
                      : !SetCharge(atom, value)) {
      return false;
    }
  }
  return true;
}

// The content of the next "M  V30" line, with the lines that continue it.
bool MolfileParser::NextV3000(std::string_view& content) {
  constexpr std::string_view prefix = "M  V30 ";
  joined_.clear();
  while (true) {
    NextLine();
    if (!line_.starts_with(prefix)) return Fail(line_, "a line that begins with \"M  V30\"");
    content = Trimmed(line_.substr(prefix.size()));
    const bool continues = content.ends_with('-');
    if (!continues && joined_.empty()) return true;
    // Blanks before a continuation belong to the text.
    joined_ += line_.substr(prefix.size());
    while (!joined_.empty() && (joined_.back() == ' ' || joined_.back() == '\t'))
      joined_.pop_back();
    if (!continues) break;
    joined_.pop_back();
  }
  content = Trimmed(joined_);
  return true;
}

bool MolfileParser::ReadV3000() {
  std::string_view content;
  int numAtoms = -1;
  int numBonds = -1;
  if (!NextV3000(content)) return false;
  if (content != "BEGIN CTAB" && !content.starts_with("BEGIN CTAB ")) {
    return Fail(content, "\"BEGIN CTAB\"");
  }
  while (true) {
    if (!NextV3000(content)) return false;
    std::string_view words = content;
    const std::string_view first = TakeWord(words);
    if (first == "END") break;
    if (first == "COUNTS") {
      if (Trimmed(words).empty() || !ToInt(TakeWord(words), numAtoms) ||
          !ToInt(TakeWord(words), numBonds) || numAtoms < 0 || numBonds < 0) {
        return Fail(content, "the numbers of atoms and bonds");
      }
    } else if (first == "BEGIN") {
      if (numAtoms < 0) return Fail(content, "the numbers of atoms and bonds first");
      const std::string name(TakeWord(words));
      if (!ReadV3000Block(name, name == "ATOM" ? numAtoms : numBonds)) return false;
    }
  }
  if (static_cast<int>(atoms_.size()) != numAtoms || static_cast<int>(bonds_.size()) != numBonds) {
    return Fail(content, "the atoms and bonds that the counts promise");
  }
  while (NextLine()) {
    if (line_.starts_with("M  END")) return true;
    if (line_.starts_with("$$$$") || line_.starts_with("> ")) break;
  }
  return Fail(line_, "\"M  END\"");
}

bool MolfileParser::ReadV3000Block(std::string_view name, int count) {
  const std::string closing = "END " + std::string(name);
  std::string_view content;
  while (true) {
    if (!NextV3000(content)) return false;
    if (content == closing) return true;
    if (name == "ATOM") {
      if (static_cast<int>(atoms_.size()) == count) break;
      if (!ReadV3000Atom(content)) return false;
    } else if (name == "BOND") {
      if (static_cast<int>(bonds_.size()) == count) break;
      if (!ReadV3000Bond(content)) return false;
    }
  }
  return Fail(content, "the end of the block, as the counts promise no more");
}

bool MolfileParser::ReadV3000Atom(std::string_view content) {
  Atom atom;
  atom.line = lineNumber_;
  std::string_view words = content;
  int number = 0;
  if (!ToInt(TakeWord(words), number)) return Fail(content, "the number of an atom");
  std::string_view symbol = TakeWord(words);
  if (symbol == "NOT") {
    TakeWord(words);
    symbol = "L";
  }
  if (!SetSymbol(atom, symbol)) return false;
  if (!ToReal(TakeWord(words), atom.at.x) || !ToReal(TakeWord(words), atom.at.y) ||
      !ToReal(TakeWord(words), atom.at.z) || Trimmed(words).empty() ||
      !ToInt(TakeWord(words), atom.mapIdx) || atom.mapIdx < 0 || atom.mapIdx > maxMapIdx) {
    return Fail(content, "an atom: number, symbol, three coordinates and a map number");
  }
  while (!Trimmed(words).empty()) {
    const std::string_view word = TakeWord(words);
    const std::size_t equals = std::min(word.find('='), word.size());
    const std::string_view key = word.substr(0, equals);
    int value = 0;
    if (key != "CHG" && key != "RAD" && key != "CFG" && key != "MASS" && key != "VAL") continue;
    if (equals == word.size() || !ToInt(word.substr(equals + 1), value)) {
      return Fail(word, "a whole number behind the \"=\"");
    }
    if (key == "CHG" && !SetCharge(atom, value)) return false;
    if (key == "RAD" && !SetRadical(atom, value)) return false;
    if (key == "MASS" && !SetIsotope(atom, value)) return false;
    if (key == "CFG") atom.parity = value;
    if (key == "VAL") {
      if (value < -1 || value > 14) return Fail(word, "a valence from -1 to 14");
      atom.valence = value;
    }
  }
  if (!numbers_.emplace(number, static_cast<std::uint32_t>(atoms_.size())).second) {
    return Fail(content, "an atom number that isn't taken");
  }
  atoms_.push_back(atom);
  return true;
}

bool MolfileParser::ReadV3000Bond(std::string_view content) {
  Bond bond;
  std::string_view words = content;
  int number = 0;
  int type = 0;
  int bgn = 0;
  int end = 0;
  if (!ToInt(TakeWord(words), number) || !ToInt(TakeWord(words), type) ||
      !ToInt(TakeWord(words), bgn) || Trimmed(words).empty() || !ToInt(TakeWord(words), end)) {
    return Fail(content, "a bond: its number, its type and two atom numbers");
  }
  const auto bgnAt = numbers_.find(bgn);
  const auto endAt = numbers_.find(end);
  if (bgnAt == numbers_.end() || endAt == numbers_.end()) {
    return Fail(content, "two numbers of atoms of this molfile");
  }
  bond.bgn = bgnAt->second;
  bond.end = endAt->second;
  if (!SetBondType(bond, type)) return false;
  while (!Trimmed(words).empty()) {
    const std::string_view word = TakeWord(words);
    if (!word.starts_with("CFG=")) continue;
    int value = 0;
    if (!ToInt(word.substr(4), value)) return Fail(word, "a whole number behind the \"=\"");
    bond.crossed = bond.order == 2 && value == 2;
    bond.wedge = value == 1                    ? Wedge::Up
                 : value == 3                  ? Wedge::Down
                 : value == 2 && !bond.crossed ? Wedge::Either
                                               : Wedge::None;
  }
  return AddBond(bond);
}

bool MolfileParser::SetSymbol(Atom& atom, std::string_view symbol) {
  if (symbol == "D" || symbol == "T") {
    atom.atomicNum = 1;
    atom.isotope = symbol == "D" ? 2 : 3;
    return true;
  }
  atom.atomicNum = GetAtomicNumOf(symbol);
  if (atom.atomicNum != 0) return true;
  // Query atoms, pseudo atoms and lists become dummy atoms.
  constexpr std::array<std::string_view, 10> dummies{"*",  "A",  "Q",  "X",  "M",
                                                     "AH", "QH", "XH", "MH", "LP"};
  if (std::find(dummies.begin(), dummies.end(), symbol) != dummies.end()) return true;
  if (symbol.starts_with('R') &&
      symbol.find_first_not_of("0123456789#", 1) == std::string_view::npos) {
    return true;
  }
  if (symbol == "L" || symbol.starts_with('[') || symbol.starts_with("NOT[")) return true;
  if (symbol.size() == 2) {  // some programs write capitals only
    const char cased[2] = {symbol[0], Bostrel::ToLower(symbol[1])};
    atom.atomicNum = GetAtomicNumOf({cased, 2});
    if (atom.atomicNum != 0) return true;
  }
  return Fail(symbol, "an element symbol");
}

bool MolfileParser::SetBondType(Bond& bond, int type) {
  switch (type) {
    case 1:
    case 2:
    case 3:
      bond.order = static_cast<unsigned int>(type);
      return true;
    case 4:
      bond.aromatic = true;
      return true;
    // Any, coordination and hydrogen bonds take part in no valence.
    case 0:
    case 8:
    case 9:
    case 10:
      bond.order = 0;
      return true;
    default:
      return Fail(std::to_string(type), "a bond type of a molecule: 1 to 4, 8, 9 or 10");
  }
}

bool MolfileParser::SetRadical(Atom& atom, int radical) {
  if (radical < 0 || radical > 3)
    return Fail(std::to_string(radical), "a radical code from 0 to 3");
  constexpr std::array<int, 4> electrons{0, 2, 1, 2};  // none, singlet, doublet, triplet
  atom.radicalElectrons = electrons[static_cast<std::size_t>(radical)];
  return true;
}

bool MolfileParser::SetCharge(Atom& atom, int charge) {
  if (charge < -15 || charge > 15) return Fail(std::to_string(charge), "a charge from -15 to 15");
  atom.charge = charge;
  return true;
}

bool MolfileParser::SetIsotope(Atom& atom, int massNumber) {
  if (massNumber < 0 || massNumber > 65535) {
    return Fail(std::to_string(massNumber), "a mass number from 0 to 65535");
  }
  if (massNumber == 0) return true;  // no information; a D remains one
  atom.isotope = massNumber;
  atom.isotopeFromDifference = false;
  return true;
}

bool MolfileParser::AddBond(Bond bond) {
  if (bond.bgn == bond.end) return Fail(line_, "a bond between two atoms");
  bond.line = lineNumber_;
  for (const std::uint32_t idx : {bond.bgn, bond.end}) {
    Atom& atom = atoms_[idx];
    ++atom.degree;
    atom.bondSum += bond.order;
    atom.numWithoutOrder += bond.order == 0;
    atom.doubles += bond.order == 2;
    atom.multiple |= bond.order > 1;
    atom.aromatic |= bond.aromatic;
  }
  bonds_.push_back(bond);
  return true;
}

void MolfileParser::CountHydrogens() {
  for (Atom& atom : atoms_) {
    if (atom.valence != 0) {  // a bond of no order also uses one of it
      const int left = atom.valence - static_cast<int>(atom.bondSum + atom.numWithoutOrder);
      atom.hCount = static_cast<unsigned int>(std::max(left, 0));
      continue;
    }
    const unsigned int usual =
        atom.aromatic ? GetAromaticHCount(atom.atomicNum, atom.charge, atom.bondSum, atom.multiple)
                      : ZQDefaultHCount(atom.atomicNum, atom.charge, atom.bondSum);
    const auto taken = static_cast<unsigned int>(atom.radicalElectrons);
    atom.hCount = usual > taken ? usual - taken : 0;
  }
}

void MolfileParser::SetStereo() {
  constexpr double flat = 1e-4;  // relative to the drawing's size
  double size = 0;
  double depth = 0;
  for (const Atom& atom : atoms_) {
    const Point apart = atom.at - atoms_.front().at;
    depth = std::max(depth, std::abs(apart.z));
    size = std::max({size, std::abs(apart.x), std::abs(apart.y), depth});
  }
  isDrawn_ = size > 0;
  hasDepth_ = depth > flat * size;
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    if (MayBeCentre(a)) atoms_[a].stereo = isDrawn_ ? GetDrawnStereo(a) : GetParityStereo(a);
  }
  if (!isDrawn_) return;
  for (std::uint32_t b = 0; b < bonds_.size(); ++b) bonds_[b].stereo = GetBondStereo(b);
}

// Whether two neighbours of the atom other than `without` are equal terminal atoms.
bool MolfileParser::HasTwins(std::uint32_t atom, std::uint32_t without) const {
  const auto isHydrogen = [&](const Edge& edge) {
    const Atom& a = atoms_[edge.atom];
    return edge.atom != without && a.degree == 1 &&
           IsPlainHydrogen(a.atomicNum, static_cast<unsigned int>(a.isotope), a.charge);
  };
  if (atoms_[atom].hCount != 0 && std::ranges::any_of(Edges(atom), isHydrogen)) return true;
  return Quarnel::HasTwins(Edges(atom), without, [this](std::uint32_t i, std::uint32_t j) {
    const Atom& a = atoms_[i];
    const Atom& b = atoms_[j];
    return a.degree == 1 && b.degree == 1 && a.atomicNum == b.atomicNum && a.isotope == b.isotope &&
           a.charge == b.charge && a.hCount == b.hCount;
  });
}

bool MolfileParser::MayBeCentre(std::uint32_t idx) const {
  return atoms_[idx].numWithoutOrder == 0 && CanBeDrawn(DrawingOf(idx)) && !HasTwins(idx, none);
}

ZQAtomStereo MolfileParser::GetDrawnStereo(std::uint32_t idx) const {
  const Atom& atom = atoms_[idx];
  std::array<Point, 4> around{};
  std::size_t count = atom.degree == 3 ? 1 : 0;  // the hydrogen or lone pair is the first
  Point opposite;
  for (const Edge& edge : Edges(idx)) {
    const Bond& bond = bonds_[edge.bond];
    Point& at = around[count++];
    at = atoms_[edge.atom].at - atom.at;
    if (!hasDepth_) at.z = 0;
    at = Normalized(at);
    opposite = opposite - at;
    if (hasDepth_ || bond.bgn != idx) continue;
    if (bond.wedge == Wedge::Either) return ZQAtomStereo::None;
    at.z = bond.wedge == Wedge::Up ? 1 : bond.wedge == Wedge::Down ? -1 : 0;
  }
  if (!hasDepth_) {
    // A missing neighbour is placed at the centre: inside the triangle of the others if they
    // surround it, and opposite the middle one if they are in a half-plane. It is moved slightly
    // outwards, so that two others in line count as a half-plane: a real centre seen along their
    // plane has one neighbour on each side of it.
    constexpr double trace = 1e-4;  // exceeds the rounding of coordinates
    if (atom.degree == 3) around[0] = opposite * trace;
    return GetWedgedStereo(around);
  }
  if (atom.degree == 3) around[0] = Normalized(opposite);
  const double volume =
      Dot(around[1] - around[0], Cross(around[2] - around[0], around[3] - around[0]));
  constexpr double leastVolume = 0.1;  // that of a regular tetrahedron is 3.1
  if (std::abs(volume) < leastVolume) return ZQAtomStereo::None;
  return volume < 0 ? ZQAtomStereo::CounterClockwise : ZQAtomStereo::Clockwise;
}

// The neighbours by ascending number, hydrogens last: seen towards the last one, the others turn
// clockwise for an odd parity.
ZQAtomStereo MolfileParser::GetParityStereo(std::uint32_t idx) const {
  const Atom& atom = atoms_[idx];
  if (atom.parity != 1 && atom.parity != 2) return ZQAtomStereo::None;
  std::array<std::uint32_t, 4> keys{};
  std::size_t count = 0;
  if (atom.degree == 3) keys[count++] = none;
  for (const Edge& edge : Edges(idx)) {
    keys[count++] = edge.atom + (atoms_[edge.atom].atomicNum == 1 ? none / 2 : 0);
  }
  // In the order of the parity, rotated to begin with the last, they are counterclockwise for an
  // odd one; the rotation of four is three swaps.
  return Turned(atom.parity == 1 ? ZQAtomStereo::Clockwise : ZQAtomStereo::CounterClockwise,
                IsOdd(keys));
}

ZQBondStereo MolfileParser::GetBondStereo(std::uint32_t idx) const {
  const Bond& bond = bonds_[idx];
  if (bond.order != 2 || bond.crossed) return ZQBondStereo::None;
  const Point axis = Normalized(atoms_[bond.end].at - atoms_[bond.bgn].at);
  std::array<Point, 2> sides{};
  for (const std::size_t side : {0, 1}) {
    const std::uint32_t near = side == 0 ? bond.bgn : bond.end;
    const std::uint32_t far = side == 0 ? bond.end : bond.bgn;
    const Atom& atom = atoms_[near];
    if (!CanBeDrawnEnd(DrawingOf(near)) || HasTwins(near, far)) return ZQBondStereo::None;
    for (const Edge& edge : Edges(near)) {
      const Bond& other = bonds_[edge.bond];
      if (other.wedge == Wedge::Either && other.bgn == near) return ZQBondStereo::None;
    }
    const Point arm = Normalized(atoms_[ReferenceOf(Edges(near).data(), far)].at - atom.at);
    const Point across = arm - axis * Dot(arm, axis);
    constexpr double leastBend = 0.1;
    if (Dot(across, across) < leastBend * leastBend) return ZQBondStereo::None;
    sides[side] = Normalized(across);
  }
  const double agreement = Dot(sides[0], sides[1]);  // -1 or 1 in a plane
  constexpr double leastAgreement = 0.2;
  if (std::abs(agreement) < leastAgreement) return ZQBondStereo::None;
  return agreement > 0 ? ZQBondStereo::Cis : ZQBondStereo::Trans;
}

bool MolfileParser::Fill(ZQMolBase& mol) {
  mol.Clear();
  mol.SetTitle(std::string(title_));
  mol.BeginEdit();
  bool anyAromatic = false;
  for (const Atom& atom : atoms_) {
    ZQAtomBase* made = mol.NewAtom(atom.atomicNum);
    made->SetFormalCharge(atom.charge);
    made->SetIsotope(static_cast<unsigned int>(atom.isotope));
    made->SetMapIdx(static_cast<unsigned int>(atom.mapIdx));
    made->SetImplicitHCount(atom.hCount);
    made->SetAromatic(atom.aromatic);
    made->SetStereo(atom.stereo);
    anyAromatic |= atom.aromatic;
  }
  std::uint32_t twiceAt = 0;
  for (const Bond& bond : bonds_) {
    ZQBondBase* made = mol.NewBond(mol.GetAtomAt(bond.bgn), mol.GetAtomAt(bond.end), bond.order);
    if (!made) {
      twiceAt = bond.line;
      break;
    }
    made->SetAromatic(bond.aromatic);
    made->SetStereo(bond.stereo);
  }
  DropSmallRingStereo(mol);
  mol.EndEdit();
  if (isDrawn_ || (!atoms_.empty() && Dot(atoms_[0].at, atoms_[0].at) != 0)) {
    std::vector<ZQPoint> points;
    points.reserve(atoms_.size());
    for (const Atom& atom : atoms_) points.push_back(atom.at);
    mol.SetData(ZQCoordinatesTag, std::move(points));
  }
  if (twiceAt != 0) return FailAt(twiceAt, "a second bond between two atoms", "one");
  unsigned int culprit = 0;
  if (anyAromatic && !ZQKekulize(mol, &culprit)) {
    return FailAt(atoms_[culprit].line, "an aromatic atom in no such ring",
                  "rings of alternating single and double bonds");
  }
  return true;
}

bool ReadMolfile(ZQMolBase& mol, std::string_view molfile, ReaderError& error) {
  return MolfileParser().Read(mol, molfile, error);
}

// ---- Files: a molfile and data fields up to each line that begins with "$$$$"

std::size_t FindSdfRecord(std::string_view text, std::size_t& from) {
  const std::size_t start = from;
  std::size_t end = text.find("$$$$", start);
  while (end != std::string_view::npos && end != 0 && text[end - 1] != '\n') {
    end = text.find("$$$$", end + 1);
  }
  from = text.size();
  if (end != std::string_view::npos) {
    from = std::min(text.find('\n', end), text.size() - 1) + 1;
    return start;
  }
  // A file may end with blank lines after the last delimiter.
  return Trimmed(text.substr(start)).empty() ? end : start;
}

bool ReadSdfRecord(ZQMolBase& mol, std::string_view record, const TableColumns& /*columns*/,
                   ReaderError& error) {
  return ReadMolfile(mol, record, error);
}

std::string GetTitleOfMolfile(std::string_view record, const TableColumns& /*columns*/) {
  return std::string(Trimmed(record.substr(0, record.find('\n'))));
}

}  // namespace

const FileFormat mdlFiles{".sdf .sd .mol", "molfile line",    nullptr, FindSdfRecord,
                          ReadSdfRecord,   GetTitleOfMolfile, nullptr};

bool ZQMolfileToMol(ZQMolBase& mol, std::string_view molfile, const std::string& where) {
  ReaderError error;
  if (ReadMolfile(mol, molfile, error)) return true;
  ReportUnreadable(mol, where, mdlFiles.place, error);
  return false;
}

}  // namespace Quarnel
