#include "platform/quarnel/canonical/smiles_writer_local.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <queue>
#include <span>
#include <utility>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/molecule/adjacency_local.h"
#include "platform/quarnel/molecule/elements_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {

namespace {

constexpr std::uint32_t none = ~0U;

bool IsOrganic(unsigned int atomicNum) {
  constexpr std::array<unsigned int, 11> organic{0, 5, 6, 7, 8, 9, 15, 16, 17, 35, 53};
  return std::find(organic.begin(), organic.end(), atomicNum) != organic.end();
}

// A bracket has one digit for hydrogens. The remaining ones are written as separate atoms.
constexpr unsigned int mostInBracket = 9;
unsigned int NumLeftHydrogens(const ZQAtomBase& atom) {
  return atom.GetImplicitHCount() - std::min(atom.GetImplicitHCount(), mostInBracket);
}

// Atoms are numbered by rank, bonds by ascending index.
class SmilesWriter {
 public:
  SmilesWriter(const ZQMolBase& mol, const std::vector<unsigned int>& rank);
  std::vector<std::string> Write();
  std::vector<std::string> WriteByRank();
  std::vector<ZQBondBase*> FindLostBonds() const;

 private:
  struct Atom {
    const ZQAtomBase* atom;
    std::uint32_t firstEdge;
    std::uint32_t degree;
    std::uint32_t visit;       // place in the depth-first order, from 1
    std::uint32_t parentBond;  // none for a start
    std::uint32_t doubles;     // double bonds not written as aromatic
    bool lower;                // read back as aromatic
    bool isCoordinated;        // has bonds of no order, which aren't written
  };
  struct Bond {
    ZQBondBase* bond;
    std::uint32_t bgn;
    std::uint32_t end;
    std::uint32_t ring;    // number of an open ring closure
    std::uint32_t system;  // of the mark
    std::int8_t mark;      // 1: the end is above the begin, -1: below
    bool isTree;
  };
  // An end of a double bond whose configuration is to be written.
  struct StereoEnd {
    std::uint32_t bond = none;
    std::uint32_t reference = none;  // bond to the reference neighbour
    std::int8_t position = 0;        // of that neighbour: 1 above, -1 below
  };
  // Marks that depend on each other.
  struct System {
    bool erased;
    std::int8_t turn;  // 1 or -1 once the first mark is written
  };
  struct Step {
    enum Kind : std::uint8_t { Go, Open, Close } kind;
    std::uint32_t atom;
  };

  std::span<const Edge> Edges(std::uint32_t atom) const { return EdgesOf(atoms_[atom], edges_); }
  bool IsWrittenAromatic(const Bond& bond) const {
    return bond.bond->IsAromatic() && bond.bond->GetOrder() <= 2 && atoms_[bond.bgn].lower &&
           atoms_[bond.end].lower;
  }
  bool IsWrittenDouble(const Bond& bond) const {
    return bond.bond->GetOrder() == 2 && !IsWrittenAromatic(bond);
  }
  bool CanMark(const Bond& bond) const {
    if (IsWrittenAromatic(bond)) return true;
    return bond.bond->GetOrder() == 1 && !(atoms_[bond.bgn].lower && atoms_[bond.end].lower);
  }
  bool HasLonePairStereo(std::uint32_t idx) const {
    const ZQAtomBase& atom = *atoms_[idx].atom;
    return atom.GetStereo() != ZQAtomStereo::None && atoms_[idx].degree == 3 &&
           atom.GetImplicitHCount() == 0;
  }
  void Prepare();
  void FindLowerCase();
  void FindTree(std::uint32_t start);
  std::vector<std::uint32_t> FindTreesByRank();
  void ChooseMarks();
  void EraseSystemsAt(std::uint32_t atom);
  bool IsMarked(std::uint32_t atom) const;
  void ChooseMark(std::uint32_t atom);
  void PlaceSystem(std::uint32_t start, std::uint32_t system);
  // The mark of a bond, none if its system can't be written.
  int GetMark(const Bond& bond) const {
    return bond.system != none && systems_[bond.system].erased ? 0 : bond.mark;
  }
  void WritePart(std::uint32_t start);
  void WriteAtom(std::uint32_t idx);
  void WriteBond(std::uint32_t idx, std::uint32_t from);
  void WriteRingNumber(std::uint32_t number);
  ZQAtomStereo GetWrittenStereo(std::uint32_t idx) const;
  bool NeedsBracket(std::uint32_t idx) const;

