#include "korvex/vsepr_fingerprint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <span>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "korvex/connectiontable_local.h"
#include "korvex/memory_local.h"
#include "korvex/vsepr_aro_stereo_types.h"
#include "korvex/vsepr_aro_types.h"

namespace ZQKorvex {

namespace {

using PathCounts = ZQVseprFingerprint::PathCounts;

constexpr unsigned int maxAtoms = ZQVseprFingerprint::MaxAtoms;

// ---- Making a fingerprint

/// The type of an atom by one of the two systems.
class ZQGetVseprType final : public ZQUnaryFunction<ZQAtomBase, unsigned int, true, true> {
 public:
  explicit ZQGetVseprType(bool stereoAware) : stereoAware_(stereoAware) {}
  unsigned int operator()(const ZQAtomBase& atom) const override {
    return stereoAware_ ? VSEPRAroStereoType::GetType(atom) : VSEPRAroType::GetType(atom);
  }
  ZQGetVseprType* CreateCopy() const override { return new ZQGetVseprType(*this); }

 private:
  bool stereoAware_;
};

// Sorts by one byte after another, from the lowest, which beats comparisons from some 128 pairs up.
void SortByKey(PathCounts& counts) {
  constexpr std::size_t worthwhile = 128;
  if (counts.size() < worthwhile) {
    std::ranges::sort(counts, {}, &PathCounts::value_type::first);
    return;
  }
  const auto byteOf = [](std::uint64_t key, std::size_t place) {
    return key >> (8 * place) & 0xff;
  };
  std::array<std::array<std::size_t, 256>, maxAtoms> places{};  // by byte: first counts
  for (const auto& [key, weight] : counts) {
    for (std::size_t i = 0; i < maxAtoms; ++i) ++places[i][byteOf(key, i)];
  }
  PathCounts sorted(counts.size());
  for (std::size_t i = 0; i < maxAtoms; ++i) {
    std::exclusive_scan(places[i].begin(), places[i].end(), places[i].begin(), std::size_t{0});
    for (const auto& pair : counts) sorted[places[i][byteOf(pair.first, i)]++] = pair;
    counts.swap(sorted);
  }
}

/// The weights of paths by key, each the sum of its additions in their order: a hash table with
/// linear probing over the places of the pairs.
class PathWeights {
 public:
  void Add(std::uint64_t key, double weight) {
    std::size_t slot = Hash(key);
    while (slots_[slot] != 0 && counts_[slots_[slot] - 1].first != key) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    if (slots_[slot] != 0) {
      counts_[slots_[slot] - 1].second += weight;
      return;
    }
    counts_.emplace_back(key, weight);
    slots_[slot] = static_cast<std::uint32_t>(counts_.size());
    if (2 * counts_.size() > slots_.size()) Grow();
  }

  /// Returns the pairs by ascending key.
  PathCounts Take() {
    SortByKey(counts_);
    return std::move(counts_);
  }

 private:
  std::size_t Hash(std::uint64_t key) const {
    constexpr std::uint64_t golden = 0x9e3779b97f4a7c15;
    return (key * golden) >> shift_;
  }
  void Grow() {
    slots_.assign(2 * slots_.size(), 0);
    --shift_;
    for (std::size_t i = 0; i < counts_.size(); ++i) {
      std::size_t slot = Hash(counts_[i].first);
      while (slots_[slot] != 0) slot = (slot + 1) & (slots_.size() - 1);
      slots_[slot] = static_cast<std::uint32_t>(i + 1);
    }
  }

  unsigned int shift_ = 64 - 11;
  std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(2048);  // place + 1, 0 if free
  PathCounts counts_;
};

/// Adds the paths from one atom after another.
class PathWalk {
 public:
  PathWalk(const ZQMolBase& mol, const ZQVseprOptions& options)
      : table_(mol, ZQConnectionTable::Hydrogens::Kept),
        types_(mol.GetMaxAtomIdx()),
        isBarred_(mol.GetMaxAtomIdx()),
        forcePathsOut_(options.GetForcePathsOut()) {
    const unsigned int least = std::min(options.GetMinPathLength(), options.GetMaxPathLength());
    const unsigned int greatest = std::max(options.GetMinPathLength(), options.GetMaxPathLength());
    lower_ = std::min(least, maxAtoms);
    upper_ = std::min(greatest, maxAtoms);
    const ZQGetVseprType getType(options.GetStereoAware());
    for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
      const ZQAtomBase* atom = mol.GetAtomAt(i);
      if (!atom) continue;
      types_[i] = getType(*atom);
      isBarred_[i] = atom->IsHydrogen();
    }
    for (unsigned int depth = 0; depth < maxAtoms; ++depth) {
      weights_[depth] = options.GetWeightByLength() ? std::exp((maxAtoms - depth) * 0.5) : 1.0;
    }
  }

