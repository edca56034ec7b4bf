#pragma once

/// Molecules as Python passes them: a SMILES string, a `Molecule`, or a molecule of RDKit.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "python/rdkit_local.h"

namespace KorvexPython {

/// A molecule that was read, with its title. Python can't change it.
struct Molecule {
  ZQMol mol;
};

/// What a molecule of Python is read from, without the GIL and on any thread. Keeps the Python
/// object, to which it refers.
class MoleculeInput {
 public:
  MoleculeInput(py::object owner, std::string_view smiles)
      : owner_(std::move(owner)), smiles_(smiles) {}
  MoleculeInput(py::object owner, const Molecule* molecule)
      : owner_(std::move(owner)), molecule_(molecule) {}
  explicit MoleculeInput(RdkitGraph&& graph)
      : graph_(std::make_unique<RdkitGraph>(std::move(graph))) {}
  /// False after a report that begins with `where`.
  bool Read(ZQMol& mol, const std::string& where) const;

 private:
  py::object owner_;
  std::string_view smiles_;
  const Molecule* molecule_ = nullptr;
  std::unique_ptr<const RdkitGraph> graph_;
};

/// Those of a sequence.
std::vector<MoleculeInput> ReadInputs(const py::sequence& mols);

/// One molecule, of one argument. Throws if it can't be read.
ZQMol ReadMolecule(const py::handle& mol, const Reports& reports);

}  // namespace KorvexPython