  std::vector<Atom> atoms_;
  std::vector<Bond> bonds_;
  std::vector<Edge> edges_;
  std::vector<StereoEnd> ends_;  // by atom
  std::vector<System> systems_;
  std::vector<Edge> closings_;  // of the atom being written
  std::vector<Edge> openings_;
  std::vector<Edge> children_;
  std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> freeNumbers_;
  std::uint32_t nextNumber_ = 1;
  std::string text_;
};

SmilesWriter::SmilesWriter(const ZQMolBase& mol, const std::vector<unsigned int>& rank) {
  std::vector<std::uint32_t> order;
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    if (mol.GetAtomAt(i)) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return rank[a] < rank[b]; });
  std::vector<std::uint32_t> place(mol.GetMaxAtomIdx(), none);
  for (const std::uint32_t idx : order) {
    place[idx] = static_cast<std::uint32_t>(atoms_.size());
    atoms_.push_back({mol.GetAtomAt(idx), 0, 0, 0, none, 0, false, false});
  }
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    ZQBondBase* bond = mol.GetBondAt(i);
    if (!bond) continue;
    if (bond->GetOrder() == 0) {
      for (const ZQAtomBase* end : {bond->GetBgn(), bond->GetEnd()}) {
        atoms_[place[end->GetIdx()]].isCoordinated = true;
      }
      continue;
    }
    const std::uint32_t bgn = place[bond->GetBgn()->GetIdx()];
    const std::uint32_t end = place[bond->GetEnd()->GetIdx()];
    bonds_.push_back({bond, bgn, end, 0, none, 0, false});
    ++atoms_[bgn].degree;
    ++atoms_[end].degree;
  }
  LinkBonds(atoms_, bonds_, edges_);
  for (const Atom& atom : atoms_) {
    std::sort(edges_.begin() + atom.firstEdge, edges_.begin() + atom.firstEdge + atom.degree,
              [](const Edge& a, const Edge& b) { return a.atom < b.atom; });
  }
}

void SmilesWriter::Prepare() {
  FindLowerCase();
  for (const Bond& bond : bonds_) {
    if (!IsWrittenDouble(bond)) continue;
    ++atoms_[bond.bgn].doubles;
    ++atoms_[bond.end].doubles;
  }
  ChooseMarks();
}

// Returns the texts of the components.
std::vector<std::string> SmilesWriter::Write() {
  Prepare();
  std::vector<std::string> parts;
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    if (atoms_[a].visit != 0) continue;
    // At the start of a SMILES, readers disagree on the position of a lone pair: if that of a
    // component's first atom matters, the text starts with a neighbour.
    const std::uint32_t start = HasLonePairStereo(a) ? Edges(a).front().atom : a;
    FindTree(start);
    WritePart(start);
    parts.push_back(std::exchange(text_, {}));
  }
  return parts;
}

// Returns texts which, joined, have all atoms in order of rank. Ring closures connect them.
std::vector<std::string> SmilesWriter::WriteByRank() {
  Prepare();
  std::vector<std::string> parts;
  for (const std::uint32_t start : FindTreesByRank()) {
    WritePart(start);
    parts.push_back(std::exchange(text_, {}));
  }
  return parts;
}

// Double bonds whose configuration wasn't written.
std::vector<ZQBondBase*> SmilesWriter::FindLostBonds() const {
  std::vector<ZQBondBase*> lost;
  for (std::uint32_t b = 0; b < bonds_.size(); ++b) {
    const Bond& bond = bonds_[b];
    if (bond.bond->GetStereo() == ZQBondStereo::None) continue;
    if (ends_[bond.bgn].bond != b || !IsMarked(bond.bgn)) lost.push_back(bond.bond);
  }
  return lost;
}

