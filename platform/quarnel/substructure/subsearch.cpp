#include "contract/quarnel/subsearch.h"

#include <algorithm>
#include <utility>

#include "contract/quarnel/graphmol.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/readers/reader_error_local.h"
#include "platform/quarnel/substructure/subsearch_local.h"

namespace Quarnel {

namespace {

template <class T, T* ZQMatchPair<T>::*side>
Bostrel::ZQIter<T> IterateSide(const std::vector<ZQMatchPair<T>>& pairs) {
  std::vector<T*> items;
  items.reserve(pairs.size());
  for (const ZQMatchPair<T>& pair : pairs) items.push_back(pair.*side);
  return {new Bostrel::ZQPointerIter<T>(std::move(items))};
}

/// The distinct sets of atoms found, all of one size, each a row of ascending numbers. A std::set
/// of vectors takes four times as long for 4.5 million matches, and twice the memory.
class SeenSets {
 public:
  void Clear() {
    rows_.clear();
    numRows_ = 0;
    table_.assign(16, 0);
  }

  /// Returns whether the set is new.
  bool Insert(const std::vector<std::uint32_t>& atoms) {
    const std::size_t size = atoms.size();
    rows_.insert(rows_.end(), atoms.begin(), atoms.end());
    const auto row = rows_.end() - static_cast<std::ptrdiff_t>(size);
    std::sort(row, rows_.end());
    std::size_t place = Hash(rows_.data() + numRows_ * size, size);
    for (;; ++place) {
      const std::size_t entry = table_[place & (table_.size() - 1)];
      if (entry == 0) break;
      if (std::equal(row, rows_.end(),
                     rows_.begin() + static_cast<std::ptrdiff_t>((entry - 1) * size))) {
        rows_.resize(rows_.size() - size);
        return false;
      }
    }
    table_[place & (table_.size() - 1)] = ++numRows_;
    if (numRows_ * 2 > table_.size()) Grow(size);
    return true;
  }

 private:
  static std::size_t Hash(const std::uint32_t* row, std::size_t size) {
    std::uint64_t hash = size;
    for (std::size_t i = 0; i < size; ++i) {
      hash = (hash ^ row[i]) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 29;
    }
    return hash;
  }

  void Grow(std::size_t size) {
    table_.assign(table_.size() * 2, 0);
    for (std::size_t i = 0; i < numRows_; ++i) {
      std::size_t place = Hash(rows_.data() + i * size, size);
      while (table_[place & (table_.size() - 1)] != 0) ++place;
      table_[place & (table_.size() - 1)] = i + 1;
    }
  }

  std::vector<std::uint32_t> rows_;
  std::size_t numRows_ = 0;
  std::vector<std::size_t> table_;  // numbers of rows from 1, 0 for a free slot
};

/// A pattern with its atoms and bonds as used in matches.
struct NamedPattern {
  std::unique_ptr<const SmartsPattern> pattern;
  ZQGraphMol graph;
};

/// Finds matches as it advances, and keeps them for stepping back.
class MatchIter final : public Bostrel::ZQIterBase<ZQMatchBase> {
 public:
  MatchIter(std::shared_ptr<const NamedPattern> named, const ZQMolBase& mol, bool unique)
      : named_(std::move(named)), unique_(unique) {
    const auto target = std::make_shared<SmartsTarget>(mol);
    seen_.Clear();
    exhausted_ = !search_.Start(*named_->pattern, *target);
    target_ = target;
    *this += 0U;
  }

  MatchIter* Copy() const override { return new MatchIter(*this); }
  MatchIter& operator++() override { return *this += 1U; }
  MatchIter& operator--() override { return *this -= 1U; }
  using ZQIterBase::operator+=;
  using ZQIterBase::operator-=;
  MatchIter& operator+=(unsigned int n) override {
    MoveTo(position_ + n);
    return *this;
  }
  // A step before the first wraps to a huge position, which is invalid.
  MatchIter& operator-=(unsigned int n) override {
    const bool passed = n > position_;
    position_ -= n;
    if (!passed) MoveTo(position_);
    return *this;
  }
  void ToFirst() override { MoveTo(0); }
  void ToLast() override {
    while (FindAnother()) {
    }
    MoveTo(NumFound() - 1);
  }
  ZQMatchBase& operator*() const override { return match_; }
  ZQMatchBase* operator->() const override { return &match_; }
  explicit operator bool() const override { return position_ < NumFound(); }

 private:
  std::size_t NumFound() const { return found_.size() / named_->pattern->atoms.size(); }

  bool FindAnother() {
    while (!exhausted_) {
      exhausted_ = !search_.Next();
      if (exhausted_ || (unique_ && !seen_.Insert(search_.Images()))) continue;
      found_.insert(found_.end(), search_.Images().begin(), search_.Images().end());
      return true;
    }
    return false;
  }

