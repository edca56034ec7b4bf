#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <memory>
#include <type_traits>

#include "python/fingerprints_local.h"
#include "python/longcall_local.h"
#include "python/molecules_local.h"

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
  CheckCoefficients(alpha, beta);
  options.SetTverskyCoeffs(alpha, beta);
  if (cutoff && std::isnan(*cutoff)) throw py::value_error("the cutoff is not a number");
  if (cutoff) options.SetCutoff(*cutoff);
  options.SetNumProcessors(threads);
  return options;
}

/// A database file, and the molecule file that it was made from, if that is there.
class Database {
 public:
  Database(std::string path, unsigned int memory) : path_(std::move(path)) {
    Reports reports;
    database_ = Unlocked([&] { return std::make_unique<ZQFastFPDatabase>(path_, memory); });
    if (!database_->IsValid()) reports.Throw("'" + path_ + "' can't be opened");
    reports.Warn();
  }

  py::bytes GetPath() const { return path_; }
  std::string GetMemoryName() const { return database_->GetMemoryTypeString(); }
  py::bytes GetMoleculeFile() const { return database_->GetHeader().GetMoleculeFile(); }
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
                                  const std::string& measure, float alpha, float beta,
                                  const py::object& progress) const {
    ZQFPDatabaseOptions options = MakeOptions(measure, alpha, beta, cutoff, 1);
    options.SetLimit(k);
    std::vector<Neighbor> found;
    RunLong(progress, options, [&] {
      ZQVisitNeighbors(*database_, options, [&](const ZQSimScorePair& pair) {
        found.push_back({pair.GetIdx1(), pair.GetIdx2(), pair.GetScore()});
      });
    });
    return ToArray(found);
  }

  /// The counts and the edges of the bins.
  py::tuple Histogram(unsigned long bins, const std::string& measure, float alpha, float beta,
                      unsigned int threads, const py::object& progress) const {
    ZQFPDatabaseOptions options = MakeOptions(measure, alpha, beta, {}, threads);
    const ZQFPHistogram histogram =
        RunLong(progress, options, [&] { return database_->GetHistogram(options, bins); });
    return py::make_tuple(CountsOf(histogram), ToArray(histogram.GetBinBoundaries()));
  }

  /// The semivariances, the counts and the edges of the bins of distance.
  py::tuple Variogram(const std::vector<float>& values, unsigned long bins,
                      const std::string& measure, const py::object& progress) const {
    ZQFPDatabaseOptions options = MakeOptions(measure, 0.5F, 0.5F, {}, 1);
    const ZQFPVariogram variogram =
        RunLong(progress, options, [&] { return database_->GetVariogram(values, options, bins); });
    return py::make_tuple(ToArray(variogram.GetVariogram()), CountsOf(variogram),
                          ToArray(variogram.GetBinBoundaries()));
  }

 private:
  /// Runs a query without the GIL. Throws what the library reports.
  template <class Query>
  std::invoke_result_t<Query> Run(const Query& query) const {
    Reports reports;
    auto result = Unlocked(query);
    if (reports.HasAny()) reports.Throw("");
    return result;
  }
  /// The same for a query over all pairs, whose options get a tracer.
  template <class Query>
  static std::invoke_result_t<Query> RunLong(const py::object& progress,
                                             ZQFPDatabaseOptions& options, const Query& query) {
    Reports reports;
    const auto run = [&](const ZQDots& tracer) {
      options.SetTracer(tracer);
      return query();
    };
    const auto check = [&] {
      if (reports.HasAny()) reports.Throw("");
    };
    if constexpr (std::is_void_v<std::invoke_result_t<Query>>) {
      KorvexPython::RunLong(reports, progress, run);
      check();
    } else {
      auto result = KorvexPython::RunLong(reports, progress, run);
      check();
      return result;
    }
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

/// Makes a database, whose header gets the name. Returns the numbers of records, of those without
/// a fingerprint, and of empty ones.
py::tuple Create(const std::string& out, const MoleculeFile& molecules, const std::string& name,
                 const Type& type, unsigned int threads, const py::object& progress) {
  ZQCreateFastFPDatabaseOptions options(type.type);
  options.SetNumProcessors(threads);
  ZQFPCreationCounts counts;
  Reports reports;
  const bool done = RunLong(reports, progress, [&](const ZQDots& tracer) {
    options.SetTracer(tracer);
    return ZQCreateFastFPDatabaseFile(out, molecules.Get(), name, options, &counts);
  });
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
      .def("__reduce_ex__", Reduce)
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
  module.def("create", Create, py::arg("out"), py::arg("molecules"), py::arg("name"),
             py::arg("type"), py::arg("threads"), py::arg("progress"));
}

}  // namespace KorvexPython
