#include <pybind11/stl.h>

#include <functional>
#include <optional>

#include "python/fingerprints_local.h"
#include "python/molecules_local.h"

namespace KorvexPython {

namespace {

std::string CanonicalSmiles(const py::object& mol) {
  const Reports reports;
  const ZQMol read = ReadMolecule(mol, reports);
  return Unlocked([&] { return ZQMolToCanonicalSmiles(read); });
}

std::vector<unsigned int> Marked(const std::vector<bool>& marks) {
  std::vector<unsigned int> indices;
  for (unsigned int i = 0; i < marks.size(); ++i) {
    if (marks[i]) indices.push_back(i);
  }
  return indices;
}

/// All indices are those of the molecules that were given.
py::dict Explain(const py::object& a, const py::object& b, const Type& type,
                 const std::string& measure, float alpha, float beta) {
  Reports reports;
  ZQMol mols[] = {ReadMolecule(a, reports), ReadMolecule(b, reports)};
  ZQSimilarityExplanation explanation;
  const unsigned int number = ReadMeasure(measure);
  CheckCoefficients(alpha, beta);
  const bool done = Unlocked([&] {
    return ZQExplainSimilarity(explanation, mols[0], mols[1], type.type, number, alpha, beta);
  });
  if (!done) reports.Throw("the fingerprints can't be made");
  reports.Warn();
  py::list sides;
  for (const ZQSimilarityExplanation::Side& side : explanation.sides) {
    sides.append(py::dict(py::arg("fingerprint") = side.fp, py::arg("count") = side.count,
                          py::arg("shared_atoms") = Marked(side.sharedAtoms),
                          py::arg("shared_bonds") = Marked(side.sharedBonds),
                          py::arg("weights") = side.weights,
                          py::arg("covered_atoms") = side.coveredAtoms,
                          py::arg("covered_bonds") = side.coveredBonds));
  }
  py::list fragments;
  for (const ZQSharedFragment& fragment : explanation.overlap) {
    std::vector<unsigned int> atoms[2];
    std::vector<unsigned int> bonds[2];
    for (const auto& pair : fragment.match.GetAtomPairs()) {
      atoms[0].push_back(pair.pattern->GetIdx());
      atoms[1].push_back(pair.target->GetIdx());
    }
    for (const auto& pair : fragment.match.GetBondPairs()) {
      bonds[0].push_back(pair.pattern->GetIdx());
      bonds[1].push_back(pair.target->GetIdx());
    }
    fragments.append(py::make_tuple(fragment.text, atoms[0], bonds[0], atoms[1], bonds[1]));
  }
  return py::dict(py::arg("score") = explanation.score, py::arg("both") = explanation.both,
                  py::arg("sides") = sides, py::arg("fragments") = fragments);
}

std::string Draw(const py::object& molecule, const std::vector<unsigned int>& atoms,
                 const std::vector<double>& weights, unsigned int width, unsigned int height,
                 const std::string& title) {
  Reports reports;
  ZQMol mol = ReadMolecule(molecule, reports);
  for (const unsigned int atom : atoms) {
    if (atom < mol.NumAtoms()) continue;
    throw py::index_error("atom " + std::to_string(atom) + " of " + std::to_string(mol.NumAtoms()));
  }
  if (!weights.empty() && weights.size() != mol.NumAtoms()) {
    throw py::value_error(std::to_string(weights.size()) + " weights for " +
                          std::to_string(mol.NumAtoms()) + " atoms");
  }
  ZQDrawStyle style;
  style.width = width;
  style.height = height;
  style.atoms = atoms;
  style.weights = weights;
  style.title = title;
  std::string svg;
  const bool done = Unlocked([&] {
    ZQLayout layout;
    if (!ZQMakeLayout(layout, mol)) return false;
    svg = ZQDrawSVG(mol, layout, style);
    return true;
  });
  if (!done) reports.Throw("the molecule can't be drawn");
  return svg;
}

/// A fingerprint, and what it was made of, so that it can be copied by pickle.
struct Vsepr {
  ZQVseprFingerprint fp;
  py::tuple arguments;
};

Vsepr MakeVsepr(const py::object& molecule, unsigned int maxLength, unsigned int minLength,
                bool forceOut, bool weightByLength, bool stereo) {
  Reports reports;
  ZQMol mol = ReadMolecule(molecule, reports);
  Vsepr made;
  made.arguments =
      py::make_tuple(Molecule{mol}, maxLength, minLength, forceOut, weightByLength, stereo);
  const auto options = ZQVseprOptions()
                           .SetMaxPathLength(maxLength)
                           .SetMinPathLength(minLength)
                           .SetForcePathsOut(forceOut)
                           .SetWeightByLength(weightByLength)
                           .SetStereoAware(stereo);
  made.fp = Unlocked([&] { return ZQVseprFingerprint(mol, options); });
  reports.Warn();
  return made;
}

void CheckComparable(const Vsepr& a, const Vsepr& b) {
  if (!(a.fp.GetOptions() == b.fp.GetOptions())) {
    throw py::value_error("the fingerprints have paths of different lengths or routes");
  }
}

/// A pattern. The program's `substructure` finds the same matches.
class Smarts {
 public:
  explicit Smarts(const std::string& text) : text_(text) {
    const Reports reports;
    search_.emplace(text);
    if (!search_->IsValid()) reports.Throw("'" + text + "' isn't a pattern");
  }
  const std::string& GetText() const { return text_; }
  bool IsIn(const py::object& molecule) const {
    const ZQMol mol = Prepare(molecule);
    return Unlocked([&] { return search_->SingleMatch(mol); });
  }
  std::vector<std::vector<unsigned int>> Match(const py::object& molecule, bool unique,
                                               std::size_t most) const {
    const ZQMol mol = Prepare(molecule);
    return Unlocked([&] {
      std::vector<std::vector<unsigned int>> matches;
      for (auto match = search_->Match(mol, unique); match && matches.size() < most; ++match) {
        std::vector<unsigned int>& atoms = matches.emplace_back();
        for (const auto& pair : match->GetAtomPairs()) atoms.push_back(pair.target->GetIdx());
      }
      return matches;
    });
  }

