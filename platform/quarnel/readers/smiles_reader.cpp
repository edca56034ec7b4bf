#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/molecule/elements_local.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/stereo_local.h"
#include "platform/quarnel/readers/file_format_local.h"
#include "platform/quarnel/readers/smiles_line_local.h"
#include "platform/quarnel/readers/smiles_scanner_local.h"

// The text is read into flat arrays first; the molecule is only filled once the syntax is verified.
// The thread keeps the arrays, so that reading many molecules in a row allocates no memory.

namespace Quarnel {

using Bostrel::Trimmed;

namespace {

constexpr std::uint32_t none = ~0U;
constexpr std::uint32_t nineDigits = 999999999;

bool IsMark(char c) { return c == '/' || c == '\\'; }
// Coordination bonds, "->" and "<-", are identified by the tip of the arrow.
bool IsArrow(char c) { return c == '<' || c == '>'; }
std::string TextOf(char symbol) {
  return symbol == '>' ? "->" : symbol == '<' ? "<-" : std::string(1, symbol);
}
// A bond's symbol as seen from its other end.
char TurnedOver(char c) {
  constexpr std::string_view symbols = "/\\<>";
  const std::size_t at = symbols.find(c);
  return at == std::string_view::npos ? c : symbols[at ^ 1];
}

// By character: the element of an atom without brackets, and whether it is aromatic.
constexpr std::uint8_t organicKnown = 0x40;
constexpr std::uint8_t organicAromatic = 0x80;
constexpr std::uint8_t organicNum = 0x3f;

constexpr std::array<std::uint8_t, 128> MakeOrganicTable() {
  std::array<std::uint8_t, 128> table{};
  struct Symbol {
    unsigned char symbol;
    std::uint8_t atomicNum;
  };
  for (const Symbol& entry : {Symbol{'*', 0},
                              {'B', 5},
                              {'C', 6},
                              {'N', 7},
                              {'O', 8},
                              {'F', 9},
                              {'P', 15},
                              {'S', 16},
                              {'I', 53}}) {
    table[entry.symbol] = organicKnown | entry.atomicNum;
  }
  for (const Symbol& entry : {Symbol{'b', 5}, {'c', 6}, {'n', 7}, {'o', 8}, {'p', 15}, {'s', 16}}) {
    table[entry.symbol] = organicKnown | organicAromatic | entry.atomicNum;
  }
  return table;
}

constexpr std::array<std::uint8_t, 128> organicTable = MakeOrganicTable();

class SmilesParser : SmilesScanner {
 public:
  bool Read(ZQMolBase& mol, std::string_view text, ReaderError& error);

 private:
  struct Atom {
    std::uint32_t column;   // from 0
    std::uint32_t bondSum;  // an aromatic bond counts 1
    std::uint32_t mapIdx;
    std::uint32_t centre;  // index into centres_
    std::uint32_t isotope;
    std::int32_t charge;
    std::uint8_t atomicNum;
    std::uint8_t hCount;
    bool bracket;
    bool aromatic;
    bool multiple;  // has a double or triple bond of its own
  };
  struct Bond {
    std::uint32_t bgn;
    std::uint32_t end;
    std::uint32_t column;
    std::uint8_t order;
    std::int8_t mark;  // 1: the end is above the begin ("/"), -1: below
    bool aromatic;
    ZQBondStereo stereo;
  };
  // A tetrahedral centre and its bonds in the order of the text, a list within links_.
  struct Centre {
    std::uint32_t atom;
    std::uint32_t first;
    std::uint32_t last;
    ZQAtomStereo stereo;
    bool hasPrevious;
  };
  struct Link {
    std::uint32_t bond;
    std::uint32_t next;
  };
  struct RingOpening {
    std::uint32_t atom;
    std::uint32_t column;
    std::uint32_t link;  // its position among the bonds of a centre
    char symbol;
  };
  struct Branch {
    std::uint32_t atom;
    std::uint32_t column;
  };
  // The properties of an end for a double bond's stereo.
  struct DoubleEnd {
    std::uint32_t doubles;
    std::uint32_t others;
    std::int8_t reference;  // 1: the reference neighbour is above, -1: below, 0: not given
    bool conflict;
  };