// A dummy atom has no lower case, and is read as aromatic between aromatic neighbours.
void SmilesWriter::FindLowerCase() {
  for (Atom& atom : atoms_) {
    atom.lower = atom.atom->IsAromatic() && IsAromaticElement(atom.atom->GetAtomicNum());
  }
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    if (atoms_[a].atom->GetAtomicNum() != 0) continue;
    const auto edges = Edges(a);
    atoms_[a].lower =
        std::count_if(edges.begin(), edges.end(), [this](const Edge& edge) {
          return atoms_[edge.atom].lower && atoms_[edge.atom].atom->GetAtomicNum() != 0;
        }) >= 2;
  }
}

void SmilesWriter::FindTree(std::uint32_t start) {
  struct Visit {
    std::uint32_t atom;
    std::uint32_t nextEdge;
  };
  std::vector<Visit> stack{{start, 0}};
  std::uint32_t count = 1;
  atoms_[start].visit = count;
  while (!stack.empty()) {
    Visit& top = stack.back();
    if (top.nextEdge == atoms_[top.atom].degree) {
      stack.pop_back();
      continue;
    }
    const Edge& edge = Edges(top.atom)[top.nextEdge++];
    Atom& next = atoms_[edge.atom];
    if (next.visit != 0) continue;
    next.visit = ++count;
    next.parentBond = edge.bond;
    bonds_[edge.bond].isTree = true;
    stack.push_back({edge.atom, 0});
  }
}

// Attaches each atom to the last one of the current branch that is bonded to it. If there is none,
// it starts another tree. Returns the starts.
std::vector<std::uint32_t> SmilesWriter::FindTreesByRank() {
  std::vector<std::uint32_t> starts;
  std::vector<std::uint32_t> branch;
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    atoms_[a].visit = a + 1;
    const auto isBonded = [this, a](std::uint32_t parent) {
      for (const Edge& edge : Edges(a)) {
        if (edge.atom == parent) atoms_[a].parentBond = edge.bond;
      }
      return atoms_[a].parentBond != none;
    };
    while (!branch.empty() && !isBonded(branch.back())) branch.pop_back();
    if (branch.empty()) {
      starts.push_back(a);
    } else {
      bonds_[atoms_[a].parentBond].isTree = true;
    }
    branch.push_back(a);
  }
  return starts;
}

// Each end of a double bond with a configuration gets a mark on one of its other bonds. A mark also
// describes a second double bond at the bond's other end, which couples the two.
void SmilesWriter::ChooseMarks() {
  ends_.resize(atoms_.size());
  bool any = false;
  for (std::uint32_t b = 0; b < bonds_.size(); ++b) {
    const Bond& bond = bonds_[b];
    if (bond.bond->GetStereo() == ZQBondStereo::None || !IsWrittenDouble(bond)) continue;
    std::array<StereoEnd, 2> found;
    bool canWrite = true;
    for (const std::size_t side : {0, 1}) {
      const std::uint32_t atom = side == 0 ? bond.bgn : bond.end;
      bool canMark = false;
      for (const Edge& edge : Edges(atom)) {
        if (edge.bond == b) continue;
        found[side].reference = std::min(found[side].reference, edge.bond);
        canMark |= CanMark(bonds_[edge.bond]);
      }
      found[side].bond = b;
      canWrite &= canMark && atoms_[atom].degree <= 3 && atoms_[atom].doubles == 1 &&
                  !atoms_[atom].isCoordinated && NumLeftHydrogens(*atoms_[atom].atom) == 0;
    }
    if (!canWrite) continue;
    ends_[bond.bgn] = found[0];
    ends_[bond.end] = found[1];
    any = true;
  }
  if (!any) return;
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    if (ends_[a].bond != none && !IsMarked(a)) ChooseMark(a);
  }
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    if (ends_[a].bond == none || ends_[a].position != 0) continue;
    const auto system = static_cast<std::uint32_t>(systems_.size());
    systems_.push_back({false, 0});
    PlaceSystem(a, system);
  }
  // Marks for neighbouring bonds mustn't imply a configuration of a bond that has none.
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    if (ends_[a].bond != none) continue;
    for (const Edge& edge : Edges(a)) {
      const Bond& bond = bonds_[edge.bond];
      if (edge.atom > a && IsWrittenDouble(bond) && IsMarked(a) && IsMarked(edge.atom) &&
          !IsInSmallRing(*bond.bond)) {
        EraseSystemsAt(a);
      }
    }
  }
}

