#pragma once

/// The VSEPR fingerprint: a sparse, weighted and exact path fingerprint of a molecule, an atom or a
/// bond. Each path of up to eight heavy atoms is a key that spells the VSEPR types of its atoms,
/// one byte each; nothing is hashed. A fingerprint is a value of no fixed size, compared by a
/// weighted Tanimoto. Const operations are safe from many threads.

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "contract/bostrel/functions.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// A copyable value; setters return the object itself.
class ZQ_EXPORT ZQVseprOptions {
 public:
  /// The greatest number of atoms in a path, 8 by default. `ZQVseprFingerprint::Setup` warns of a
  /// greater number and uses 8.
  unsigned int GetMaxPathLength() const { return maxPathLength_; }
  ZQVseprOptions& SetMaxPathLength(unsigned int length) {
    maxPathLength_ = length;
    return *this;
  }
  /// The number of bonds from which on a path counts, 0 by default. The two lengths may be set the
  /// wrong way round.
  unsigned int GetMinPathLength() const { return minPathLength_; }
  ZQVseprOptions& SetMinPathLength(unsigned int length) {
    minPathLength_ = length;
    return *this;
  }
  /// Whether paths follow shortest routes from their first atom only; true by default. Otherwise
  /// all simple paths count, whose number grows fast in fused and bridged rings.
  bool GetForcePathsOut() const { return forcePathsOut_; }
  ZQVseprOptions& SetForcePathsOut(bool force) {
    forcePathsOut_ = force;
    return *this;
  }
  /// Whether a path of n atoms weighs exp((9 - n) / 2) instead of 1; true by default.
  bool GetWeightByLength() const { return weightByLength_; }
  ZQVseprOptions& SetWeightByLength(bool weight) {
    weightByLength_ = weight;
    return *this;
  }
  /// Whether atoms have the types of `VSEPRAroStereoType` instead of `VSEPRAroType`; true by
  /// default.
  bool GetStereoAware() const { return stereoAware_; }
  ZQVseprOptions& SetStereoAware(bool aware) {
    stereoAware_ = aware;
    return *this;
  }

 private:
  unsigned int maxPathLength_ = 8;
  unsigned int minPathLength_ = 0;
  bool forcePathsOut_ = true;
  bool weightByLength_ = true;
  bool stereoAware_ = true;
};

/// Perceives what VSEPR types read: rings and aromaticity, and clears configurations that aren't
/// real (`ZQClearUnrealStereo`). Atoms and bonds keep their indices. Fingerprints of the molecule
/// are then made without a copy.
ZQ_EXPORT void ZQPrepareForVsepr(ZQMolBase& mol);

/// Whether fingerprints of these options can be compared: path lengths and `forcePathsOut` are
/// equal. The other two switches don't matter.
ZQ_EXPORT bool operator==(const ZQVseprOptions& a, const ZQVseprOptions& b);

class ZQ_EXPORT ZQVseprFingerprint {
 public:
  /// Keys in ascending order, each once, with their weights. The first atom's type is the lowest
  /// byte of a key.
  using PathCounts = std::vector<std::pair<std::uint64_t, double>>;
  /// The greatest number of atoms in a path: a key has a byte for each.
  static constexpr unsigned int MaxAtoms = 8;

  /// An empty fingerprint with default options; so is one that was moved from.
  ZQVseprFingerprint();
  ZQVseprFingerprint(const ZQMolBase& mol, ZQVseprOptions options);
  ZQVseprFingerprint(const ZQAtomBase& atom, ZQVseprOptions options);
  ZQVseprFingerprint(const ZQBondBase& bond, ZQVseprOptions options);
  ZQVseprFingerprint(const ZQVseprFingerprint& other);
  ZQVseprFingerprint(ZQVseprFingerprint&& other) noexcept;
  ZQVseprFingerprint& operator=(const ZQVseprFingerprint& other);
  ZQVseprFingerprint& operator=(ZQVseprFingerprint&& other) noexcept;
  ~ZQVseprFingerprint();

