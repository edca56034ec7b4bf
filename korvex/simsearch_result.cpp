#include "korvex/simsearch_result.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "korvex/checked_local.h"
#include "korvex/simsearch_result_impl_local.h"

namespace ZQKorvex {

std::string ZQSimSearchStatusToName(unsigned int status) {
  static const std::array<std::string, 3> names = {"Uninitialized", "InProgress", "Finished"};
  return status < names.size() ? names[status] : "Invalid";
}

ZQSimSearchResult::ZQSimSearchResult(unsigned long bins, double minValue, double maxValue)
    : impl_(std::make_unique<ZQSimSearchResultImpl>(bins, minValue, maxValue)) {}
ZQSimSearchResult::~ZQSimSearchResult() = default;

bool ZQSimSearchResult::IsValid() const { return impl_->IsValid(); }
unsigned int ZQSimSearchResult::GetSearchStatus() const { return impl_->GetSearchStatus(); }
unsigned long ZQSimSearchResult::NumTargets() const { return impl_->NumTargets(); }
unsigned long ZQSimSearchResult::NumSearched() const { return impl_->NumSearched(); }
ZQFPHistogram ZQSimSearchResult::GetHistogram() const { return impl_->GetHistogram(); }
ZQIter<ZQSimScore> ZQSimSearchResult::GetSortedScores() { return impl_->GetSortedScores(); }

ZQSimSearchResultImpl::ZQSimSearchResultImpl(unsigned long bins, double minValue, double maxValue)
    : bins_(bins), histogram_(std::max(bins, 1UL), minValue, maxValue) {}

bool ZQSimSearchResultImpl::Init(unsigned long numTargets, const ZQFPDatabaseOptions& options) {
  // With a limit in the options, the number of targets is only the expected number of scores.
  constexpr unsigned long most = std::numeric_limits<unsigned int>::max();
  auto list = ZQInitFPDatabaseHitList(
      ZQCheckedUnsigned(options.GetLimit() == 0 ? numTargets : std::min(numTargets, most)),
      options);
  const std::lock_guard guard(lock_);
  numTargets_ = numTargets;
  numSearched_ = 0;
  hitList_ = std::move(list);
  valid_ = true;
  return true;
}

void ZQSimSearchResultImpl::UpdateScores(std::uint64_t index, double score) {
  if (!ZQ_ASSERT(hitList_)) return;
  RecordProgress(1);
  histogram_.AddSample(ZQCheckedFloat(score));
  hitList_->UpdateScores(ZQSimScore(index, score));
}

void ZQSimSearchResultImpl::UpdateScores(const ZQFPHistogram& histogram,
                                         const ZQHitList<ZQSimScore>& list) {
  ZQ_ASSERT(histogram.NumBins() == histogram_.NumBins());
  const std::lock_guard guard(lock_);
  if (!ZQ_ASSERT(hitList_)) return;
  histogram_ += histogram;
  hitList_->Merge(list);
}

ZQFPHistogram ZQSimSearchResultImpl::GetHistogram() const {
  if (status_ == ZQSimSearchStatus::Uninitialized) {
    ZQThrow.Warning("%s : result object is uninitialized!", "ZQSimSearchResult::GetHistogram()");
    return {200, 0.0, 1.0};
  }
  const std::lock_guard guard(lock_);
  return histogram_;
}

ZQFPHistogram ZQSimSearchResultImpl::MakeEmptyHistogram() const {
  return {histogram_.NumBins(), histogram_.GetMinValue(), histogram_.GetMaxValue()};
}

ZQIter<ZQSimScore> ZQSimSearchResultImpl::GetSortedScores() {
  const std::lock_guard guard(lock_);
  if (!ZQ_ASSERT(valid_ && hitList_)) return {};
  if (hitList_->GetItems().empty()) return {};
  if (status_ == ZQSimSearchStatus::Uninitialized) {
    ZQThrow.Warning("%s : result object is uninitialized!", "ZQSimSearchResult::GetSortedScores()");
    return {};
  }
  hitList_->SortScores(status_ == ZQSimSearchStatus::Finished);
  return new ZQVectorIter<ZQSimScore>(std::vector<ZQSimScore>(hitList_->GetItems()));
}

}  // namespace ZQKorvex
