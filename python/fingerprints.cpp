#include "python/fingerprints_local.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <atomic>
#include <cctype>

#include "python/molecules_local.h"

namespace KorvexPython {

namespace {

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

bool IsText(const ZQFPTypeBase* type) {
  const ZQFPKind* kind = ZQFindFPKind(type);
  return kind && kind->IsText();
}

/// The text of a fingerprint of a text kind: its bytes up to the first NUL.
std::string TextOf(const ZQFingerPrint& fp) {
  const std::string bytes(reinterpret_cast<const char*>(fp.Words()), fp.GetSize() / 8);
  return bytes.substr(0, bytes.find('\0'));
}

ZQFingerPrint MakeOne(const py::object& molecule, const Type& type) {
  Reports reports;
  const ZQMol mol = ReadMolecule(molecule, reports);
  ZQFingerPrint fp;
  const bool done = Unlocked([&] { return ZQMakeFP(fp, mol, type.type); });
  if (!done) reports.Throw("no fingerprint can be made of the molecule");
  reports.Warn();
  return fp;
}

/// Makes the fingerprints of the inputs on threads, in batches between which Ctrl-C is heeded, and
/// calls `store(i, fp)`. Returns whether each could be made.
template <class Store>
py::array_t<bool> ForAll(const std::vector<MoleculeInput>& inputs, const Type& type,
                         unsigned int numThreads, const Store& store) {
  constexpr std::size_t batch = 20000;
  constexpr std::size_t piece = 64;
  py::array_t<bool> mask(static_cast<py::ssize_t>(inputs.size()));
  bool* const made = mask.mutable_data();
  for (std::size_t begin = 0; begin < inputs.size(); begin += batch) {
    const std::size_t end = std::min(begin + batch, inputs.size());
    Unlocked([&] {
      const auto numPieces = static_cast<unsigned int>((end - begin + piece - 1) / piece);
      std::atomic<std::size_t> next = begin;
      ZQRunOnThreads(std::min(numThreads, numPieces), [&] {
        ZQMol mol;
        ZQFingerPrint fp;
        for (std::size_t i = next.fetch_add(piece); i < end; i = next.fetch_add(piece)) {
          for (std::size_t k = i; k < std::min(i + piece, end); ++k) {
            made[k] = inputs[k].Read(mol, "molecule " + std::to_string(k)) &&
                      ZQMakeFP(fp, mol, type.type);
            if (made[k]) store(k, fp);
          }
        }
      });
    });
    CheckSignals();
  }
  return mask;
}

/// The fingerprints of molecules: an array of words, or a list of texts, and for each whether it
/// could be made.
py::tuple MakeMany(const py::object& mols, const Type& type, unsigned int numThreads) {
  const std::vector<MoleculeInput> inputs = ReadInputs(mols);
  const std::size_t n = inputs.size();
  ZQFPDatabaseOptions options;
  options.SetNumProcessors(numThreads);
  Reports reports;
  py::object result;
  py::array_t<bool> mask;
  if (IsText(type.type)) {
    std::vector<std::string> texts(n);
    mask = ForAll(inputs, type, options.GetNumProcessors(),
                  [&](std::size_t i, const ZQFingerPrint& fp) { texts[i] = TextOf(fp); });
    result = py::cast(texts);
  } else {
    const std::size_t numWords = (ZQGetFingerPrintSize(type.type) + 63) / 64;
    py::array_t<std::uint64_t> words(
        std::vector<py::ssize_t>{static_cast<py::ssize_t>(n), static_cast<py::ssize_t>(numWords)});
    std::uint64_t* const rows = words.mutable_data();
    std::fill_n(rows, n * numWords, 0);
    mask = ForAll(inputs, type, options.GetNumProcessors(),
                  [&](std::size_t i, const ZQFingerPrint& fp) {
                    std::copy_n(fp.Words(), fp.NumWords(), rows + i * numWords);
                  });
    result = words;
  }
  const auto failed = std::count(mask.data(), mask.data() + n, false);
  if (failed > 0) {
    reports.Warn(std::to_string(failed) + " of " + std::to_string(n) +
                 " molecules have no fingerprint:\n");
  }
  return py::make_tuple(result, mask);
}

ZQFingerPrint FromWords(const py::array_t<std::uint64_t, py::array::c_style>& words,
                        const Type& type) {
  const unsigned int size = ZQGetFingerPrintSize(type.type);
  if (IsText(type.type) || words.ndim() != 1 ||
      words.shape(0) != static_cast<py::ssize_t>((size + 63) / 64)) {
    throw py::value_error("a fingerprint of this type is an array of " +
                          std::to_string((size + 63) / 64) + " words, uint64");
  }
  ZQFingerPrint fp;
  fp.SetFPTypeBase(type.type);
  fp.SetSize(size);
  std::copy_n(words.data(), fp.NumWords(), fp.Words());
  if (size % 64 != 0) fp.Words()[fp.NumWords() - 1] &= (std::uint64_t{1} << size % 64) - 1;
  return fp;
}

py::array_t<std::uint64_t> WordsOf(const ZQFingerPrint& fp) {
  return py::array_t<std::uint64_t>(static_cast<py::ssize_t>(fp.NumWords()), fp.Words());
}

py::array_t<std::uint32_t> BitsOf(const ZQFingerPrint& fp) {
  std::vector<std::uint32_t> bits;
  for (unsigned int bit = 0; bit < fp.GetSize(); ++bit) {
    if (fp.IsBitOn(bit)) bits.push_back(bit);
  }
  return py::array_t<std::uint32_t>(static_cast<py::ssize_t>(bits.size()), bits.data());
}

std::string HexOf(const ZQFingerPrint& fp) {
  std::string text;
  fp.ToHexString(text);
  return text;
}

float Compare(const ZQFingerPrint& a, const ZQFingerPrint& b, const std::string& measure,
              float alpha, float beta) {
  const unsigned int number = ReadMeasure(measure);
  CheckCoefficients(alpha, beta);
  Reports reports;
  if (a.GetFPTypeBase() != b.GetFPTypeBase()) {
    reports.Throw("the fingerprints have different types: " + a.GetFPTypeBase()->GetFPTypeString() +
                  " and " + b.GetFPTypeBase()->GetFPTypeString());
  }
  const float score = ZQGetSimilarity(number, a, b, alpha, beta);
  if (reports.HasAny()) reports.Throw("");
  return score;
}

}  // namespace

Type ReadType(const std::string& text) {
  Reports reports;
  const ZQFPTypeBase* type = nullptr;
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    if (Lower(kind.name) == Lower(text)) type = ZQGetFPType(kind.number);
  }
  std::string fault;
  if (!type) type = ZQReadFPType(text, &fault);
  if (!type)
    reports.Throw("'" + text + "' isn't a type of fingerprints" +
                  (fault.empty() ? "" : ": " + fault));
  if (!ZQCanMakeFP(type, &fault))
    reports.Throw("no fingerprint of '" + text + "' can be made: " + fault);
  return {type};
}

