#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <memory>
#include <type_traits>

#include "python/fingerprints_local.h"

namespace KorvexPython {

namespace {

/// One hit of a search, and one neighbour of a record.
struct Hit {
  std::uint64_t query;
  std::uint64_t index;
  double score;
};
struct Neighbor {
  std::uint64_t record;
  std::uint64_t index;
  double score;
};

template <class T>
py::array_t<T> ToArray(const std::vector<T>& values) {
  return py::array_t<T>(static_cast<py::ssize_t>(values.size()), values.data());
}

template <class T>
py::array_t<T> ToArray(ZQIter<T> iter) {
  std::vector<T> values;
  for (; iter; ++iter) values.push_back(*iter);
  return ToArray(values);
}

ZQFPDatabaseOptions MakeOptions(const std::string& measure, float alpha, float beta,
                                const std::optional<float>& cutoff, unsigned int threads) {
  ZQFPDatabaseOptions options;
  options.SetSimFunc(ReadMeasure(measure));
  if (!(alpha >= 0 && alpha <= 1 && beta >= 0 && beta <= 1)) {
    throw py::value_error("alpha and beta are within 0 and 1");
  }
  options.SetTverskyCoeffs(alpha, beta);
  if (cutoff) options.SetCutoff(*cutoff);
  options.SetNumProcessors(threads);
  return options;
}

/// A database file, and the molecule file that it was made from, if that is there.
class Database {
 public:
  Database(std::string path, unsigned int memory) : path_(std::move(path)) {
    Reports reports;
    {
      const py::gil_scoped_release release;
      database_ = std::make_unique<ZQFastFPDatabase>(path_, memory);
    }
    if (!database_->IsValid()) reports.Throw("'" + path_ + "' can't be opened");
    reports.Warn();
  }

  const std::string& GetPath() const { return path_; }
  std::string GetMemoryName() const { return database_->GetMemoryTypeString(); }
  std::string GetMoleculeFile() const { return database_->GetHeader().GetMoleculeFile(); }
  std::uint64_t Size() const { return database_->NumFingerPrints(); }
  Type GetType() const { return {database_->GetFPTypeBase()}; }

  ZQFingerPrint Get(py::ssize_t index) const {
    const auto size = static_cast<py::ssize_t>(Size());
    if (index < 0) index += size;
    if (index < 0 || index >= size)
      throw py::index_error("the database has " + std::to_string(size) + " records");
    Reports reports;
    ZQFingerPrint fp;
    if (!database_->GetFingerPrint(fp, static_cast<std::uint64_t>(index))) {
      reports.Throw("record " + std::to_string(index) + " can't be read");
    }
    return fp;
  }

  py::array_t<Hit> Search(const std::vector<ZQFingerPrint>& queries, unsigned int k,
                          const std::optional<float>& cutoff, const std::string& measure,
                          float alpha, float beta, bool descending, unsigned int threads) const {
    ZQFPDatabaseOptions options = MakeOptions(measure, alpha, beta, cutoff, threads);
    options.SetLimit(k);
    options.SetDescendingOrder(descending);
    CheckTypes(queries);
    // Many queries share a pass over the records; between passes Ctrl-C is heeded.
    constexpr std::size_t batch = 256;
    std::vector<Hit> hits;
    for (std::size_t begin = 0; begin < queries.size(); begin += batch) {
      const std::size_t end = std::min(begin + batch, queries.size());
      const auto found = Run([&] {
        return database_->GetSortedScores({queries.begin() + static_cast<std::ptrdiff_t>(begin),
                                           queries.begin() + static_cast<std::ptrdiff_t>(end)},
                                          options);
      });
      for (std::size_t i = 0; i < found.size(); ++i) {
        for (auto hit = found[i]; hit; ++hit) {
          hits.push_back({begin + i, hit->GetIdx(), hit->GetScore()});
        }
      }
      CheckSignals();
    }
    return ToArray(hits);
  }

  py::array_t<double> Scores(const ZQFingerPrint& query, const std::string& measure, float alpha,
                             float beta) const {
    CheckTypes({query});
    const ZQFPDatabaseOptions options = MakeOptions(measure, alpha, beta, {}, 1);
    return ToArray(Run([&] { return database_->GetRawScores(query, options); }));
  }

  py::array_t<Neighbor> Neighbors(unsigned int k, const std::optional<float>& cutoff,
                                  const std::string& measure, float alpha, float beta) const {
    ZQFPDatabaseOptions options = MakeOptions(measure, alpha, beta, cutoff, 1);
    // The record itself is one of its own neighbours, and is left out.
    options.SetLimit(
        static_cast<unsigned int>(std::min<std::uint64_t>(std::uint64_t{k} + 1, Size())));
    // The library leaves record 0 out at the cutoff itself, so it gets a lower one.
    if (cutoff) options.SetCutoff(std::nextafter(*cutoff, -1.0F));
    std::vector<Neighbor> found;
    if (Size() == 0 || k == 0) return ToArray(found);
    std::uint64_t row = 0;
    unsigned int taken = 0;
    for (auto pair = Run([&] { return database_->GetSparseMatrix(options); }); pair; ++pair) {
      if (pair->GetIdx1() != row) taken = 0;
      row = pair->GetIdx1();
      if (pair->GetIdx2() == row || taken == k || (cutoff && pair->GetScore() < *cutoff)) continue;
      ++taken;
      found.push_back({row, pair->GetIdx2(), pair->GetScore()});
    }
    return ToArray(found);
  }

