#include <coordgen/sketcherMinimizer.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <mutex>

#include "platform/quarnel/depiction/coordgen_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {
namespace {

// The search for a layout without overlaps grows with a high power of the number of atoms: with the
// full precision, 100 atoms take up to a second and 300 atoms seven. Lower precision ends it
// earlier. Large molecules go without it; `Mender` does the necessary part in a fraction of the
// time, with some more bonds that cross.
constexpr std::size_t mostForSearch = 100;

float PrecisionFor(std::size_t numAtoms) {
  constexpr float mostForFull = 40;
  constexpr float least = 1e-4F;  // for what it does besides the search
  if (numAtoms > mostForSearch) return least;
  const float ratio = mostForFull / static_cast<float>(numAtoms);
  return SKETCHER_STANDARD_PRECISION * std::min(1.F, ratio * ratio * ratio);
}

void SetStereo(const MolView& view, const MolView::Bond& bond,
               const std::vector<sketcherMinimizerAtom*>& made, sketcherMinimizerBond& target) {
  const ZQBondStereo stereo = bond.bond->GetStereo();
  if (bond.order != 2 || stereo == ZQBondStereo::None || view.atoms[bond.bgn].degree < 2 ||
      view.atoms[bond.end].degree < 2) {
    return;
  }
  sketcherMinimizerBondStereoInfo info;
  info.atom1 = made[ReferenceOf(view.Edges(bond.bgn).data(), bond.end)];
  info.atom2 = made[ReferenceOf(view.Edges(bond.end).data(), bond.bgn)];
  info.stereo = stereo == ZQBondStereo::Cis ? sketcherMinimizerBondStereoInfo::cis
                                            : sketcherMinimizerBondStereoInfo::trans;
  target.setStereoChemistry(info);
}

bool Place(const MolView& view, std::span<const std::uint32_t> atoms,
           std::vector<ZQPoint>& points) {
  sketcherMinimizer minimizer(PrecisionFor(atoms.size()));
  auto* const molecule = new sketcherMinimizerMolecule;  // the minimizer takes it over
  std::vector<sketcherMinimizerAtom*> made(view.NumAtoms());
  for (const std::uint32_t a : atoms) {
    made[a] = molecule->addNewAtom();
    // It knows no dummy atoms.
    made[a]->setAtomicNumber(view.atoms[a].element == 0 ? 6
                                                        : static_cast<int>(view.atoms[a].element));
    made[a]->charge = view.atoms[a].charge;
    made[a]->_implicitHs = static_cast<int>(view.atoms[a].implicitH);
  }
  for (const MolView::Bond& bond : view.bonds) {
    if (!made[bond.bgn]) continue;
    sketcherMinimizerBond* const target = molecule->addNewBond(made[bond.bgn], made[bond.end]);
    target->setBondOrder(static_cast<int>(bond.order));
    SetStereo(view, bond, made, *target);
  }
  // Its initialization reads the configurations too early, before it knows the neighbours by which
  // it ranks them.
  sketcherMinimizerMolecule::assignBondsAndNeighbors(molecule->_atoms, molecule->_bonds);
  for (sketcherMinimizerBond* bond : molecule->_bonds) bond->setAbsoluteStereoFromStereoInfo();
  minimizer.initialize(molecule);
  minimizer.m_minimizer.skipFlipFragments = atoms.size() > mostForSearch;
  minimizer.runGenerateCoordinates();
  for (const std::uint32_t a : atoms) {
    const sketcherMinimizerPointF& at = made[a]->getCoordinates();
    if (!std::isfinite(at.x()) || !std::isfinite(at.y()) || std::abs(at.x()) > COORDINATES_LIMIT ||
        std::abs(at.y()) > COORDINATES_LIMIT) {
      return false;
    }
    points[a] = {at.x(), -at.y(), 0};  // its y points downwards
  }
  return true;
}

}  // namespace

bool RunCoordGen(const MolView& view, std::span<const std::uint32_t> atoms,
                 std::vector<ZQPoint>& points) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  try {
    return Place(view, atoms, points);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace Quarnel
