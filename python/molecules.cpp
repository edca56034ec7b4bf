#include "python/molecules_local.h"

#include <pybind11/stl.h>

#include <optional>
#include <tuple>

#include "python/fingerprints_local.h"

namespace KorvexPython {

namespace {

// In tuples, as korvex/_rdkit.py makes them.
using AtomTuple = std::tuple<std::uint8_t, std::int8_t, std::uint32_t, std::uint32_t, std::uint8_t,
                             std::uint8_t, bool>;
using BondTuple = std::tuple<std::uint32_t, std::uint32_t, std::array<std::uint32_t, 2>,
                             std::uint8_t, std::uint8_t, bool>;

/// Looks into Python's objects.
class InputReader {
 public:
  InputReader() {
    const py::dict modules = py::module_::import("sys").attr("modules");
    const char* name = "rdkit.Chem.rdchem";
    if (!modules.contains(name)) return;  // there are no molecules of RDKit
    rdkitMol_ = modules[name].attr("Mol");
    hasProp_ = rdkitMol_.attr("HasProp");
    toBinary_ = rdkitMol_.attr("ToBinary");
  }

  /// Throws a TypeError for what is no molecule; `what` names it.
  MoleculeInput Read(const py::handle& mol, const std::string& what) const {
    auto owner = py::reinterpret_borrow<py::object>(mol);
    if (PyUnicode_Check(mol.ptr()) != 0) {
      Py_ssize_t size = 0;
      const char* data = PyUnicode_AsUTF8AndSize(mol.ptr(), &size);
      if (data) return {std::move(owner), std::string_view(data, static_cast<std::size_t>(size))};
      PyErr_Clear();
      return MoleculeInput("a text with half of a surrogate pair is no SMILES");
    }
    if (py::isinstance<Molecule>(mol)) return {std::move(owner), &mol.cast<const Molecule&>()};
    if (rdkitMol_ && py::isinstance(mol, rdkitMol_)) {
      try {
        return MoleculeInput(ReadRdkit(mol));
      } catch (py::error_already_set& error) {
        // RDKit refuses some broken molecules itself.
        if (!error.matches(PyExc_RuntimeError) && !error.matches(PyExc_ValueError)) throw;
        return MoleculeInput("RDKit: " + std::string(py::str(error.value())));
      } catch (const py::cast_error&) {
        return MoleculeInput(
            std::string("a charge, an isotope or a count of hydrogens is out of range"));
      }
    }
    throw py::type_error(what + " is a " +
                         py::str(py::type::of(mol).attr("__name__")).cast<std::string>() +
                         "; a molecule is a SMILES string, a korvex.Molecule or an RDKit molecule");
  }

 private:
  RdkitGraph ReadRdkit(const py::handle& mol) const {
    RdkitGraph graph;
    PyObject* const arguments[] = {mol.ptr(), zero_.ptr()};
    const auto record = py::reinterpret_steal<py::object>(
        PyObject_Vectorcall(toBinary_.ptr(), arguments, std::size(arguments), nullptr));
    if (!record) throw py::error_already_set();
    if (ReadRdkitRecord(graph, record.cast<std::string_view>()) && IsTrusted(graph.version) &&
        (!graph.hasStereo || hasProp_(mol, "_StereochemDone").cast<bool>())) {
      return graph;
    }
    const py::tuple parts = py::module_::import("korvex._rdkit").attr("graph_of")(mol);
    RdkitGraph slow;
    slow.hasStereo = true;
    for (const auto& [atomicNum, charge, isotope, mapIdx, hCount, chiralTag, aromatic] :
         parts[0].cast<std::vector<AtomTuple>>()) {
      slow.atoms.push_back({isotope, mapIdx, charge, atomicNum, hCount, chiralTag, aromatic});
    }
    for (const auto& [bgn, end, stereoAtoms, type, stereo, aromatic] :
         parts[1].cast<std::vector<BondTuple>>()) {
      slow.bonds.push_back({bgn, end, stereoAtoms, type, stereo, aromatic});
    }
    return slow;
  }

  static bool IsTrusted(std::uint32_t version) {
    if (version == rdkitVersion) return true;
    static std::optional<bool> isTrusted;  // the process has one RDKit, and holds the GIL here
    if (!isTrusted) {
      const py::module_ module = py::module_::import("korvex._rdkit");
      isTrusted = module.attr("are_records_right")().cast<bool>();
    }
    return *isTrusted;
  }

