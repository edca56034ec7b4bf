#include "python/rdkit_local.h"

#include <algorithm>
#include <cstring>

namespace KorvexPython {

namespace {

// Numbers of RDKit's enumerations.
constexpr std::uint8_t clockwise = 1;
constexpr std::uint8_t counterClockwise = 2;
constexpr std::uint8_t bondAromatic = 12;
constexpr std::uint8_t bondDative = 17;
constexpr std::uint8_t bondZero = 21;
constexpr std::uint8_t stereoZ = 2;
constexpr std::uint8_t stereoE = 3;
constexpr std::uint8_t stereoCis = 4;
constexpr std::uint8_t stereoTrans = 5;

/// Reads numbers, little-endian. Once past the end, all are 0, and it has failed.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}
  template <class T>
  T Read() {
    T value{};
    if (bytes_.size() < sizeof(T)) {
      hasFailed_ = true;
      return value;
    }
    std::memcpy(&value, bytes_.data(), sizeof(T));
    bytes_.remove_prefix(sizeof(T));
    return value;
  }
  std::uint8_t Byte() { return Read<std::uint8_t>(); }
  void Skip(std::uint32_t n) {
    hasFailed_ |= n > bytes_.size();
    bytes_.remove_prefix(std::min<std::size_t>(n, bytes_.size()));
  }
  void Expect(bool condition) { hasFailed_ |= !condition; }
  bool HasFailed() const { return hasFailed_; }
  std::size_t NumLeft() const { return bytes_.size(); }

 private:
  std::string_view bytes_;
  bool hasFailed_ = false;
};

/// The counted hydrogens and what they follow from.
struct Valence {
  std::uint32_t explicitH = 0;
  std::uint32_t implicitH = 0;
  std::uint32_t bondSum = 0;  // an aromatic bond counts 1
  bool isFixed = false;       // no hydrogens but the explicit ones
};

void ReadAtom(ByteReader& in, RdkitGraph::Atom& atom, Valence& valence) {
  constexpr std::uint8_t isAromatic = 0x40;
  constexpr std::uint8_t noImplicit = 0x20;
  constexpr std::uint8_t hasMap = 0x08;
  constexpr std::uint8_t hasLabel = 0x04;
  constexpr std::uint8_t mapTag = 24;
  constexpr std::uint8_t labelTag = 44;
  atom.atomicNum = in.Byte();
  const std::uint8_t flags = in.Byte();
  in.Expect((flags & ~(isAromatic | noImplicit | hasMap | hasLabel)) == 0);
  atom.aromatic = (flags & isAromatic) != 0;
  valence.isFixed = (flags & noImplicit) != 0;
  // Which of the following fields differ from their defaults and are there, in the order of bits.
  const auto fields = in.Read<std::uint32_t>();
  const auto has = [fields](unsigned int bit) { return (fields >> bit & 1) != 0; };
  in.Expect(fields >> 9 == 0 && !has(0));
  if (has(1)) atom.charge = in.Read<std::int8_t>();
  if (has(2)) atom.chiralTag = in.Byte();
  if (has(3)) in.Byte();  // hybridization
  if (has(4)) valence.explicitH = in.Byte();
  // The explicit valence is missing in a molecule whose hydrogens were never counted, and where it
  // is 0.
  if (has(5)) in.Byte();
  if (has(6)) valence.implicitH = in.Byte();
  if (has(7)) in.Byte();  // radical electrons
  if (has(8)) atom.isotope = in.Read<std::uint32_t>();
  if ((flags & hasMap) != 0) {
    in.Expect(in.Byte() == mapTag);
    atom.mapIdx = in.Byte();
    if (atom.mapIdx == 255) atom.mapIdx = in.Read<std::uint32_t>();
  }
  if ((flags & hasLabel) != 0) {
    in.Expect(in.Byte() == labelTag);
    in.Skip(in.Read<std::uint32_t>());
  }
  atom.hCount = static_cast<std::uint8_t>(valence.explicitH + valence.implicitH);
}

/// Returns whether the bond has a configuration or a direction.
template <class Index>
bool ReadBond(ByteReader& in, RdkitGraph::Bond& bond) {
  constexpr std::uint8_t isAromatic = 0x40;
  constexpr std::uint8_t isConjugated = 0x20;
  constexpr std::uint8_t hasType = 0x08;
  constexpr std::uint8_t hasDirection = 0x04;
  constexpr std::uint8_t hasStereo = 0x02;
  bond.bgn = in.Read<Index>();
  bond.end = in.Read<Index>();
  const std::uint8_t flags = in.Byte();
  in.Expect((flags & ~(isAromatic | isConjugated | hasType | hasDirection | hasStereo)) == 0);
  bond.aromatic = (flags & isAromatic) != 0;
  if ((flags & hasType) != 0) bond.type = in.Byte();
  if ((flags & hasDirection) != 0) in.Byte();
  if ((flags & hasStereo) != 0) {
    bond.stereo = in.Byte();
    const std::uint8_t numAtoms = in.Byte();  // none, or a neighbour of each end
    in.Expect(numAtoms == 0 || numAtoms == bond.stereoAtoms.size());
    if (numAtoms == 0) {
      bond.stereo = 0;
    } else {
      for (std::uint32_t& atom : bond.stereoAtoms) atom = in.Read<Index>();
    }
  }
  return (flags & (hasDirection | hasStereo)) != 0;
}

template <class Index>
void ReadBonds(ByteReader& in, RdkitGraph& graph, std::uint32_t count,
               std::vector<Valence>& valences) {
  constexpr std::size_t leastBytes = 2 * sizeof(Index) + 1;
  in.Expect(count <= in.NumLeft() / leastBytes);
  if (in.HasFailed()) return;
  graph.bonds.resize(count);
  for (RdkitGraph::Bond& bond : graph.bonds) {
    graph.hasStereo |= ReadBond<Index>(in, bond);
    in.Expect(std::max(bond.bgn, bond.end) < valences.size());
    if (in.HasFailed()) return;
    // Other atoms with aromatic bonds were edited.
    in.Expect(bond.type != bondAromatic ||
              (graph.atoms[bond.bgn].aromatic && graph.atoms[bond.end].aromatic));
    const std::uint32_t order = bond.type <= 4 ? bond.type : bond.type == bondAromatic ? 1 : 0;
    for (const std::uint32_t atom : {bond.bgn, bond.end}) valences[atom].bondSum += order;
  }
}

/// Whether the hydrogens follow from the atom's bonds.
bool IsPlausible(const RdkitGraph::Atom& atom, const Valence& valence) {
  if (valence.isFixed) return valence.implicitH == 0;
  const std::uint32_t sum = valence.bondSum + valence.explicitH;
  const auto isUsual = [&](std::uint32_t bonds) {
    return valence.implicitH == ZQDefaultHCount(atom.atomicNum, atom.charge, bonds);
  };
  // An aromatic atom has one of the ring's double bonds, or it has none, as in thiophene. A carbon
  // without one, as in an anion, can't be told from one that was edited.
  constexpr std::uint8_t carbon = 6;
  if (!atom.aromatic) return isUsual(sum);
  return isUsual(sum + 1) || (atom.atomicNum != carbon && isUsual(sum));
}

}  // namespace