unsigned int ReadMeasure(const std::string& name) {
  std::string names;
  for (unsigned int number = 1; ZQSimMeasure::IsValid(number); ++number) {
    const std::string known = Lower(ZQGetSimilarityMeasureName(number));
    if (known == Lower(name)) return number;
    names.append(names.empty() ? "" : ", ").append(known);
  }
  throw py::value_error("'" + name + "' isn't a measure: " + names);
}

void CheckCoefficients(double alpha, double beta) {
  if (!(alpha >= 0 && alpha <= 1 && beta >= 0 && beta <= 1)) {
    throw py::value_error("alpha and beta are within 0 and 1");
  }
}

py::object Reduce(const py::object& object, int protocol) {
  return py::module_::import("builtins")
      .attr("object")
      .attr("__reduce_ex__")(object, std::max(protocol, 2));
}

void BindFingerprints(py::module_& module) {
  py::class_<Type>(module, "Type", "A type of fingerprints. Made by korvex.type().")
      .def_property_readonly(
          "string", [](const Type& type) { return type.type->GetFPTypeString(); },
          "The type string, as files have it.")
      .def_property_readonly(
          "num_bits", [](const Type& type) { return ZQGetFingerPrintSize(type.type); },
          "The number of bits; 0 for a text kind.")
      .def_property_readonly(
          "is_text", [](const Type& type) { return IsText(type.type); },
          "Whether fingerprints are a text.")
      .def(
          "__eq__", [](const Type& a, const Type& b) { return a.type == b.type; },
          py::is_operator())
      .def("__hash__", [](const Type& type) { return std::hash<const void*>()(type.type); })
      .def("__repr__",
           [](const Type& type) { return "korvex.type('" + type.type->GetFPTypeString() + "')"; })
      .def("__reduce_ex__", Reduce)
      .def(py::pickle(
          [](const Type& type) { return py::make_tuple(type.type->GetFPTypeString()); },
          [](const py::tuple& state) { return ReadType(state[0].cast<std::string>()); }));
  module.def("type", ReadType, py::arg("text"));

  py::class_<ZQFingerPrint>(module, "Fingerprint",
                            "The fingerprint of a molecule: bits, or a text. A value.")
      .def_property_readonly("type",
                             [](const ZQFingerPrint& fp) { return Type{fp.GetFPTypeBase()}; })
      .def_property_readonly("num_bits", &ZQFingerPrint::GetSize)
      .def_property_readonly("count", &ZQFingerPrint::CountBits, "The number of bits that are set.")
      .def_property_readonly(
          "text",
          [](const ZQFingerPrint& fp) -> py::object {
            if (!IsText(fp.GetFPTypeBase())) return py::none();
            return py::str(TextOf(fp));
          },
          "The text of a text kind, else None.")
      .def("bits", BitsOf, "The numbers of the bits that are set, ascending: an array of uint32.")
      .def("to_numpy", WordsOf,
           "A copy of the words, uint64: bit i is in word i // 64, at 1 << (i % 64).")
      .def("hex", HexOf, "Two hexadecimal digits for each byte, byte 0 first.")
      .def_static("from_numpy", FromWords, py::arg("words"), py::arg("type"),
                  "The fingerprint of an array that to_numpy() or a row of fingerprint() gives.")
      .def(
          "__eq__", [](const ZQFingerPrint& a, const ZQFingerPrint& b) { return a == b; },
          py::is_operator())
      .def("__hash__",
           [](const ZQFingerPrint& fp) {
             return std::hash<std::string>()(HexOf(fp)) ^
                    std::hash<const void*>()(fp.GetFPTypeBase());
           })
      .def("__repr__",
           [](const ZQFingerPrint& fp) {
             return "<korvex.Fingerprint, " + fp.GetFPTypeBase()->GetFPTypeString() + ", " +
                    (IsText(fp.GetFPTypeBase()) ? TextOf(fp)
                                                : std::to_string(fp.CountBits()) + " bits set") +
                    ">";
           })
      .def("__reduce_ex__", Reduce)
      .def(py::pickle(
          [](const ZQFingerPrint& fp) {
            return py::make_tuple(fp.GetFPTypeBase()->GetFPTypeString(), HexOf(fp));
          },
          [](const py::tuple& state) {
            ZQFingerPrint fp;
            const Type type = ReadType(state[0].cast<std::string>());
            if (!fp.FromHexString(state[1].cast<std::string>())) {
              throw py::value_error("not the state of a fingerprint");
            }
            if (!IsText(type.type)) fp.SetSize(ZQGetFingerPrintSize(type.type));
            fp.SetFPTypeBase(type.type);
            return fp;
          }));
  module.def("make_one", MakeOne, py::arg("mol"), py::arg("type"));
  module.def("make_many", MakeMany, py::arg("mols"), py::arg("type"), py::arg("threads"));
  module.def("compare", Compare, py::arg("a"), py::arg("b"), py::arg("measure"), py::arg("alpha"),
             py::arg("beta"));
}

}  // namespace KorvexPython