void SmilesWriter::EraseSystemsAt(std::uint32_t atom) {
  for (const Edge& edge : Edges(atom)) {
    const std::uint32_t system = bonds_[edge.bond].system;
    if (system != none) systems_[system].erased = true;
  }
}

bool SmilesWriter::IsMarked(std::uint32_t atom) const {
  const auto edges = Edges(atom);
  return std::any_of(edges.begin(), edges.end(),
                     [this](const Edge& edge) { return GetMark(bonds_[edge.bond]) != 0; });
}

// Prefers a bond whose far end has no double bond that the mark would also describe.
void SmilesWriter::ChooseMark(std::uint32_t atom) {
  const auto isDescribed = [this](const Edge& edge) {
    return IsWrittenDouble(bonds_[edge.bond]) && !IsInSmallRing(*bonds_[edge.bond].bond);
  };
  Bond* best = nullptr;
  int bestScore = 3;
  for (const Edge& edge : Edges(atom)) {
    if (edge.bond == ends_[atom].bond || !CanMark(bonds_[edge.bond])) continue;
    const auto beyond = Edges(edge.atom);
    const int score = ends_[edge.atom].bond != none                            ? 1
                      : std::any_of(beyond.begin(), beyond.end(), isDescribed) ? 2
                                                                               : 0;
    if (score >= bestScore) continue;
    bestScore = score;
    best = &bonds_[edge.bond];
  }
  if (best) best->mark = 1;  // its direction is computed later
}

void SmilesWriter::PlaceSystem(std::uint32_t start, std::uint32_t system) {
  bool conflict = false;
  std::vector<std::uint32_t> queue;
  const auto place = [&](std::uint32_t atom, int position) {
    std::int8_t& own = ends_[atom].position;
    if (own == 0) {
      own = static_cast<std::int8_t>(position);
      queue.push_back(atom);
    } else if (own != position) {
      conflict = true;
    }
  };
  place(start, 1);
  for (std::size_t head = 0; head < queue.size(); ++head) {
    const std::uint32_t a = queue[head];
    const StereoEnd& end = ends_[a];
    for (const Edge& edge : Edges(a)) {
      Bond& bond = bonds_[edge.bond];
      if (edge.bond == end.bond) {
        place(edge.atom,
              bond.bond->GetStereo() == ZQBondStereo::Cis ? end.position : -end.position);
      } else if (bond.mark != 0) {
        const int above = edge.bond == end.reference ? end.position : -end.position;
        bond.mark = static_cast<std::int8_t>(a == bond.bgn ? above : -above);
        bond.system = system;
        const StereoEnd& far = ends_[edge.atom];
        if (far.bond != none) place(edge.atom, edge.bond == far.reference ? -above : above);
      }
    }
  }
  // Around a ring of such bonds the marks may contradict each other: no SMILES can describe it.
  if (conflict) systems_[system].erased = true;
}

void SmilesWriter::WritePart(std::uint32_t start) {
  std::vector<Step> steps{{Step::Go, start}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    if (step.kind == Step::Close) {
      text_ += ')';
      continue;
    }
    if (step.kind == Step::Open) text_ += '(';
    const Atom& atom = atoms_[step.atom];
    if (atom.parentBond != none) {
      const Bond& bond = bonds_[atom.parentBond];
      WriteBond(atom.parentBond, bond.bgn == step.atom ? bond.end : bond.bgn);
    }
    WriteAtom(step.atom);
    // The last child continues the main chain; the others are branches before it.
    for (std::size_t i = children_.size(); i-- > 0;) {
      if (i + 1 == children_.size()) {
        steps.push_back({Step::Go, children_[i].atom});
      } else {
        steps.push_back({Step::Close, none});
        steps.push_back({Step::Open, children_[i].atom});
      }
    }
  }
}