  /// The counts and the edges of the bins.
  py::tuple Histogram(unsigned long bins, const std::string& measure, float alpha,
                      float beta) const {
    const ZQFPDatabaseOptions options = MakeOptions(measure, alpha, beta, {}, 1);
    const ZQFPHistogram histogram = Run([&] { return database_->GetHistogram(options, bins); });
    return py::make_tuple(CountsOf(histogram), ToArray(histogram.GetBinBoundaries()));
  }

  /// The semivariances, the counts and the edges of the bins of distance.
  py::tuple Variogram(const std::vector<float>& values, unsigned long bins,
                      const std::string& measure) const {
    const ZQFPDatabaseOptions options = MakeOptions(measure, 0.5F, 0.5F, {}, 1);
    const ZQFPVariogram variogram =
        Run([&] { return database_->GetVariogram(values, options, bins); });
    return py::make_tuple(ToArray(variogram.GetVariogram()), CountsOf(variogram),
                          ToArray(variogram.GetBinBoundaries()));
  }

 private:
  /// Runs a query without the GIL. Throws what the library reports.
  template <class Query>
  std::invoke_result_t<Query> Run(const Query& query) const {
    Reports reports;
    auto result = [&] {
      const py::gil_scoped_release release;
      return query();
    }();
    if (reports.HasAny()) reports.Throw("");
    return result;
  }

  void CheckTypes(const std::vector<ZQFingerPrint>& queries) const {
    for (const ZQFingerPrint& query : queries) {
      if (query.GetFPTypeBase() == database_->GetFPTypeBase()) continue;
      throw py::value_error("the query's type is " + query.GetFPTypeBase()->GetFPTypeString() +
                            ", that of the database " + GetType().type->GetFPTypeString());
    }
  }

  // By the density, as counts above 2^32 can't be read otherwise.
  static py::array_t<std::uint64_t> CountsOf(const ZQFPHistogram& histogram) {
    const auto samples = static_cast<double>(histogram.NumSamples());
    std::vector<std::uint64_t> counts;
    for (auto density = histogram.GetDensity(); density; ++density) {
      counts.push_back(
          samples == 0.0 ? 0 : static_cast<std::uint64_t>(std::llround(*density * samples)));
    }
    return ToArray(counts);
  }

  std::string path_;
  std::unique_ptr<ZQFastFPDatabase> database_;
};

/// The molecules of a file.
class Molecules {
 public:
  explicit Molecules(const std::string& path) {
    Reports reports;
    if (!molecules_.Open(path)) reports.Throw("'" + path + "' can't be opened");
  }
  std::size_t Size() const { return molecules_.GetMaxMolIdx(); }
  std::string GetTitle(std::uint64_t index) const { return molecules_.GetTitle(Check(index)); }
  std::string GetSmiles(std::uint64_t index) const {
    const Reports reports;  // a record that can't be read has none
    return molecules_.GetSmiles(Check(index));
  }

 private:
  unsigned int Check(std::uint64_t index) const {
    if (index >= Size())
      throw py::index_error("the file has " + std::to_string(Size()) + " records");
    return static_cast<unsigned int>(index);
  }
  ZQMolDatabase molecules_;
};

/// Makes a database of the molecules of a file or, if there is no name, of the lines of a text.
/// Returns the numbers of records, of those without a fingerprint, and of empty ones.
py::tuple Create(const std::string& out, const std::string& filename, const std::string& lines,
                 const Type& type, unsigned int threads, bool progress) {
  ZQCreateFastFPDatabaseOptions options(type.type);
  options.SetNumProcessors(threads);
  if (progress) options.SetTracer(ZQDots(0, "molecules"));
  ZQFPCreationCounts counts;
  Reports reports;
  bool done = false;
  {
    const py::gil_scoped_release release;
    if (!filename.empty()) {
      done = ZQCreateFastFPDatabaseFile(out, filename, options, &counts);
    } else {
      ZQMolDatabase molecules;
      done = molecules.OpenContent(lines, "the molecules", {"smi", "", ""}) &&
             ZQCreateFastFPDatabaseFile(out, molecules, "-", options, &counts);
    }
  }
  if (!done) reports.Throw("'" + out + "' can't be made");
  reports.Warn();
  return py::make_tuple(counts.records, counts.failed, counts.empty);
}

}  // namespace

void BindDatabase(py::module_& module) {
  PYBIND11_NUMPY_DTYPE(Hit, query, index, score);
  PYBIND11_NUMPY_DTYPE(Neighbor, record, index, score);
  py::class_<Database>(module, "Database")
      .def(py::init<std::string, unsigned int>())
      .def_property_readonly("path", &Database::GetPath)
      .def_property_readonly("memory_name", &Database::GetMemoryName)
      .def_property_readonly("molecule_file", &Database::GetMoleculeFile)
      .def_property_readonly("type", &Database::GetType)
      .def("__len__", &Database::Size)
      .def("__getitem__", &Database::Get)
      .def("search", &Database::Search)
      .def("scores", &Database::Scores)
      .def("neighbors", &Database::Neighbors)
      .def("histogram", &Database::Histogram)
      .def("variogram", &Database::Variogram);
  py::class_<Molecules>(module, "Molecules")
      .def(py::init<std::string>())
      .def("__len__", &Molecules::Size)
      .def("title", &Molecules::GetTitle)
      .def("smiles", &Molecules::GetSmiles);
  module.def("create", Create, py::arg("out"), py::arg("filename"), py::arg("lines"),
             py::arg("type"), py::arg("threads"), py::arg("progress"));
}

}  // namespace KorvexPython