  void WalkFrom(unsigned int start) {
    if (upper_ == 0) return;
    if (forcePathsOut_) {
      FindDepths(start);
      WalkOut(start, 0, 0);
    } else {
      WalkAll(start, 0, 0);
    }
  }
  PathCounts Take() { return weightOf_.Take(); }

 private:
  // The least number of bonds from the start to every atom in reach, level by level: any shortest
  // route is a simple path, so no simple path is shorter.
  void FindDepths(unsigned int start) {
    if (depths_.empty()) depths_.resize(types_.size(), outOfReach);
    for (const unsigned int atom : reached_) depths_[atom] = outOfReach;
    reached_.assign(1, start);
    depths_[start] = 0;
    for (std::size_t next = 0; next < reached_.size(); ++next) {
      const unsigned int atom = reached_[next];
      const unsigned int depth = depths_[atom] + 1;
      if (depth == upper_) return;
      for (const auto& [neighbour, bond] : table_[atom]) {
        if (depths_[neighbour] != outOfReach || isBarred_[neighbour] != 0) continue;
        depths_[neighbour] = depth;
        reached_.push_back(neighbour);
      }
    }
  }

  // Along shortest routes every step leads to an atom of the next depth, which the path can't have
  // visited.
  void WalkOut(unsigned int atom, unsigned int depth, std::uint64_t key) {
    key = Add(atom, depth, key);
    if (++depth == upper_) return;
    for (const auto& [neighbour, bond] : table_[atom]) {
      if (depths_[neighbour] == depth) WalkOut(neighbour, depth, key);
    }
  }

  void WalkAll(unsigned int atom, unsigned int depth, std::uint64_t key) {
    key = Add(atom, depth, key);
    if (++depth == upper_) return;
    const char wasBarred = isBarred_[atom];
    isBarred_[atom] = 1;
    for (const auto& [neighbour, bond] : table_[atom]) {
      if (isBarred_[neighbour] == 0) WalkAll(neighbour, depth, key);
    }
    isBarred_[atom] = wasBarred;
  }

  std::uint64_t Add(unsigned int atom, unsigned int depth, std::uint64_t key) {
    key |= types_[atom] << (8 * depth);
    if (depth >= lower_) weightOf_.Add(key, weights_[depth]);
    return key;
  }

  static constexpr unsigned int outOfReach = std::numeric_limits<unsigned int>::max();

  ZQConnectionTable table_;
  std::vector<std::uint64_t> types_;
  std::vector<char> isBarred_;  // hydrogens, and the atoms of the path
  bool forcePathsOut_;
  unsigned int lower_ = 0;
  unsigned int upper_ = 0;
  std::array<double, maxAtoms> weights_{};
  std::vector<unsigned int> depths_;
  std::vector<unsigned int> reached_;
  PathWeights weightOf_;
};

std::vector<unsigned int> HeavyAtoms(const ZQMolBase& mol) {
  std::vector<unsigned int> heavy;
  heavy.reserve(mol.NumAtoms());
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (atom && !atom->IsHydrogen()) heavy.push_back(i);
  }
  return heavy;
}

PathCounts CountPaths(const ZQMolBase& mol, const ZQVseprOptions& options,
                      std::span<const unsigned int> starts) {
  ZQGraphMol copy;
  const ZQMolBase* perceived = &mol;
  if (!mol.IsPerceived(ZQPerceived::Aromaticity)) {
    copy = mol;
    ZQPrepareForVsepr(copy);
    perceived = &copy;
  }
  PathWalk walk(*perceived, options);
  for (const unsigned int start : starts) walk.WalkFrom(start);
  return walk.Take();
}

// ---- Comparing two

/// Visits the pairs of two fingerprints by ascending key: those with a common key together.
template <class Both, class Only>
void Merge(const PathCounts& a, const PathCounts& b, Both both, Only only) {
  auto i = a.begin();
  auto j = b.begin();
  while (i != a.end() && j != b.end()) {
    if (i->first == j->first) {
      both(*i++, *j++);
    } else {
      only(i->first < j->first ? *i++ : *j++);
    }
  }
  for (; i != a.end(); ++i) only(*i);
  for (; j != b.end(); ++j) only(*j);
}