  void MoveTo(std::size_t position) {
    position_ = position;
    while (NumFound() <= position && FindAnother()) {
    }
    if (!*this) return;
    match_ = ZQMatch();
    const SmartsPattern& pattern = *named_->pattern;
    const std::uint32_t* images = &found_[position * pattern.atoms.size()];
    for (std::uint32_t a = 0; a < pattern.atoms.size(); ++a) {
      match_.AddPair(named_->graph.GetAtomAt(a), target_->atoms[images[a]].atom);
    }
    for (std::uint32_t b = 0; b < pattern.bonds.size(); ++b) {
      const SmartsPattern::Bond& bond = pattern.bonds[b];
      const SmartsTarget::Edge* edge = target_->FindEdge(images[bond.bgn], images[bond.end]);
      match_.AddPair(named_->graph.GetBondAt(b), target_->bonds[edge->bond].bond);
    }
  }

  std::shared_ptr<const NamedPattern> named_;
  std::shared_ptr<const SmartsTarget> target_;  // no further look-ups
  SmartsSearch search_;
  SeenSets seen_;
  bool unique_;
  bool exhausted_ = false;
  std::vector<std::uint32_t> found_;
  std::size_t position_ = 0;
  mutable ZQMatch match_;
};

}  // namespace

Bostrel::ZQIter<ZQAtomBase> ZQMatchBase::GetPatternAtoms() const {
  return IterateSide<ZQAtomBase, &ZQMatchPair<ZQAtomBase>::pattern>(GetAtomPairs());
}
Bostrel::ZQIter<ZQAtomBase> ZQMatchBase::GetTargetAtoms() const {
  return IterateSide<ZQAtomBase, &ZQMatchPair<ZQAtomBase>::target>(GetAtomPairs());
}
Bostrel::ZQIter<ZQBondBase> ZQMatchBase::GetPatternBonds() const {
  return IterateSide<ZQBondBase, &ZQMatchPair<ZQBondBase>::pattern>(GetBondPairs());
}
Bostrel::ZQIter<ZQBondBase> ZQMatchBase::GetTargetBonds() const {
  return IterateSide<ZQBondBase, &ZQMatchPair<ZQBondBase>::target>(GetBondPairs());
}

class ZQSubSearch::Impl {
 public:
  std::shared_ptr<const NamedPattern> named;
  const SmartsPattern* pattern = nullptr;
};

ZQSubSearch::ZQSubSearch(const std::string& smarts, bool ignoreStereo)
    : impl_(std::make_unique<Impl>()) {
  const auto named = std::make_shared<NamedPattern>();
  ReaderError error;
  named->pattern = ParseSmarts(smarts, ignoreStereo, error);
  if (named->pattern) {
    for (std::size_t i = 0; i < named->pattern->atoms.size(); ++i) named->graph.NewAtom(0);
    for (const SmartsPattern::Bond& bond : named->pattern->bonds) {
      named->graph.NewBond(named->graph.GetAtomAt(bond.bgn), named->graph.GetAtomAt(bond.end), 1);
    }
  } else {
    ReportUnreadable(named->graph, std::string(), "SMARTS column", error);
  }
  impl_->named = named;
  impl_->pattern = named->pattern.get();
}

ZQSubSearch::~ZQSubSearch() = default;
ZQSubSearch::ZQSubSearch(ZQSubSearch&& other) noexcept = default;
ZQSubSearch& ZQSubSearch::operator=(ZQSubSearch&& other) noexcept = default;

bool ZQSubSearch::IsValid() const { return impl_->pattern != nullptr; }

const ZQMolBase& ZQSubSearch::GetPattern() const { return impl_->named->graph; }

bool ZQSubSearch::SingleMatch(const ZQMolBase& mol) const {
  return IsValid() && SingleMatch(ZQSubSearchTarget(mol));
}

bool ZQSubSearch::SingleMatch(const ZQSubSearchTarget& target) const {
  return CountMatches(target, false, 1) != 0;
}

Bostrel::ZQIter<ZQMatchBase> ZQSubSearch::Match(const ZQMolBase& mol, bool unique) const {
  if (!IsValid()) return {};
  return {new MatchIter(impl_->named, mol, unique)};
}

std::size_t ZQSubSearch::CountMatches(const ZQSubSearchTarget& target, bool unique,
                                      std::size_t limit) const {
  if (!IsValid() || limit == 0) return 0;
  const SmartsPattern& pattern = *impl_->pattern;
  struct Scratch {
    SmartsSearch search;
    SeenSets seen;
  };
  const Workspace<Scratch> scratch;
  auto& [search, seen] = *scratch;
  if (!search.Start(pattern, *target.target_)) return 0;
  if (unique) seen.Clear();
  std::size_t count = 0;
  while (count < limit && search.Next()) {
    count += !unique || seen.Insert(search.Images());
  }
  return count;
}

}  // namespace Quarnel