bool ReadRdkitRecord(RdkitGraph& graph, std::string_view record) {
  constexpr std::uint32_t magic = 0xDEADBEEF;
  constexpr std::uint8_t firstAtomTag = 1;
  constexpr std::uint8_t firstBondTag = 11;
  constexpr std::size_t leastBytesOfAtom = 6;
  ByteReader in(record);
  in.Expect(in.Read<std::uint32_t>() == magic);
  in.Expect(in.Read<std::uint32_t>() == 0);
  graph.version = in.Read<std::uint32_t>();
  in.Skip(8);  // minor version and patch
  const auto numAtoms = in.Read<std::uint32_t>();
  const auto numBonds = in.Read<std::uint32_t>();
  in.Byte();  // what follows the bonds
  in.Expect(in.Byte() == firstAtomTag && numAtoms <= in.NumLeft() / leastBytesOfAtom);
  if (in.HasFailed()) return false;
  graph.atoms.resize(numAtoms);
  std::vector<Valence> valences(numAtoms);
  for (std::size_t i = 0; i < numAtoms; ++i) {
    ReadAtom(in, graph.atoms[i], valences[i]);
    graph.hasStereo |= graph.atoms[i].chiralTag != 0;
  }
  in.Expect(in.Byte() == firstBondTag);
  if (numAtoms > 255) {
    ReadBonds<std::uint32_t>(in, graph, numBonds, valences);
  } else {
    ReadBonds<std::uint8_t>(in, graph, numBonds, valences);
  }
  if (in.HasFailed()) return false;
  for (std::size_t i = 0; i < numAtoms; ++i) {
    if (!IsPlausible(graph.atoms[i], valences[i])) return false;
  }
  return true;
}

