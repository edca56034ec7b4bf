#pragma once

/// Molecules as Python passes them: a SMILES string, a `Molecule`, or a molecule of RDKit.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "python/rdkit_local.h"
#include "python/reports_local.h"

namespace KorvexPython {

/// A molecule that was read, with its title. Python can't change it.
struct Molecule {
  ZQMol mol;
};

/// The molecules of a file or a text, each read when it is asked for.
class MoleculeFile {
 public:
  /// Throws if it can't be opened.
  MoleculeFile(const std::string& path, const ZQMolFileOptions& options);
  /// Of a text: a SMILES and a title on each line.
  explicit MoleculeFile(std::string lines);

  const ZQMolDatabase& Get() const { return molecules_; }
  py::ssize_t Size() const { return molecules_.GetMaxMolIdx(); }
  /// The index of a record, counted from the end if it is negative. Throws an IndexError.
  unsigned int Check(py::ssize_t index) const;

 private:
  ZQMolDatabase molecules_;
};

/// What a molecule of Python is read from, without the GIL and on any thread. Keeps the Python
/// object, to which it refers.
class MoleculeInput {
 public:
  MoleculeInput(py::object owner, std::string_view smiles)
      : owner_(std::move(owner)), smiles_(smiles) {}
  MoleculeInput(py::object owner, const Molecule* molecule)
      : owner_(std::move(owner)), molecule_(molecule) {}
  MoleculeInput(const ZQMolDatabase* molecules, unsigned int index)
      : molecules_(molecules), index_(index) {}
  /// One that has a fault, which is reported.
  explicit MoleculeInput(std::string fault) : fault_(std::move(fault)) {}
  explicit MoleculeInput(RdkitGraph&& graph)
      : graph_(std::make_unique<RdkitGraph>(std::move(graph))) {}
  /// False after a report that begins with `where`, or names the record of a file.
  bool Read(ZQMol& mol, const std::string& where) const;

 private:
  py::object owner_;
  std::string_view smiles_;
  const Molecule* molecule_ = nullptr;
  const ZQMolDatabase* molecules_ = nullptr;
  unsigned int index_ = 0;
  std::unique_ptr<const RdkitGraph> graph_;
  std::string fault_;
};

/// Those of a sequence, or of a `MoleculeFile`, which must outlive them.
std::vector<MoleculeInput> ReadInputs(const py::object& mols);

/// One molecule, of one argument. Throws if it can't be read.
ZQMol ReadMolecule(const py::handle& mol, const Reports& reports);

}  // namespace KorvexPython