  /// Replaces the content by the paths from every heavy atom of the molecule, from one atom (also a
  /// hydrogen), or from the two ends of a bond. Paths never enter a hydrogen. Warns
  /// "ZQVseprFingerprint : Setting maxPathLength, passed as 20, to the max of 8u" above 8, and
  /// reports the error "ZQVseprFingerprint : out of memory" if memory runs out; the fingerprint is
  /// then empty, with these options.
  ///
  /// The types are those of the molecule as it is if its aromaticity is perceived. Otherwise they
  /// are those of a copy made by `ZQPrepareForVsepr`; for many atoms of one molecule it is faster
  /// to prepare it first. Time grows with the number of paths: some 20 us for a prepared drug. That
  /// of an atom or bond also grows with the molecule, all of whose atoms are typed.
  void Setup(const ZQMolBase& mol, ZQVseprOptions options);
  void Setup(const ZQAtomBase& atom, ZQVseprOptions options);
  void Setup(const ZQBondBase& bond, ZQVseprOptions options);

  /// The sum of the weights at construction.
  double GetVolume() const;
  /// The options as they were passed.
  ZQVseprOptions GetOptions() const;
  PathCounts GetPathCounts() const;

  /// The weights that both have (the lesser of a common key), divided by those that either has
  /// (the greater); 0.0 if one of the two is empty. One merge of the lists, without allocation.
  double GetTanimoto(const ZQVseprFingerprint& other) const;

  // All operations of two fingerprints need comparable options (an assertion; the result is then
  // 0.0, false or empty).

  /// A copy with all weights multiplied. The volume remains that of the source.
  ZQVseprFingerprint Scale(double factor) const;
  /// The greater weight of a common key, and all other keys. The options of the result are the
  /// defaults.
  ZQVseprFingerprint operator|(const ZQVseprFingerprint& other) const;
  /// The lesser weight of the common keys. The options of the result are the defaults.
  ZQVseprFingerprint operator&(const ZQVseprFingerprint& other) const;
  /// The sums of the weights. The options of the result are the defaults; if one of the two is
  /// empty, it is a copy of the other.
  ZQVseprFingerprint operator+(const ZQVseprFingerprint& other) const;
  /// Orders by volume, then by the pairs: the first lesser key, or the first weight that is less by
  /// more than 1e-11. False if all pairs of either are used up before.
  bool operator<(const ZQVseprFingerprint& other) const;

 private:
  friend ZQ_EXPORT double ZQGetTversky(const ZQVseprFingerprint& a, const ZQVseprFingerprint& b,
                                       double alpha, double beta);
  struct Impl;

  explicit ZQVseprFingerprint(Impl impl);
  const Impl& Get() const;
  template <class GetStarts>
  void Setup(const ZQMolBase* mol, const ZQVseprOptions& options, GetStarts getStarts);

  std::unique_ptr<Impl> impl_;  // null for an empty fingerprint with default options
};

/// The same as `a.GetTanimoto(b)`.
ZQ_EXPORT double ZQGetTanimoto(const ZQVseprFingerprint& a, const ZQVseprFingerprint& b);
/// c / ((b - c) beta + (a - c) alpha + c) for the volumes a and b of the two and c of what they
/// share. NaN (0/0) for two empty fingerprints.
ZQ_EXPORT double ZQGetTversky(const ZQVseprFingerprint& a, const ZQVseprFingerprint& b,
                              double alpha, double beta);

/// `GetTanimoto` as a function object.
class ZQ_EXPORT ZQGetVseprTanimotoFxn
    : public ZQBinaryFunction<ZQVseprFingerprint, ZQVseprFingerprint, double, true, true> {
 public:
  double operator()(const ZQVseprFingerprint& a, const ZQVseprFingerprint& b) const override;
  ZQGetVseprTanimotoFxn* CreateCopy() const override;
};

}  // namespace ZQKorvex