namespace {

/// The tag is of the bonds by index, an implicit hydrogen or lone pair last; in korvex it is first.
ZQAtomStereo StereoOf(const RdkitGraph::Atom& atom, std::uint32_t degree) {
  const bool isSolid = atom.chiralTag == clockwise || atom.chiralTag == counterClockwise;
  if (!isSolid) return ZQAtomStereo::None;
  if (degree == 4 && atom.hCount == 0) {
    return atom.chiralTag == clockwise ? ZQAtomStereo::Clockwise : ZQAtomStereo::CounterClockwise;
  }
  if (degree != 3 || atom.hCount > 1) return ZQAtomStereo::None;
  return atom.chiralTag == clockwise ? ZQAtomStereo::CounterClockwise : ZQAtomStereo::Clockwise;
}

/// Whether the neighbour, which a configuration refers to, is another one than the first.
bool IsSecond(const ZQAtomBase& end, const ZQBondBase& bond, std::uint32_t neighbour) {
  const ZQBondBase* first = end.NextBond(nullptr);
  if (first == &bond) first = end.NextBond(first);
  return first && first->GetNbr(&end)->GetIdx() != neighbour;
}

ZQBondStereo StereoOf(const RdkitGraph::Bond& bond, const ZQBondBase& made) {
  const bool isCis = bond.stereo == stereoZ || bond.stereo == stereoCis;
  const bool isTrans = bond.stereo == stereoE || bond.stereo == stereoTrans;
  if (!isCis && !isTrans) return ZQBondStereo::None;
  const bool isTurned = IsSecond(*made.GetBgn(), made, bond.stereoAtoms[0]) !=
                        IsSecond(*made.GetEnd(), made, bond.stereoAtoms[1]);
  return isCis != isTurned ? ZQBondStereo::Cis : ZQBondStereo::Trans;
}

void SetStereo(ZQMol& mol, const RdkitGraph& graph) {
  std::vector<std::uint32_t> degrees(graph.atoms.size());
  for (const RdkitGraph::Bond& bond : graph.bonds) {
    ++degrees[bond.bgn];
    ++degrees[bond.end];
  }
  for (std::size_t i = 0; i < graph.atoms.size(); ++i) {
    if (graph.atoms[i].chiralTag == 0) continue;
    const ZQAtomStereo stereo = StereoOf(graph.atoms[i], degrees[i]);
    if (stereo == ZQAtomStereo::None) continue;
    mol.GetAtomAt(static_cast<unsigned int>(i))->SetStereo(stereo);
  }
  for (std::size_t i = 0; i < graph.bonds.size(); ++i) {
    if (graph.bonds[i].stereo == 0) continue;
    ZQBondBase* made = mol.GetBondAt(static_cast<unsigned int>(i));
    const ZQBondStereo stereo = StereoOf(graph.bonds[i], *made);
    if (stereo != ZQBondStereo::None) made->SetStereo(stereo);
  }
}

}  // namespace

bool MakeMolecule(ZQMol& mol, const RdkitGraph& graph, std::string& fault) {
  mol.Clear();
  mol.BeginEdit();
  std::vector<ZQAtomBase*> made;
  made.reserve(graph.atoms.size());
  bool anyAromatic = false;
  for (const RdkitGraph::Atom& atom : graph.atoms) {
    made.push_back(mol.NewAtom(atom.atomicNum));
    if (atom.charge != 0) made.back()->SetFormalCharge(atom.charge);
    if (atom.isotope != 0) made.back()->SetIsotope(atom.isotope);
    if (atom.mapIdx != 0) made.back()->SetMapIdx(atom.mapIdx);
    if (atom.hCount != 0) made.back()->SetImplicitHCount(atom.hCount);
    if (atom.aromatic) made.back()->SetAromatic(true);
    anyAromatic |= atom.aromatic;
  }
  for (std::size_t i = 0; i < graph.bonds.size(); ++i) {
    const RdkitGraph::Bond& bond = graph.bonds[i];
    // A triple bond of an aromatic ring is one.
    const bool isAromatic = bond.type == bondAromatic || (bond.aromatic && bond.type <= 2);
    const bool hasNoOrder = bond.type == bondDative || bond.type == bondZero;
    const bool isKnown = isAromatic || hasNoOrder || (bond.type >= 1 && bond.type <= 4);
    ZQBondBase* bondMade = isKnown ? mol.NewBond(made[bond.bgn], made[bond.end],
                                                 isAromatic   ? 1
                                                 : hasNoOrder ? 0
                                                              : bond.type)
                                   : nullptr;
    if (!bondMade) {
      fault = "bond " + std::to_string(i) + " has no order that is known, or joins no two atoms";
      return false;
    }
    if (isAromatic) bondMade->SetAromatic(true);
    if (bond.type != bondAromatic) continue;
    anyAromatic = true;
    made[bond.bgn]->SetAromatic(true);
    made[bond.end]->SetAromatic(true);
  }
  if (graph.hasStereo) SetStereo(mol, graph);
  mol.EndEdit();
  unsigned int culprit = 0;
  if (anyAromatic && !ZQKekulize(mol, &culprit)) {
    fault = "atom " + std::to_string(culprit) +
            " is aromatic, but in no ring of alternating single and double bonds";
    return false;
  }
  return true;
}

}  // namespace KorvexPython