constexpr auto ignore = [](const PathCounts::value_type&) {};

}  // namespace

struct ZQVseprFingerprint::Impl {
  Impl() = default;
  Impl(PathCounts pairs, ZQVseprOptions passed) : counts(std::move(pairs)), options(passed) {
    for (const auto& [key, weight] : counts) volume += weight;
  }

  PathCounts counts;
  double volume = 0.0;
  ZQVseprOptions options;
};

bool operator==(const ZQVseprOptions& a, const ZQVseprOptions& b) {
  return a.GetMaxPathLength() == b.GetMaxPathLength() &&
         a.GetMinPathLength() == b.GetMinPathLength() &&
         a.GetForcePathsOut() == b.GetForcePathsOut();
}

void ZQPrepareForVsepr(ZQMolBase& mol) {
  ZQFindRingAtomsAndBonds(mol);
  ZQAssignAromaticFlags(mol, 2, true, 0, false);
  ZQClearUnrealStereo(mol);
}

ZQVseprFingerprint::ZQVseprFingerprint() = default;
ZQVseprFingerprint::ZQVseprFingerprint(const ZQMolBase& mol, ZQVseprOptions options) {
  Setup(mol, options);
}
ZQVseprFingerprint::ZQVseprFingerprint(const ZQAtomBase& atom, ZQVseprOptions options) {
  Setup(atom, options);
}
ZQVseprFingerprint::ZQVseprFingerprint(const ZQBondBase& bond, ZQVseprOptions options) {
  Setup(bond, options);
}
ZQVseprFingerprint::ZQVseprFingerprint(Impl impl)
    : impl_(std::make_unique<Impl>(std::move(impl))) {}
ZQVseprFingerprint::ZQVseprFingerprint(const ZQVseprFingerprint& other)
    : impl_(other.impl_ ? std::make_unique<Impl>(*other.impl_) : nullptr) {}
ZQVseprFingerprint::ZQVseprFingerprint(ZQVseprFingerprint&& other) noexcept = default;
ZQVseprFingerprint& ZQVseprFingerprint::operator=(const ZQVseprFingerprint& other) {
  return *this = ZQVseprFingerprint(other);
}
ZQVseprFingerprint& ZQVseprFingerprint::operator=(ZQVseprFingerprint&& other) noexcept = default;
ZQVseprFingerprint::~ZQVseprFingerprint() = default;

const ZQVseprFingerprint::Impl& ZQVseprFingerprint::Get() const {
  static const Impl empty;
  return impl_ ? *impl_ : empty;
}

template <class GetStarts>
void ZQVseprFingerprint::Setup(const ZQMolBase* mol, const ZQVseprOptions& options,
                               GetStarts getStarts) {
  impl_.reset();
  if (options.GetMaxPathLength() > maxAtoms) {
    ZQThrow.Warning("ZQVseprFingerprint : Setting maxPathLength, passed as %d, to the max of 8u",
                    static_cast<int>(options.GetMaxPathLength()));
  }
  ZQGuardMemory("ZQVseprFingerprint", [&] {
    impl_ = std::make_unique<Impl>(PathCounts(), options);  // what remains if memory runs out
    if (ZQ_ASSERT(mol)) *impl_ = Impl(CountPaths(*mol, options, getStarts()), options);
    return true;
  });
}

void ZQVseprFingerprint::Setup(const ZQMolBase& mol, ZQVseprOptions options) {
  Setup(&mol, options, [&] { return HeavyAtoms(mol); });
}
void ZQVseprFingerprint::Setup(const ZQAtomBase& atom, ZQVseprOptions options) {
  Setup(atom.GetParent(), options, [&] { return std::array{atom.GetIdx()}; });
}
void ZQVseprFingerprint::Setup(const ZQBondBase& bond, ZQVseprOptions options) {
  Setup(bond.GetParent(), options, [&] {
    return std::array{bond.GetBgn()->GetIdx(), bond.GetEnd()->GetIdx()};
  });
}

double ZQVseprFingerprint::GetVolume() const { return Get().volume; }
ZQVseprOptions ZQVseprFingerprint::GetOptions() const { return Get().options; }
PathCounts ZQVseprFingerprint::GetPathCounts() const { return Get().counts; }

