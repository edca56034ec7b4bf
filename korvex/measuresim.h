#pragma once

/// Similarity of two fingerprints of one type, and the population counts for scans of the fast
/// database. All functions are pure and may be called from any thread.
///
/// Legend: onlyA and onlyB are the bits set in one fingerprint alone, both those set in both,
/// neither those clear in both. Two fingerprints of different types report the error "fingerprint
/// type mismatch!" (Tanimoto: "ZQTanimoto() fingerprint type mismatch!") and score 0.0. Two equal
/// ones, including two empty ones, score 1.0, by Manhattan 0.0. A count above 2^24, where floats
/// are no longer exact, is reported as Fatal.
///
/// Unhashed fingerprints contain text. Tanimoto compares them as multisets of tokens, and two empty
/// ones score 0.0; for the other measures the unhashed path and circular kinds are an assertion
/// failure. For Lingo fingerprints substrings of four characters are counted like bits, with
/// neither 0 (lingo.h): if one text is shorter, two different ones score 0.0 by all measures.

#include <cstdint>
#include <string>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

namespace ZQSimMeasure {
/// The numbers in one list. Each has a row in the library's table of measures, which doesn't
/// compile without it.
struct Number {
  enum : unsigned int { Tanimoto = 1, Cosine, Dice, Euclid, Tversky, Manhattan, End };
};
/// both / (onlyA + onlyB + both)
inline constexpr unsigned int Tanimoto = Number::Tanimoto;
/// both / sqrt((onlyA + both) * (onlyB + both))
inline constexpr unsigned int Cosine = Number::Cosine;
/// 2 both / (onlyA + onlyB + 2 both)
inline constexpr unsigned int Dice = Number::Dice;
/// sqrt((both + neither) / all)
inline constexpr unsigned int Euclid = Number::Euclid;
/// both / (alpha onlyA + beta onlyB + both)
inline constexpr unsigned int Tversky = Number::Tversky;
/// (onlyA + onlyB) / all, a distance
inline constexpr unsigned int Manhattan = Number::Manhattan;
/// Whether the number is that of a measure.
inline constexpr bool IsValid(unsigned int measure) { return measure - 1 < Number::End - 1; }
}  // namespace ZQSimMeasure

/// "Tanimoto" for 1 and so on; "unknown" for a number that isn't a measure.
ZQ_EXPORT std::string ZQGetSimilarityMeasureName(unsigned int measure);

/// Computes the four counts; `neither` may be null, and isn't changed for Lingo. False for a type
/// mismatch and for kinds without counts, with the counts unchanged, and where `ZQGetLingoSimTerms`
/// returns false.
ZQ_EXPORT bool ZQGetBitCounts(const ZQFingerPrint& a, const ZQFingerPrint& b, unsigned int* onlyA,
                              unsigned int* onlyB, unsigned int* both, unsigned int* neither);

/// The score by a measure, which must be valid; only Tversky reads alpha and beta.
ZQ_EXPORT float ZQGetSimilarity(unsigned int measure, const ZQFingerPrint& a,
                                const ZQFingerPrint& b, float alpha, float beta);

ZQ_EXPORT float ZQTanimoto(const ZQFingerPrint& a, const ZQFingerPrint& b);
/// Uses one Newton step on the processor's reciprocal square root: the last bits may differ from
/// the rounded value and between processors, and the result may exceed 1.0 by a rounding step.
ZQ_EXPORT float ZQCosine(const ZQFingerPrint& a, const ZQFingerPrint& b);
ZQ_EXPORT float ZQDice(const ZQFingerPrint& a, const ZQFingerPrint& b);
ZQ_EXPORT float ZQEuclid(const ZQFingerPrint& a, const ZQFingerPrint& b);
ZQ_EXPORT float ZQTversky(const ZQFingerPrint& a, const ZQFingerPrint& b, float alpha, float beta);
ZQ_EXPORT float ZQManhattan(const ZQFingerPrint& a, const ZQFingerPrint& b);