  py::object rdkitMol_;
  py::object hasProp_;
  py::object toBinary_;
  py::int_ zero_{0};
};

}  // namespace

bool MoleculeInput::Read(ZQMol& mol, const std::string& where) const {
  if (molecule_) {
    mol = molecule_->mol;
    return true;
  }
  if (molecules_) return molecules_->GetMolecule(mol, index_);
  if (!graph_ && fault_.empty()) return ZQSmilesToMol(mol, smiles_, where);
  std::string fault = fault_;
  if (graph_ && MakeMolecule(mol, *graph_, fault)) return true;
  mol.Clear();
  mol.SetValid(false);
  ZQThrow.Warning("%s: %s", where.empty() ? "the molecule" : where.c_str(), fault.c_str());
  return false;
}

std::vector<MoleculeInput> ReadInputs(const py::object& mols) {
  std::vector<MoleculeInput> inputs;
  inputs.reserve(py::len(mols));
  if (py::isinstance<MoleculeFile>(mols)) {
    const ZQMolDatabase& file = mols.cast<const MoleculeFile&>().Get();
    for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) inputs.emplace_back(&file, i);
    return inputs;
  }
  const InputReader reader;
  for (const py::handle mol : mols) {
    inputs.push_back(reader.Read(mol, "item " + std::to_string(inputs.size())));
  }
  return inputs;
}

ZQMol ReadMolecule(const py::handle& mol, const Reports& reports) {
  ZQMol read;
  if (!InputReader().Read(mol, "the argument").Read(read, "")) {
    reports.Throw("the molecule can't be read");
  }
  return read;
}

MoleculeFile::MoleculeFile(const std::string& path, const ZQMolFileOptions& options) {
  Reports reports;
  const bool isOpen = Unlocked([&] { return molecules_.Open(path, options); });
  if (!isOpen) reports.Throw("'" + path + "' can't be opened");
  reports.Warn();
}

MoleculeFile::MoleculeFile(std::string lines) {
  const Reports reports;
  if (!molecules_.OpenContent(std::move(lines), "the molecules", {"smi", "", ""})) {
    reports.Throw("the molecules can't be read");
  }
}

unsigned int MoleculeFile::Check(py::ssize_t index) const {
  const py::ssize_t size = Size();
  if (index < 0) index += size;
  if (index < 0 || index >= size) {
    throw py::index_error("the file has " + std::to_string(size) + " records");
  }
  return static_cast<unsigned int>(index);
}

namespace {

// The state of a pickled molecule: atoms, bonds, title.
using AtomState =
    std::tuple<unsigned int, int, unsigned int, unsigned int, unsigned int, unsigned int, bool>;
using BondState = std::tuple<unsigned int, unsigned int, unsigned int, unsigned int, bool>;

py::tuple GetState(const Molecule& molecule) {
  std::vector<AtomState> atoms;
  for (auto atom = molecule.mol.GetAtoms(); atom; ++atom) {
    atoms.emplace_back(atom->GetAtomicNum(), atom->GetFormalCharge(), atom->GetIsotope(),
                       atom->GetMapIdx(), atom->GetImplicitHCount(),
                       static_cast<unsigned int>(atom->GetStereo()), atom->IsAromatic());
  }
  std::vector<BondState> bonds;
  for (auto bond = molecule.mol.GetBonds(); bond; ++bond) {
    bonds.emplace_back(bond->GetBgn()->GetIdx(), bond->GetEnd()->GetIdx(), bond->GetOrder(),
                       static_cast<unsigned int>(bond->GetStereo()), bond->IsAromatic());
  }
  return py::make_tuple(atoms, bonds, py::bytes(molecule.mol.GetTitle()));
}

Molecule FromState(const py::tuple& state) {
  Molecule molecule;
  ZQMol& mol = molecule.mol;
  const auto check = [](bool isRight) {
    if (!isRight) throw py::value_error("not the state of a molecule");
  };
  check(state.size() == 3);
  for (const auto& [atomicNum, charge, isotope, mapIdx, hCount, stereo, aromatic] :
       state[0].cast<std::vector<AtomState>>()) {
    ZQAtomBase* atom = mol.NewAtom(atomicNum);
    atom->SetFormalCharge(charge);
    atom->SetIsotope(isotope);
    atom->SetMapIdx(mapIdx);
    atom->SetImplicitHCount(hCount);
    atom->SetStereo(static_cast<ZQAtomStereo>(stereo));
    atom->SetAromatic(aromatic);
  }
  for (const auto& [bgn, end, order, stereo, aromatic] : state[1].cast<std::vector<BondState>>()) {
    check(std::max(bgn, end) < mol.NumAtoms());
    ZQBondBase* bond = mol.NewBond(mol.GetAtomAt(bgn), mol.GetAtomAt(end), order);
    check(bond != nullptr);
    bond->SetStereo(static_cast<ZQBondStereo>(stereo));
    bond->SetAromatic(aromatic);
  }
  mol.SetTitle(state[2].cast<std::string>());
  return molecule;
}

Molecule GetMolecule(const MoleculeFile& file, py::ssize_t index) {
  const Reports reports;
  Molecule molecule;
  if (!file.Get().GetMolecule(molecule.mol, file.Check(index))) reports.Throw("no molecule");
  return molecule;
}

std::string GetSmiles(const MoleculeFile& file, py::ssize_t index) {
  const Reports reports;  // a record that can't be read has none
  return file.Get().GetSmiles(file.Check(index));
}

py::str PathOf(const MoleculeFile& file) {
  const std::string& name = file.Get().GetName();
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeFSDefaultAndSize(name.data(), static_cast<py::ssize_t>(name.size())));
}