double ZQVseprFingerprint::GetTanimoto(const ZQVseprFingerprint& other) const {
  if (!ZQ_ASSERT(GetOptions() == other.GetOptions())) return 0.0;
  const PathCounts& a = Get().counts;
  const PathCounts& b = other.Get().counts;
  if (a.empty() || b.empty()) return 0.0;
  double num = 0.0;
  double den = 0.0;
  Merge(
      a, b,
      [&](const auto& x, const auto& y) {
        num += std::min(x.second, y.second);
        den += std::max(x.second, y.second);
      },
      [&](const auto& x) { den += x.second; });
  return num / den;
}

ZQVseprFingerprint ZQVseprFingerprint::Scale(double factor) const {
  ZQVseprFingerprint scaled(*this);
  if (!scaled.impl_) return scaled;
  for (auto& [key, weight] : scaled.impl_->counts) weight *= factor;
  return scaled;
}

ZQVseprFingerprint ZQVseprFingerprint::operator|(const ZQVseprFingerprint& other) const {
  if (!ZQ_ASSERT(GetOptions() == other.GetOptions())) return {};
  PathCounts counts;
  const auto add = [&](const auto& x) { counts.push_back(x); };
  Merge(
      Get().counts, other.Get().counts,
      [&](const auto& x, const auto& y) { add(x.second < y.second ? y : x); }, add);
  return ZQVseprFingerprint(Impl(std::move(counts), {}));
}

ZQVseprFingerprint ZQVseprFingerprint::operator&(const ZQVseprFingerprint& other) const {
  if (!ZQ_ASSERT(GetOptions() == other.GetOptions())) return {};
  PathCounts counts;
  Merge(
      Get().counts, other.Get().counts,
      [&](const auto& x, const auto& y) { counts.push_back(y.second < x.second ? y : x); }, ignore);
  return ZQVseprFingerprint(Impl(std::move(counts), {}));
}

ZQVseprFingerprint ZQVseprFingerprint::operator+(const ZQVseprFingerprint& other) const {
  if (!ZQ_ASSERT(GetOptions() == other.GetOptions())) return {};
  if (Get().counts.empty()) return other;
  if (other.Get().counts.empty()) return *this;
  PathCounts counts;
  Merge(
      Get().counts, other.Get().counts,
      [&](const auto& x, const auto& y) { counts.emplace_back(x.first, x.second + y.second); },
      [&](const auto& x) { counts.push_back(x); });
  return ZQVseprFingerprint(Impl(std::move(counts), {}));
}

bool ZQVseprFingerprint::operator<(const ZQVseprFingerprint& other) const {
  constexpr double tolerance = 1e-11;
  const Impl& a = Get();
  const Impl& b = other.Get();
  if (!ZQ_ASSERT(a.options == b.options)) return false;
  if (a.volume < b.volume) return true;
  if (b.volume < a.volume) return false;
  const std::size_t common = std::min(a.counts.size(), b.counts.size());
  for (std::size_t i = 0; i < common; ++i) {
    const auto& [keyA, weightA] = a.counts[i];
    const auto& [keyB, weightB] = b.counts[i];
    if (keyA != keyB) return keyA < keyB;
    if (std::abs(weightA - weightB) > tolerance) return weightA < weightB;
  }
  return false;
}

double ZQGetTanimoto(const ZQVseprFingerprint& a, const ZQVseprFingerprint& b) {
  return a.GetTanimoto(b);
}

double ZQGetTversky(const ZQVseprFingerprint& a, const ZQVseprFingerprint& b, double alpha,
                    double beta) {
  if (!ZQ_ASSERT(a.GetOptions() == b.GetOptions())) return 0.0;
  double common = 0.0;  // the volume of a & b
  Merge(
      a.Get().counts, b.Get().counts,
      [&](const auto& x, const auto& y) { common += std::min(x.second, y.second); }, ignore);
  return common / ((b.GetVolume() - common) * beta + (a.GetVolume() - common) * alpha + common);
}

double ZQGetVseprTanimotoFxn::operator()(const ZQVseprFingerprint& a,
                                         const ZQVseprFingerprint& b) const {
  return a.GetTanimoto(b);
}

ZQGetVseprTanimotoFxn* ZQGetVseprTanimotoFxn::CreateCopy() const {
  return new ZQGetVseprTanimotoFxn(*this);
}

}  // namespace ZQKorvex