void SmilesWriter::WriteAtom(std::uint32_t idx) {
  const Atom& own = atoms_[idx];
  closings_.clear();
  openings_.clear();
  children_.clear();
  for (const Edge& edge : Edges(idx)) {
    if (edge.bond == own.parentBond) continue;
    if (bonds_[edge.bond].isTree) {
      children_.push_back(edge);
    } else {
      (atoms_[edge.atom].visit < own.visit ? closings_ : openings_).push_back(edge);
    }
  }

  const ZQAtomBase& atom = *own.atom;
  std::string symbol = ZQGetAtomicSymbol(atom.GetAtomicNum());
  if (own.lower && atom.GetAtomicNum() != 0) symbol[0] = static_cast<char>(symbol[0] - 'A' + 'a');
  const ZQAtomStereo stereo = GetWrittenStereo(idx);
  if (stereo == ZQAtomStereo::None && !NeedsBracket(idx)) {
    text_ += symbol;
  } else {
    text_ += '[';
    if (atom.GetIsotope() != 0) text_ += std::to_string(atom.GetIsotope());
    text_ += symbol;
    if (stereo != ZQAtomStereo::None) text_ += stereo == ZQAtomStereo::Clockwise ? "@@" : "@";
    if (atom.GetImplicitHCount() != 0) text_ += 'H';
    if (atom.GetImplicitHCount() > 1) {
      text_ += std::to_string(std::min(atom.GetImplicitHCount(), mostInBracket));
    }
    const std::int64_t charge = atom.GetFormalCharge();
    if (charge != 0) text_ += charge > 0 ? '+' : '-';
    if (charge > 1 || charge < -1) text_ += std::to_string(std::abs(charge));
    if (atom.GetMapIdx() != 0) text_ += ':' + std::to_string(atom.GetMapIdx());
    text_ += ']';
  }

  for (const Edge& edge : closings_) WriteRingNumber(bonds_[edge.bond].ring);
  for (const Edge& edge : openings_) {
    std::uint32_t number = nextNumber_;
    if (freeNumbers_.empty()) {
      ++nextNumber_;
    } else {
      number = freeNumbers_.top();
      freeNumbers_.pop();
    }
    bonds_[edge.bond].ring = number;
    WriteBond(edge.bond, idx);
    WriteRingNumber(number);
  }
  for (const Edge& edge : closings_) freeNumbers_.push(bonds_[edge.bond].ring);
  for (unsigned int left = NumLeftHydrogens(atom); left != 0; --left) text_ += "([H])";
}

void SmilesWriter::WriteRingNumber(std::uint32_t number) {
  if (number > 99) {
    text_ += "%(" + std::to_string(number) + ')';
  } else {
    if (number > 9) text_ += '%';
    text_ += std::to_string(number);
  }
}

void SmilesWriter::WriteBond(std::uint32_t idx, std::uint32_t from) {
  const Bond& bond = bonds_[idx];
  if (GetMark(bond) != 0) {
    const int mark = from == bond.bgn ? bond.mark : -bond.mark;
    // The first mark of a system is always the same, whichever end was placed first.
    std::int8_t& turn = systems_[bond.system].turn;
    if (turn == 0) turn = static_cast<std::int8_t>(mark);
    text_ += mark == turn ? '/' : '\\';
    return;
  }
  if (IsWrittenAromatic(bond)) return;
  switch (bond.bond->GetOrder()) {
    case 2:
      text_ += '=';
      break;
    case 3:
      text_ += '#';
      break;
    case 4:
      text_ += '$';
      break;
    default:
      if (atoms_[bond.bgn].lower && atoms_[bond.end].lower) text_ += '-';
  }
}

// Converts the configuration from the order of bond indices to the order of the text.
ZQAtomStereo SmilesWriter::GetWrittenStereo(std::uint32_t idx) const {
  const Atom& own = atoms_[idx];
  const ZQAtomStereo stereo = own.atom->GetStereo();
  if (stereo == ZQAtomStereo::None || own.isCoordinated) return ZQAtomStereo::None;
  if (!HasFourPlaces(own.degree, own.atom->GetImplicitHCount())) return ZQAtomStereo::None;
  // Bonds are numbered from 1 here, so that the hydrogen or lone pair sorts first.
  std::array<std::uint32_t, 4> order{};
  std::size_t count = 0;
  if (own.parentBond != none) order[count++] = own.parentBond + 1;
  if (own.degree == 3) order[count++] = 0;
  for (const std::vector<Edge>* edges : {&closings_, &openings_, &children_}) {
    for (const Edge& edge : *edges) order[count++] = edge.bond + 1;
  }
  return Turned(stereo, IsOdd(order));
}