/// A measure as an object. Immutable; one object may be called from many threads.
class ZQ_EXPORT ZQSimFuncBase {
 public:
  virtual ~ZQSimFuncBase() = default;
  virtual float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const = 0;
  /// A new object of the same class, owned by the caller.
  virtual ZQSimFuncBase* CreateCopy() const = 0;
  /// The class's name, such as "ZQTanimoto".
  virtual std::string GetSimTypeString() const = 0;
};

/// A measure as a class: `Base` is its base class, `A` the type of side A.
template <class Base, class A, unsigned int measure>
class ZQ_EXPORT ZQMeasureSim : public Base {
 public:
  using Base::operator();
  float operator()(const A& a, const ZQFingerPrint& b) const override {
    return ZQGetSimilarity(measure, a, b, 0.0F, 0.0F);
  }
  ZQMeasureSim* CreateCopy() const override { return new ZQMeasureSim(*this); }
  std::string GetSimTypeString() const override {
    return "ZQ" + ZQGetSimilarityMeasureName(measure);
  }
};

/// The same for a measure with weights.
template <class Base, class A, unsigned int measure>
class ZQ_EXPORT ZQWeightedMeasureSim : public Base {
 public:
  /// `alpha` weighs what only side A has.
  ZQWeightedMeasureSim(float alpha, float beta) : alpha_(alpha), beta_(beta) {}
  using Base::operator();
  float operator()(const A& a, const ZQFingerPrint& b) const override {
    return ZQGetSimilarity(measure, a, b, alpha_, beta_);
  }
  ZQWeightedMeasureSim* CreateCopy() const override { return new ZQWeightedMeasureSim(*this); }
  std::string GetSimTypeString() const override {
    return "ZQ" + ZQGetSimilarityMeasureName(measure);
  }

 private:
  float alpha_;
  float beta_;
};

using ZQTanimotoSim = ZQMeasureSim<ZQSimFuncBase, ZQFingerPrint, ZQSimMeasure::Tanimoto>;
using ZQCosineSim = ZQMeasureSim<ZQSimFuncBase, ZQFingerPrint, ZQSimMeasure::Cosine>;
using ZQDiceSim = ZQMeasureSim<ZQSimFuncBase, ZQFingerPrint, ZQSimMeasure::Dice>;
using ZQEuclidSim = ZQMeasureSim<ZQSimFuncBase, ZQFingerPrint, ZQSimMeasure::Euclid>;
using ZQManhattanSim = ZQMeasureSim<ZQSimFuncBase, ZQFingerPrint, ZQSimMeasure::Manhattan>;
using ZQTverskySim = ZQWeightedMeasureSim<ZQSimFuncBase, ZQFingerPrint, ZQSimMeasure::Tversky>;

/// Counts the set bits of an array of words; the word count must be a multiple of 4.
using ZQPopCountFunc = unsigned long (*)(const unsigned long* words, unsigned long count);

/// The best method of the processor: 2 with SSE4.2 and POPCNT, 1 without; 0 on a machine without
/// any scan function.
ZQ_EXPORT unsigned int ZQGetPopCountMethod();
/// The scan function of a method; null after an assertion failure for any number but 1 and 2.
ZQ_EXPORT ZQPopCountFunc ZQGetPopCountFunc(unsigned int method);
ZQ_EXPORT unsigned long ZQPopCountPOPCNT(const unsigned long* words, unsigned long count);
ZQ_EXPORT unsigned long ZQPopCountBitCount(const unsigned long* words, unsigned long count);
/// Placeholders for other processors: an assertion failure, and 0.
ZQ_EXPORT unsigned long ZQPopCountARM(const unsigned long* words, unsigned long count);
ZQ_EXPORT unsigned long ZQPopCountMM(const unsigned long* words, unsigned long count);
/// 256: these functions scan fingerprints whose size is a multiple of this many bits.
ZQ_EXPORT unsigned int ZQGetPopCountFingerprintSizeUnit();

}  // namespace ZQKorvex