  bool ReadText();
  bool ReadOrganic();
  bool ReadBracket();
  bool ReadBracketSymbol(Atom& atom);
  bool ReadChirality(ZQAtomStereo& stereo);
  bool ReadRingClosure();
  bool ReadEnd();
  void AddAtom(const Atom& atom, ZQAtomStereo stereo);
  void AddBond(std::uint32_t bgn, std::uint32_t end, char symbol, std::uint32_t column);
  std::uint32_t AddLink(std::uint32_t atom, std::uint32_t bond);
  ZQAtomStereo GetStereo(const Centre& centre);
  void SetDoubleBondStereo();
  static void MarkAromaticDummies(ZQMolBase& mol);
  bool Fill(ZQMolBase& mol);
  void Reset();

  bool FailExpectingMore() {
    return SmilesScanner::FailExpectingMore(
        after_, "an atom (other than B C N O P S F Cl Br I b c n o p s in brackets)");
  }

  After after_ = After::Start;
  std::uint32_t previous_ = none;
  char symbol_ = 0;  // of the next bond
  std::uint32_t symbolColumn_ = 0;
  std::uint32_t openRings_ = 0;
  bool anyAromatic_ = false;
  bool anyAromaticDummy_ = false;  // a dummy atom next to an aromatic one
  bool anyMark_ = false;
  bool anyRing_ = false;