// Whether the atom without brackets would be read back differently.
bool SmilesWriter::NeedsBracket(std::uint32_t idx) const {
  const Atom& own = atoms_[idx];
  const ZQAtomBase& atom = *own.atom;
  if (!IsOrganic(atom.GetAtomicNum()) || atom.GetFormalCharge() != 0 || atom.GetIsotope() != 0 ||
      atom.GetMapIdx() != 0) {
    return true;
  }
  unsigned int bondSum = 0;
  bool multiple = false;
  for (const Edge& edge : Edges(idx)) {
    const Bond& bond = bonds_[edge.bond];
    const unsigned int order = IsWrittenAromatic(bond) ? 1 : bond.bond->GetOrder();
    bondSum += order;
    multiple |= order > 1;
  }
  return atom.GetImplicitHCount() !=
         (own.lower ? GetAromaticHCount(atom.GetAtomicNum(), 0, bondSum, multiple)
                    : ZQDefaultHCount(atom.GetAtomicNum(), 0, bondSum));
}

}  // namespace

std::vector<std::string> WriteSmilesParts(const ZQMolBase& mol,
                                          const std::vector<unsigned int>& rank,
                                          std::vector<ZQBondBase*>* lostBonds) {
  SmilesWriter writer(mol, rank);
  std::vector<std::string> parts = writer.Write();
  if (lostBonds) *lostBonds = writer.FindLostBonds();
  return parts;
}

std::string JoinSmilesParts(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += '.';
    text += part;
  }
  return text;
}

bool HasBondsWithoutOrder(const ZQMolBase& mol) {
  for (unsigned int b = 0; b < mol.GetMaxBondIdx(); ++b) {
    const ZQBondBase* bond = mol.GetBondAt(b);
    if (bond && bond->GetOrder() == 0) return true;
  }
  return false;
}

namespace {

std::string WriteInOrder(const ZQMolBase& mol, bool keepOrder) {
  std::vector<unsigned int> rank(mol.GetMaxAtomIdx());
  std::iota(rank.begin(), rank.end(), 0U);
  SmilesWriter writer(mol, rank);
  return JoinSmilesParts(keepOrder ? writer.WriteByRank() : writer.Write());
}

// Whether an aromatic atom of the molecule is in no ring of the written one.
bool HasLostRings(const ZQMolBase& mol, const ZQMolBase& written) {
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    if (atom->IsAromatic() && !written.GetAtomAt(atom->GetIdx())->IsInRing()) return true;
  }
  return false;
}

std::string WriteSmiles(const ZQMolBase& mol, bool keepOrder) {
  if (!HasBondsWithoutOrder(mol)) return WriteInOrder(mol, keepOrder);
  ZQGraphMol written(mol);
  for (unsigned int b = 0; b < mol.GetMaxBondIdx(); ++b) {
    ZQBondBase* bond = written.GetBondAt(b);
    if (bond && bond->GetOrder() == 0) written.DeleteBond(bond);
  }
  ZQFindRingAtomsAndBonds(written);
  if (!HasLostRings(mol, written)) return WriteInOrder(mol, keepOrder);
  // A ring closed by such a bond can't be read back as aromatic.
  ZQAssignAromaticFlags(written, 2, true, 0, false);
  ZQGraphMol flagged(mol);
  for (auto atom = written.GetAtoms(); atom; ++atom) {
    flagged.GetAtomAt(atom->GetIdx())->SetAromatic(atom->IsAromatic());
  }
  for (auto bond = written.GetBonds(); bond; ++bond) {
    flagged.GetBondAt(bond->GetIdx())->SetAromatic(bond->IsAromatic());
  }
  return WriteInOrder(flagged, keepOrder);
}

}  // namespace

std::string ZQMolToSmiles(const ZQMolBase& mol) { return WriteSmiles(mol, false); }

std::string ZQMolToOrderedSmiles(const ZQMolBase& mol) { return WriteSmiles(mol, true); }

}  // namespace Quarnel