/// The atoms and bonds of a record in tuples, or None.
py::object ReadTuples(std::string_view record) {
  RdkitGraph graph;
  if (!ReadRdkitRecord(graph, record)) return py::none();
  std::vector<AtomTuple> atoms;
  for (const RdkitGraph::Atom& a : graph.atoms) {
    atoms.emplace_back(a.atomicNum, a.charge, a.isotope, a.mapIdx, a.hCount, a.chiralTag,
                       a.aromatic);
  }
  std::vector<BondTuple> bonds;
  for (const RdkitGraph::Bond& b : graph.bonds) {
    bonds.emplace_back(b.bgn, b.end, b.stereoAtoms, b.type, b.stereo, b.aromatic);
  }
  return py::make_tuple(atoms, bonds);
}

}  // namespace

void BindMolecules(py::module_& module) {
  py::class_<Molecule>(module, "Molecule",
                       "A molecule that was read: a value that can't be changed.\n\n"
                       "Made from a SMILES string, an RDKit molecule, whose indices it keeps, or "
                       "another Molecule.")
      .def(py::init([](const py::object& mol, const std::string& title) {
             const Reports reports;
             Molecule molecule{ReadMolecule(mol, reports)};
             if (!title.empty()) molecule.mol.SetTitle(title);
             return molecule;
           }),
           py::arg("mol"), py::arg("title") = "")
      .def_property_readonly("title", [](const Molecule& m) { return Text(m.mol.GetTitle()); })
      .def_property_readonly("num_atoms", [](const Molecule& m) { return m.mol.NumAtoms(); })
      .def_property_readonly("num_bonds", [](const Molecule& m) { return m.mol.NumBonds(); })
      .def_property_readonly(
          "smiles", [](const Molecule& m) { return ZQMolToSmiles(m.mol); },
          "A SMILES, in the order of the atoms; not canonical.")
      .def("__repr__",
           [](const Molecule& m) { return "korvex.Molecule('" + ZQMolToSmiles(m.mol) + "')"; })
      .def("__reduce_ex__", Reduce)
      .def(py::pickle(&GetState, &FromState));
  py::class_<MoleculeFile>(module, "MoleculeFile",
                           "The molecules of a file, read when they are asked for. Made by "
                           "korvex.read().")
      .def(py::init([](const std::string& path, const std::string& format,
                       const std::string& smilesColumn, const std::string& titleColumn) {
        return std::make_unique<MoleculeFile>(path,
                                              ZQMolFileOptions{format, smilesColumn, titleColumn});
      }))
      .def_static("of_lines",
                  [](const std::string& lines) { return std::make_unique<MoleculeFile>(lines); })
      .def("__reduce_ex__", Reduce)
      .def_property_readonly("path", [](const MoleculeFile& file) { return PathOf(file); })
      .def("__len__", &MoleculeFile::Size)
      .def("__getitem__", GetMolecule, "A Molecule. Raises Error if it can't be read.")
      .def(
          "title",
          [](const MoleculeFile& file, py::ssize_t index) {
            return Text(file.Get().GetTitle(file.Check(index)));
          },
          "The title of a record.")
      .def("smiles", GetSmiles, "The SMILES of a record, empty if it can't be read.")
      .def("__iter__",
           [](const py::object& file) {
             return py::reinterpret_steal<py::object>(PySeqIter_New(file.ptr()));
           })
      .def("__repr__", [](const MoleculeFile& file) {
        return py::str("<korvex.MoleculeFile {!r}, {} molecules>")
            .format(PathOf(file), file.Size());
      });
  module.def("rdkit_graph", ReadTuples, py::arg("record"));
}

}  // namespace KorvexPython