  std::vector<Atom> atoms_;
  std::vector<Bond> bonds_;
  std::vector<Centre> centres_;
  std::vector<Link> links_;
  std::vector<Branch> branches_;
  std::vector<RingOpening> rings_;  // by number
  std::vector<DoubleEnd> ends_;     // by atom
  std::vector<ZQAtomBase*> made_;   // by atom
};

bool SmilesParser::Read(ZQMolBase& mol, std::string_view text, ReaderError& error) {
  Reset();
  Begin(text, error);
  if (text.size() >= none) return Fail(0, "4 gigabytes of text", "a SMILES");
  SkipBlanks();
  if (!ReadText() || !ReadEnd()) return false;
  if (anyMark_) SetDoubleBondStereo();
  return Fill(mol);
}

void SmilesParser::Reset() {
  // The memory of one giant molecule mustn't be kept for the thread's lifetime.
  constexpr std::size_t keep = 1 << 16;
  if (atoms_.capacity() > keep || links_.capacity() > keep || rings_.capacity() > keep ||
      branches_.capacity() > keep) {
    *this = SmilesParser();
  }
  after_ = After::Start;
  previous_ = none;
  symbol_ = 0;
  if (openRings_ != 0) rings_.clear();  // left open by a failed text
  openRings_ = 0;
  anyAromatic_ = false;
  anyAromaticDummy_ = false;
  anyMark_ = false;
  anyRing_ = false;
  atoms_.clear();
  bonds_.clear();
  centres_.clear();
  links_.clear();
  branches_.clear();
}

bool SmilesParser::ReadText() {
  while (pos_ < text_.size()) {
    const char c = text_[pos_];
    switch (c) {
      case '[':
        if (!ReadBracket()) return false;
        break;
      case '<':
        if (Peek(1) != '-') return FailExpectingMore();
        [[fallthrough]];
      case '-':
      case '=':
      case '#':
      case '$':
      case ':':
      case '/':
      case '\\':
        if (after_ != After::Atom && after_ != After::Closing && after_ != After::Opening) {
          return FailExpectingMore();
        }
        symbol_ = c == '-' && Peek(1) == '>' ? '>' : c;
        symbolColumn_ = static_cast<std::uint32_t>(pos_);
        pos_ += IsArrow(symbol_) ? 2 : 1;
        after_ = After::Bond;
        break;
      case '(':
        if (after_ != After::Atom && after_ != After::Closing) return FailExpectingMore();
        branches_.push_back({previous_, static_cast<std::uint32_t>(pos_++)});
        after_ = After::Opening;
        break;
      case ')':
        if (after_ != After::Atom && after_ != After::Closing) return FailExpectingMore();
        if (branches_.empty()) return FailHere("an atom or a bond, as no branch is open");
        previous_ = branches_.back().atom;
        branches_.pop_back();
        ++pos_;
        after_ = After::Closing;
        break;
      case '.':
        if (after_ != After::Atom && after_ != After::Closing && after_ != After::Opening) {
          return FailExpectingMore();
        }
        ++pos_;
        previous_ = none;
        after_ = After::Dot;
        break;
      case '%':
      case '0':
      case '1':
      case '2':
      case '3':
      case '4':
      case '5':
      case '6':
      case '7':
      case '8':
      case '9':
        if (!ReadRingClosure()) return false;
        break;
      case ' ':
      case '\t':
      case '\r':
      case '\n':
        text_ = text_.substr(0, pos_);
        break;
      default:
        if (!ReadOrganic()) return FailExpectingMore();
    }
  }
  return true;
}

bool SmilesParser::ReadEnd() {
  if (after_ != After::Atom && after_ != After::Closing && after_ != After::Start) {
    return FailExpectingMore();
  }
  if (!branches_.empty()) return FailOpenBranch(branches_.back().column);
  if (openRings_ != 0) {
    std::uint32_t first = none;
    for (std::uint32_t i = 0; i < rings_.size(); ++i) {
      if (rings_[i].atom == none) continue;
      if (first == none || rings_[i].column < rings_[first].column) first = i;
    }
    return FailRing(rings_[first].column, first, " left open", "the same number at a second atom");
  }
  return true;
}

// Reads an atom without brackets.
bool SmilesParser::ReadOrganic() {
  const char c = Peek();
  const std::uint8_t code = static_cast<unsigned char>(c) < 128 ? organicTable[c & 127] : 0;
  if (code == 0) return false;
  Atom atom{};
  atom.column = static_cast<std::uint32_t>(pos_++);
  atom.atomicNum = code & organicNum;
  atom.aromatic = (code & organicAromatic) != 0;
  if (c == 'C' && Peek() == 'l') {
    atom.atomicNum = 17;
    ++pos_;
  } else if (c == 'B' && Peek() == 'r') {
    atom.atomicNum = 35;
    ++pos_;
  }
  AddAtom(atom, ZQAtomStereo::None);
  return true;
}

void SmilesParser::AddAtom(const Atom& atom, ZQAtomStereo stereo) {
  const auto idx = static_cast<std::uint32_t>(atoms_.size());
  atoms_.push_back(atom);
  anyAromatic_ |= atom.aromatic;
  atoms_[idx].centre = none;
  if (stereo != ZQAtomStereo::None) {
    atoms_[idx].centre = static_cast<std::uint32_t>(centres_.size());
    centres_.push_back({idx, none, none, stereo, previous_ != none});
  }
  if (previous_ != none) {
    const auto bond = static_cast<std::uint32_t>(bonds_.size());
    AddLink(previous_, bond);
    AddLink(idx, bond);
    AddBond(previous_, idx, symbol_, symbol_ ? symbolColumn_ : atom.column);
  }
  previous_ = idx;
  symbol_ = 0;
  after_ = After::Atom;
}

std::uint32_t SmilesParser::AddLink(std::uint32_t atom, std::uint32_t bond) {
  if (atoms_[atom].centre == none) return none;
  Centre& centre = centres_[atoms_[atom].centre];
  const auto link = static_cast<std::uint32_t>(links_.size());
  links_.push_back({bond, none});
  (centre.first == none ? centre.first : links_[centre.last].next) = link;
  centre.last = link;
  return link;
}

void SmilesParser::AddBond(std::uint32_t bgn, std::uint32_t end, char symbol,
                           std::uint32_t column) {
  Atom& a = atoms_[bgn];
  Atom& b = atoms_[end];
  Bond bond{bgn, end, column, 1, 0, false, ZQBondStereo::None};
  switch (symbol) {
    case '=':
      bond.order = 2;
      break;
    case '#':
      bond.order = 3;
      break;
    case '$':
      bond.order = 4;
      break;
    case '<':
    case '>':
      bond.order = 0;
      break;
    case '-':
      break;
    case ':':
      bond.aromatic = a.aromatic = b.aromatic = anyAromatic_ = true;
      break;
    case '/':
    case '\\':
      bond.mark = symbol == '/' ? 1 : -1;
      anyMark_ = true;
      [[fallthrough]];
    default: {
      const auto mayBe = [](const Atom& atom) { return atom.aromatic || atom.atomicNum == 0; };
      bond.aromatic = mayBe(a) && mayBe(b) && (a.aromatic || b.aromatic);
      anyAromaticDummy_ |= bond.aromatic && a.aromatic != b.aromatic;
    }
  }
  a.bondSum += bond.order;
  b.bondSum += bond.order;
  if (bond.order > 1) a.multiple = b.multiple = true;
  bonds_.push_back(bond);
}

bool SmilesParser::ReadRingClosure() {
  if (after_ == After::Start || after_ == After::Opening || after_ == After::Dot ||
      previous_ == none) {
    return FailExpectingMore();
  }
  const auto column = static_cast<std::uint32_t>(pos_);
  std::uint32_t number = 0;
  if (!ReadRingNumber(number, "a ring closure number")) return false;
  if (number >= rings_.size()) rings_.resize(number + 1, {none, 0, none, 0});
  RingOpening& ring = rings_[number];
  if (ring.atom == none) {
    ring = {previous_, column, AddLink(previous_, none), symbol_};
    ++openRings_;
    anyRing_ = true;
  } else {
    const char opening = TurnedOver(ring.symbol);
    char symbol = symbol_;
    if (symbol == 0 || (symbol == '-' && IsMark(opening))) {
      symbol = opening;
    } else if (opening != 0 && opening != symbol && !(opening == '-' && IsMark(symbol))) {
      return FailRing(column, number, " with the bond \"" + TextOf(symbol) + "\"",
                      "the bond \"" + TextOf(opening) + "\" to match its opening at column " +
                          std::to_string(ring.column + 1));
    }
    if (ring.atom == previous_) {
      return FailRing(column, number, " from an atom to itself", "another atom");
    }
    const auto bond = static_cast<std::uint32_t>(bonds_.size());
    AddLink(previous_, bond);
    if (ring.link != none) links_[ring.link].bond = bond;
    AddBond(ring.atom, previous_, TurnedOver(symbol), column);
    ring.atom = none;
    --openRings_;
  }
  symbol_ = 0;
  after_ = After::Atom;
  return true;
}

bool SmilesParser::ReadBracketSymbol(Atom& atom) {
  if (Peek() == '*') {
    ++pos_;
    return true;
  }
  const std::size_t length = IsLower(Peek(1)) ? 2 : 1;
  atom.atomicNum = PeekElement(length);
  if (atom.atomicNum == 0) return FailHere("an element symbol");
  atom.aromatic = IsLower(Peek());
  pos_ += length;
  return true;
}

bool SmilesParser::ReadChirality(ZQAtomStereo& stereo) {
  if (Peek() != '@') return true;
  ++pos_;
  stereo = ZQAtomStereo::CounterClockwise;
  if (Peek() == '@') {
    ++pos_;
    stereo = ZQAtomStereo::Clockwise;
    return true;
  }
  const ChiralityClass* kind = PeekChiralityClass();
  if (!kind) return true;
  pos_ += kind->name.size();
  const std::size_t start = pos_;
  const char* expected = "the number of a chirality class";
  std::uint32_t number = 0;
  if (!ReadNumber(number, kind->count, expected)) return false;
  if (number == 0) {
    pos_ = start;
    return FailHere(expected);
  }
  if (kind->name != "TH") {
    stereo = ZQAtomStereo::None;
  } else if (number == 2) {
    stereo = ZQAtomStereo::Clockwise;
  }
  return true;
}

bool SmilesParser::ReadBracket() {
  Atom atom{};
  atom.column = static_cast<std::uint32_t>(pos_);
  atom.bracket = true;
  ++pos_;
  if (IsDigit(Peek()) && !ReadNumber(atom.isotope, nineDigits, "an isotope of up to nine digits")) {
    return false;
  }
  ZQAtomStereo stereo = ZQAtomStereo::None;
  if (!ReadBracketSymbol(atom) || !ReadChirality(stereo)) return false;
  if (Peek() == 'H') {
    ++pos_;
    atom.hCount = 1;
    if (IsDigit(Peek())) atom.hCount = static_cast<std::uint8_t>(text_[pos_++] - '0');
  }
  if (Peek() == '+' || Peek() == '-') {
    const std::size_t sign = pos_;
    const char* expected = "a charge of up to nine digits";
    if (!ReadCharge(atom.charge, nineDigits, expected)) {
      pos_ = sign;
      return FailHere(expected);
    }
  }
  if (Peek() == ':') {
    ++pos_;
    if (!IsDigit(Peek())) return FailHere("the number of an atom class");
    if (!ReadNumber(atom.mapIdx, nineDigits, "an atom class of up to nine digits")) return false;
  }
  if (Peek() != ']') return FailHere("\"]\"");
  ++pos_;
  AddAtom(atom, stereo);
  return true;
}

// Converts from the order of the text to the order of bond indices, hydrogen or lone pair first.
ZQAtomStereo SmilesParser::GetStereo(const Centre& centre) {
  unsigned int numBonds = 0;
  for (std::uint32_t link = centre.first; link != none && numBonds <= 4; link = links_[link].next) {
    ++numBonds;
  }
  if (!HasFourPlaces(numBonds, atoms_[centre.atom].hCount)) return ZQAtomStereo::None;
  // Bonds are numbered from 1 here, so that the hydrogen or lone pair sorts first. In the text it
  // follows the preceding atom, if there is one.
  std::array<std::uint32_t, 4> order{};
  std::size_t place = numBonds == 3 && !centre.hasPrevious ? 1 : 0;
  for (std::uint32_t link = centre.first; link != none; link = links_[link].next) {
    order[place] = links_[link].bond + 1;
    place += place == 0 && numBonds == 3 ? 2 : 1;
  }
  return Turned(centre.stereo, IsOdd(order));
}

void SmilesParser::SetDoubleBondStereo() {
  ends_.assign(atoms_.size(), DoubleEnd{});
  for (const Bond& bond : bonds_) {
    for (const bool atBgn : {true, false}) {
      DoubleEnd& end = ends_[atBgn ? bond.bgn : bond.end];
      if (bond.order == 2) {
        ++end.doubles;
        continue;
      }
      // The first of the others is the reference; a second one is on the opposite side.
      ++end.others;
      if (bond.mark == 0) continue;
      const bool above = (bond.mark > 0) == atBgn;
      const std::int8_t reference = above == (end.others == 1) ? 1 : -1;
      end.conflict |= end.reference == -reference;
      end.reference = reference;
    }
  }
  for (Bond& bond : bonds_) {
    if (bond.order != 2) continue;
    const DoubleEnd& bgn = ends_[bond.bgn];
    const DoubleEnd& end = ends_[bond.end];
    const auto isSaid = [](const DoubleEnd& side) {
      return side.doubles == 1 && side.others <= 2 && side.reference != 0 && !side.conflict;
    };
    if (!isSaid(bgn) || !isSaid(end)) continue;
    bond.stereo = bgn.reference == end.reference ? ZQBondStereo::Cis : ZQBondStereo::Trans;
  }
}

// "*" has no lower case: it is part of an aromatic ring if its ring bonds lead to aromatic atoms.
void SmilesParser::MarkAromaticDummies(ZQMolBase& mol) {
  ZQFindRingAtomsAndBonds(mol);
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    ZQAtomBase* atom = mol.GetAtomAt(i);
    if (atom->GetAtomicNum() != 0) continue;
    unsigned int count = 0;
    for (const ZQBondBase* bond = atom->NextBond(nullptr); bond; bond = atom->NextBond(bond)) {
      count += bond->IsInRing() && bond->IsAromatic();
    }
    if (count >= 2) atom->SetAromatic(true);
  }
}

bool SmilesParser::Fill(ZQMolBase& mol) {
  mol.Clear();
  mol.BeginEdit();
  made_.clear();
  for (const Atom& atom : atoms_) {
    ZQAtomBase* made = mol.NewAtom(atom.atomicNum);
    made_.push_back(made);
    unsigned int hCount = atom.hCount;
    if (!atom.bracket) {
      hCount = atom.aromatic ? GetAromaticHCount(atom.atomicNum, 0, atom.bondSum, atom.multiple)
                             : ZQDefaultHCount(atom.atomicNum, 0, atom.bondSum);
    }
    if (hCount != 0) made->SetImplicitHCount(hCount);
    if (atom.aromatic) made->SetAromatic(true);
    if (!atom.bracket) continue;
    if (atom.charge != 0) made->SetFormalCharge(atom.charge);
    if (atom.isotope != 0) made->SetIsotope(atom.isotope);
    if (atom.mapIdx != 0) made->SetMapIdx(atom.mapIdx);
    if (atom.centre != none) made->SetStereo(GetStereo(centres_[atom.centre]));
  }
  const Bond* twice = nullptr;
  for (const Bond& bond : bonds_) {
    ZQBondBase* made = mol.NewBond(made_[bond.bgn], made_[bond.end], bond.order);
    if (!made) {
      twice = &bond;
      break;
    }
    if (bond.aromatic) made->SetAromatic(true);
    if (bond.stereo != ZQBondStereo::None) made->SetStereo(bond.stereo);
  }
  mol.EndEdit();
  if (twice) {
    return Fail(twice->column, "a ring closure between atoms that are bonded already",
                "two other atoms");
  }
  if (anyMark_ && anyRing_) DropSmallRingStereo(mol);
  if (anyAromaticDummy_) MarkAromaticDummies(mol);
  unsigned int culprit = 0;
  if (anyAromatic_ && !ZQKekulize(mol, &culprit)) {
    const std::uint32_t column = atoms_[culprit].column;
    return Fail(column, QuoteStart(text_.substr(column)) + ", an aromatic atom in no such ring",
                "rings of alternating single and double bonds (a pyrrole nitrogen is [nH])");
  }
  return true;
}

// ---- Files: a SMILES, white space and a title on each line that isn't blank

std::size_t FindLine(std::string_view text, std::size_t& from) {
  while (from < text.size() && IsBlank(text[from])) ++from;
  if (from == text.size()) return std::string_view::npos;
  const std::size_t start = from;
  from = std::min(text.find('\n', start), text.size() - 1) + 1;
  return start;
}

bool ReadLine(ZQMolBase& mol, std::string_view record, const TableColumns& /*columns*/,
              ReaderError& error) {
  if (!ReadSmiles(mol, GetSmilesOfLine(record), error)) return false;
  mol.SetTitle(std::string(GetTitleOfLine(record)));
  return true;
}

// The part of the text before its first tab, without blanks at its ends.
std::string_view FirstColumn(std::string_view text) {
  return Trimmed(text.substr(0, text.find('\t')));
}

}  // namespace

