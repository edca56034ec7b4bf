#pragma once

/// The base class of a database's implementations (fpdatabase.h). It holds the fingerprints and the
/// order and cutoff, and has the scans of all searches. An implementation has the measure, prepares
/// the query and scores single fingerprints. Exceptions pass through; the front catches them.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "korvex/fpdatabase.h"
#include "korvex/measures_local.h"

namespace ZQKorvex {

/// The scores that a search keeps.
struct ZQScoreFilter {
  ZQScoreFilter() = default;
  explicit ZQScoreFilter(const ZQFPDatabaseOptions& options)
      : cutoff(options.GetCutoff()),
        hasCutoff(options.HasCutoff()),
        descending(options.GetDescendingOrder()) {}

  /// The inclusive test of unsorted searches. Never true for NaN with a cutoff.
  bool Keeps(float score) const {
    return !hasCutoff || (descending ? score >= cutoff : cutoff >= score);
  }

  float cutoff = 0.0F;
  bool hasCutoff = false;
  bool descending = true;
};

class ZQFPDatabaseImplBase {
 public:
  explicit ZQFPDatabaseImplBase(const ZQFPTypeBase* type) : type_(type) {}
  virtual ~ZQFPDatabaseImplBase() = default;
  ZQFPDatabaseImplBase(const ZQFPDatabaseImplBase&) = delete;
  ZQFPDatabaseImplBase& operator=(const ZQFPDatabaseImplBase&) = delete;

  // See the front. An `end` above the number of fingerprints is cut to it; a limit of 0 keeps
  // nothing.
  virtual void SetSimFunc(unsigned int measure, bool descending) = 0;
  virtual void SetSimFunc(const ZQSimFuncBase& func, bool descending) = 0;
  virtual unsigned int AddFP(const ZQFingerPrint& fp);
  virtual unsigned int NumFingerPrints() const;
  virtual ZQIter<const ZQFingerPrint> GetFingerPrints() const;
  virtual ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query, unsigned int begin,
                                       unsigned int end) const = 0;
  virtual ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query, unsigned int limit,
                                             unsigned int begin, unsigned int end) const = 0;
  virtual ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                                       const ZQFPDatabaseOptions& options) const = 0;
  virtual ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                             const ZQFPDatabaseOptions& options) const = 0;

  const ZQFPTypeBase* GetFPTypeBase() const { return type_; }
  bool HasCutoff() const { return filter_.hasCutoff; }
  float GetCutoff() const { return filter_.cutoff; }
  void SetCutoff(float cutoff) {
    filter_.cutoff = cutoff;
    filter_.hasCutoff = true;
  }
  void ClearCutoff() { filter_.hasCutoff = false; }
  void SetDescendingOrder(bool descending) { filter_.descending = descending; }
  bool GetDescendingOrder() const { return filter_.descending; }
  bool IsSameFPType(const ZQFingerPrint& fp) const { return fp.GetFPTypeBase() == type_; }

 protected:
  /// Order and cutoff of the searches of a range.
  const ZQScoreFilter& GetFilter() const { return filter_; }
  /// False, after the warning "%sfingerprint type mismatch!", for a query of another type.
  bool CheckType(const ZQFingerPrint& query, const char* caller) const;
  /// Whether a fingerprint is of the right type and there is room for it.
  bool CanAdd(const ZQFingerPrint& fp) const;
  const ZQFingerPrint& GetFingerPrint(std::size_t index) const { return fingerprints_[index]; }

  /// The unsorted search of a range: `score` returns the score of the fingerprint of an index.
  template <class Score>
  ZQIter<ZQSimScore> FindScores(unsigned int begin, unsigned int end, const ZQScoreFilter& filter,
                                Score score) const {
    const unsigned int stop = std::min(end, NumFingerPrints());
    std::vector<ZQSimScore> found;
    if (!filter.hasCutoff && begin < stop) found.reserve(stop - begin);
    for (unsigned int i = begin; i < stop; ++i) {
      const float value = score(i);
      if (filter.Keeps(value)) found.emplace_back(i, double{value});
    }
    if (found.empty()) return {};
    return new ZQVectorIter<ZQSimScore>(std::move(found));
  }

  /// The sorted search of a range.
  template <class Score>
  ZQIter<ZQSimScore> FindSortedScores(unsigned int limit, unsigned int begin, unsigned int end,
                                      const ZQScoreFilter& filter, Score score) const {
    const unsigned int stop = std::min(end, NumFingerPrints());
    auto list = ZQInitFPDatabaseHitList(limit, filter.descending, filter.hasCutoff, filter.cutoff);
    // Most scores fail at a copy of the bar, which costs less than the list's own test.
    double bar = list->GetBar().GetScore();
    for (unsigned int i = begin; i < stop; ++i) {
      const double value{score(i)};
      if (!(filter.descending ? value > bar : bar > value)) continue;
      list->UpdateScores(ZQSimScore(i, value));
      bar = list->GetBar().GetScore();
    }
    if (!list->SortScores(true)) return {};
    return new ZQHitListIter<ZQSimScore>(std::move(list));
  }

 private:
  const ZQFPTypeBase* type_;
  ZQScoreFilter filter_;
  std::vector<ZQFingerPrint> fingerprints_;
};

// The weights of Tversky in a database whose measure was set by number. Beta isn't quite the 0.05
// of `ZQFPDatabaseOptions`, and stays so: scores would change.
inline constexpr float zqDatabaseAlpha = 0.95F;
inline constexpr float zqDatabaseBeta = 1.0F - zqDatabaseAlpha;

/// A new measure of a family (`ZQSimFuncBase` or `ZQLingoSimFunc`) by its number. An unknown one
/// warns "%s unknown similarity measure" and gives Tanimoto.
template <class Base, class A>
std::unique_ptr<Base> ZQMakeSimFunc(unsigned int measure, float alpha, float beta,
                                    const char* caller) {
  std::unique_ptr<Base> func;
  const auto makeIf = [&]<std::size_t row>(std::integral_constant<std::size_t, row>) {
    constexpr unsigned int number = zqMeasures[row].number;
    if (measure != number) return;
    if constexpr (zqMeasures[row].isSymmetric) {
      func = std::make_unique<ZQMeasureSim<Base, A, number>>();
    } else {
      func = std::make_unique<ZQWeightedMeasureSim<Base, A, number>>(alpha, beta);
    }
  };
  [&]<std::size_t... rows>(std::index_sequence<rows...>) {
    (makeIf(std::integral_constant<std::size_t, rows>()), ...);
  }
  (std::make_index_sequence<zqMeasures.size()>());
  if (func) return func;
  ZQThrow.Warning("%s unknown similarity measure", caller);
  return std::make_unique<ZQMeasureSim<Base, A, ZQSimMeasure::Tanimoto>>();
}

}  // namespace ZQKorvex