 private:
  static ZQMol Prepare(const py::object& molecule) {
    const Reports reports;
    ZQMol mol = ReadMolecule(molecule, reports);
    ZQFindRingAtomsAndBonds(mol);
    ZQAssignAromaticFlags(mol, 2, true, 0, false);
    return mol;
  }

  std::string text_;
  std::optional<ZQSubSearch> search_;
};

}  // namespace

void BindTools(py::module_& module) {
  module.def("canonical_smiles", CanonicalSmiles);
  module.def("explain", Explain);
  module.def("draw", Draw);
  module.def("vsepr", MakeVsepr);
  py::class_<Vsepr>(module, "Vsepr", "Weighted paths over the VSEPR types of a molecule's atoms.")
      .def("__reduce_ex__",
           [](const Vsepr& vsepr, int /*protocol*/) {
             return py::make_tuple(py::module_::import("korvex").attr("vsepr"), vsepr.arguments);
           })
      .def_property_readonly(
          "volume", [](const Vsepr& vsepr) { return vsepr.fp.GetVolume(); },
          "The sum of the weights.")
      .def(
          "paths", [](const Vsepr& vsepr) { return vsepr.fp.GetPathCounts(); },
          "A list of (key, weight), keys ascending: a byte for each atom, the first one lowest.")
      .def(
          "tanimoto",
          [](const Vsepr& a, const Vsepr& b) {
            CheckComparable(a, b);
            return a.fp.GetTanimoto(b.fp);
          },
          py::arg("other"), "The shared weights, divided by those that either has.")
      .def(
          "tversky",
          [](const Vsepr& a, const Vsepr& b, double alpha, double beta) {
            CheckComparable(a, b);
            CheckCoefficients(alpha, beta);
            return ZQGetTversky(a.fp, b.fp, alpha, beta);
          },
          py::arg("other"), py::arg("alpha") = 0.95, py::arg("beta") = 0.05,
          "The Tversky similarity of the weights.");
  py::class_<Smarts>(module, "CompiledSmarts")
      .def(py::init<std::string>())
      .def("__reduce_ex__", Reduce)
      .def_property_readonly("text", &Smarts::GetText)
      .def("is_in", &Smarts::IsIn)
      .def("match", &Smarts::Match);
}

}  // namespace KorvexPython