bool ReadSmiles(ZQMolBase& mol, std::string_view smiles, ReaderError& error) {
  const Workspace<SmilesParser> parser;
  return parser->Read(mol, smiles, error);
}

std::string_view GetSmilesOfLine(std::string_view line) {
  return line.substr(0, line.find_first_of(" \t\r\n"));
}

std::string_view GetTitleOfLine(std::string_view line) {
  line = line.substr(0, line.find('\n'));
  const std::string_view rest = Trimmed(line.substr(GetSmilesOfLine(line).size()));
  const std::string_view column = FirstColumn(rest);
  if (column.empty() || column[0] != '|') return column;
  // A block ends with a bar before white space; without one, the bar is part of the title.
  for (std::size_t end = column.find('|', 1); end != std::string_view::npos;
       end = column.find('|', end + 1)) {
    if (end + 1 == column.size() || IsBlank(column[end + 1])) {
      return FirstColumn(Trimmed(rest.substr(end + 1)));
    }
  }
  return column;
}

const FileFormat smilesFiles{".smi .ism .can .smiles",
                             smilesPlace,
                             nullptr,
                             FindLine,
                             ReadLine,
                             [](std::string_view record, const TableColumns& /*columns*/) {
                               return std::string(GetTitleOfLine(record));
                             },
                             [](std::string_view record, const TableColumns& /*columns*/) {
                               return std::string(GetSmilesOfLine(record));
                             }};

bool ZQSmilesToMol(ZQMolBase& mol, std::string_view smiles, const std::string& where) {
  ReaderError error;
  if (ReadSmiles(mol, smiles, error)) return true;
  ReportUnreadable(mol, where, smilesPlace, error);
  return false;
}

}  // namespace Quarnel
