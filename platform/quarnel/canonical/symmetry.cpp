#include <algorithm>
#include <numeric>
#include <vector>

#include "contract/quarnel/perception.h"
#include "platform/quarnel/canonical/automorphism_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/hybridization_local.h"
#include "platform/quarnel/perception/partition_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {
namespace {

/// Limits on the edges visited by the search for automorphisms, per atom and in addition. Of 38,000
/// molecules, 8,000 of them selected as hard, none took more than 33 per atom.
constexpr std::uint64_t budgetPerAtom = 1000;
constexpr std::uint64_t baseBudget = 50000;

/// Joins atoms of one cell into orbits by the automorphisms found.
class Orbits {
 public:
  void Find(const MolView& view, const Partition& partition);
  std::uint32_t OrbitOf(std::uint32_t atom) {
    while (parent_[atom] != atom) atom = parent_[atom] = parent_[parent_[atom]];
    return atom;
  }

 private:
  bool FindMapping(std::uint32_t from, std::uint32_t to);

  AutomorphismSearch search_;
  std::vector<std::uint32_t> parent_;  // of the orbits' trees
  std::vector<std::uint32_t> representatives_;
};

void Orbits::Find(const MolView& view, const Partition& partition) {
  const std::uint32_t n = view.NumAtoms();
  parent_.resize(n);
  std::iota(parent_.begin(), parent_.end(), 0);
  const std::uint64_t budget = baseBudget + budgetPerAtom * n;
  search_.SetGraph(view, partition, budget, budget);
  const auto numAtoms = static_cast<std::uint32_t>(partition.Atoms().size());
  for (std::uint32_t cell = 0; cell < numAtoms;) {
    const std::span<const std::uint32_t> members = partition.Cell(cell);
    cell += static_cast<std::uint32_t>(members.size());
    representatives_.assign(1, members.front());
    for (const std::uint32_t a : members.subspan(1)) {
      search_.Spend(representatives_.size());
      if (search_.BudgetLeft() == 0) return;
      const auto isJoined = [&](std::uint32_t r) { return OrbitOf(r) == OrbitOf(a); };
      const auto isMapped = [&](std::uint32_t r) { return FindMapping(r, a); };
      if (std::ranges::any_of(representatives_, isJoined)) continue;
      if (std::ranges::any_of(representatives_, isMapped)) continue;
      representatives_.push_back(a);
    }
  }
}

bool Orbits::FindMapping(std::uint32_t from, std::uint32_t to) {
  if (!search_.Find(from, to)) return false;
  for (const auto& [a, image] : search_.Moves()) parent_[OrbitOf(a)] = OrbitOf(image);
  return true;
}

/// Splits by the number of explicit hydrogens: paths distinguish them from implicit ones.
void SplitByExplicitHydrogens(const MolView& view, Partition& partition) {
  if (partition.Atoms().size() == view.atoms.size()) return;
  std::vector<std::uint32_t> explicitH(view.atoms.size(), 0);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    explicitH[a] = view.atoms[a].degree - partition.Degree(a);
  }
  partition.Split(view, explicitH);
}

/// Separates atoms by the configurations around them, repeatedly, since this makes further
/// neighbours distinct. An atom whose configuration remains undetermined, as in
/// 1,4-dimethylcyclohexane, gets a cell of its own.
void SplitByStereo(const MolView& view, Partition& partition) {
  std::vector<std::uint32_t> property(view.atoms.size(), 0);
  std::vector<std::uint8_t> kinds(view.bonds.size(), 0);
  std::uint32_t numCells = 0;
  while (partition.NumCells() != numCells) {
    numCells = partition.NumCells();
    for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
      if (!partition.IsFolded(a)) property[a] = ConfigurationOf(view, partition, a);
    }
    for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
      kinds[b] = ConfigurationOf(view, partition, view.bonds[b]);
    }
    partition.Split(view, property);
    partition.SplitBonds(view, kinds);
  }
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    property[a] = property[a] == Undetermined ? a + 1 : 0;
  }
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    if (kinds[b] == Undetermined) property[view.bonds[b].bgn] = view.bonds[b].bgn + 1;
  }
  partition.Split(view, property);
}

/// Separates atoms and bonds by properties perceived earlier, possibly by other rules.
void SplitByPerceived(const ZQMolBase& mol, const MolView& view, Partition& partition) {
  const bool hasHyb = mol.IsPerceived(ZQPerceived::Hybridization);
  const bool hasChiral = mol.IsPerceived(ZQPerceived::Chirality);
  if (!hasHyb && !hasChiral) return;
  std::vector<std::uint32_t> property(view.atoms.size(), 0);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    if (partition.IsFolded(a)) continue;
    const ZQAtomBase& atom = *view.atoms[a].atom;
    property[a] = (hasHyb ? 2 * atom.GetHyb() : 0) + (hasChiral && atom.IsChiral() ? 1 : 0);
  }
  partition.Split(view, property);
  if (!hasChiral) return;
  std::vector<std::uint8_t> kinds(view.bonds.size(), 0);
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) kinds[b] = view.bonds[b].bond->IsChiral();
  partition.SplitBonds(view, kinds);
}

}  // namespace

void ZQPerceiveSymmetry(ZQMolBase& mol, bool automorphisms, bool stereo) {
  struct Scratch {
    Partition partition;
    Chirality chirality;
    Orbits orbits;
    std::vector<std::uint8_t> hyb;
    std::vector<std::uint32_t> classes;
  };
  const Workspace<MolView> workspace;
  const Workspace<Scratch> scratch;
  auto& [partition, chirality, orbits, hyb, classes] = *scratch;
  const MolView& view = workspace->Read(mol, MolView::Properties);
  const std::uint32_t n = view.NumAtoms();
  const bool findHyb = !mol.IsPerceived(ZQPerceived::Hybridization);
  const bool findChiral = !mol.IsPerceived(ZQPerceived::Chirality);
  mol.SetPerceived(ZQPerceived::Symmetry, false);
  if (findHyb) FindHybridization(view, hyb);
  partition.Build(view);
  if (findChiral) chirality.Find(view, partition);
  SplitByPerceived(mol, view, partition);
  SplitByExplicitHydrogens(view, partition);
  if (stereo) SplitByStereo(view, partition);
  if (automorphisms) orbits.Find(view, partition);

  // Folded hydrogens have the classes of their parents plus n.
  classes.assign(std::size_t{2} * n, 0);
  unsigned int numClasses = 0;
  for (std::uint32_t a = 0; a < n; ++a) {
    const bool folded = partition.IsFolded(a);
    const std::uint32_t parent = folded ? view.edges[view.atoms[a].firstEdge].atom : a;
    const std::uint32_t group = automorphisms ? orbits.OrbitOf(parent) : partition.CellOf(parent);
    unsigned int& symmetryClass = classes[group + (folded ? n : 0)];
    if (symmetryClass == 0) symmetryClass = ++numClasses;
    ZQAtomBase& atom = *view.atoms[a].atom;
    atom.SetSymmetryClass(symmetryClass);
    if (findHyb) atom.SetHyb(hyb[a]);
    if (findChiral) atom.SetChiral(chirality.atoms[a] != 0);
  }
  for (std::uint32_t b = 0; findChiral && b < view.NumBonds(); ++b) {
    view.bonds[b].bond->SetChiral(chirality.bonds[b] != 0);
  }
  mol.SetPerceived(ZQPerceived::Hybridization, true);
  mol.SetPerceived(ZQPerceived::Chirality, true);
  if (automorphisms) mol.SetPerceived(ZQPerceived::Symmetry, true);
}

}  // namespace Quarnel
