#pragma once

/// Similarity of two fingerprints of one type, and the population counts that the fast database
/// scans with. All functions are pure and may be called from any thread.
///
/// Legend: onlyA and onlyB are the bits set in one fingerprint alone, both those set in both,
/// neither those clear in both. Two fingerprints of different types report the error
/// "fingerprint type mismatch!" (Tanimoto: "ZQTanimoto() fingerprint type mismatch!") and score
/// 0.0. Two equal ones, the two empty ones among them, score 1.0, by Manhattan 0.0. A count above
/// 2^24, where floats are no longer exact, is reported as Fatal.
///
/// Unhashed fingerprints hold text. Tanimoto compares them as multisets of tokens, and two empty
/// ones score 0.0; for the other measures the unhashed path and circular kinds are an assertion
/// failure. Of Lingo fingerprints the substrings of four characters are counted as bits are, with
/// neither 0 (lingo.h): where one text is shorter, two that differ score 0.0 by all measures.

#include <cstdint>
#include <string>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

namespace ZQSimMeasure {
inline constexpr unsigned int Tanimoto = 1;   ///< both / (onlyA + onlyB + both)
inline constexpr unsigned int Cosine = 2;     ///< both / sqrt((onlyA + both) * (onlyB + both))
inline constexpr unsigned int Dice = 3;       ///< 2 both / (onlyA + onlyB + 2 both)
inline constexpr unsigned int Euclid = 4;     ///< sqrt((both + neither) / all)
inline constexpr unsigned int Tversky = 5;    ///< both / (alpha onlyA + beta onlyB + both)
inline constexpr unsigned int Manhattan = 6;  ///< (onlyA + onlyB) / all, a distance
/// Whether the number names a measure.
inline constexpr bool IsValid(unsigned int measure) { return measure - 1 < 6; }
}  // namespace ZQSimMeasure

/// "Tanimoto" for 1 and so on; "unknown" for a number that names no measure.
ZQ_EXPORT std::string ZQGetSimilarityMeasureName(unsigned int measure);

/// Fills the four counts; `neither` may be null, and stays untouched for Lingo. False for a type
/// mismatch and for kinds that have no counts, with the counts untouched, and where
/// `ZQGetLingoSimTerms` is.
ZQ_EXPORT bool ZQGetBitCounts(const ZQFingerPrint& a, const ZQFingerPrint& b, unsigned int* onlyA,
                              unsigned int* onlyB, unsigned int* both, unsigned int* neither);

ZQ_EXPORT float ZQTanimoto(const ZQFingerPrint& a, const ZQFingerPrint& b);
/// By one Newton step on the processor's reciprocal square root: the last bits may differ from
/// the rounded value and between processors, and 1.0 may be passed by a rounding step.
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

class ZQ_EXPORT ZQTanimotoSim : public ZQSimFuncBase {
 public:
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  ZQTanimotoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQCosineSim : public ZQSimFuncBase {
 public:
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  ZQCosineSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQDiceSim : public ZQSimFuncBase {
 public:
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  ZQDiceSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQEuclidSim : public ZQSimFuncBase {
 public:
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  ZQEuclidSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQManhattanSim : public ZQSimFuncBase {
 public:
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  ZQManhattanSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQTverskySim : public ZQSimFuncBase {
 public:
  ZQTverskySim(float alpha, float beta) : alpha_(alpha), beta_(beta) {}
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  ZQTverskySim* CreateCopy() const override;
  std::string GetSimTypeString() const override;

 private:
  float alpha_;
  float beta_;
};

/// Counts the set bits of an array of words; the word count must be a multiple of 4.
using ZQPopCountFunc = unsigned long (*)(const unsigned long* words, unsigned long count);

/// What the processor offers: 2 with SSE4.2 and POPCNT, 1 without; 0 names a machine that has no
/// scan function at all. Asked of the processor at every call.
ZQ_EXPORT unsigned int ZQGetPopCountMethod();
/// The scan function of a method; null after an assertion failure for any number but 1 and 2.
ZQ_EXPORT ZQPopCountFunc ZQGetPopCountFunc(unsigned int method);
ZQ_EXPORT unsigned long ZQPopCountPOPCNT(const unsigned long* words, unsigned long count);
ZQ_EXPORT unsigned long ZQPopCountBitCount(const unsigned long* words, unsigned long count);
/// Placeholders of other processors: an assertion failure, and 0.
ZQ_EXPORT unsigned long ZQPopCountARM(const unsigned long* words, unsigned long count);
ZQ_EXPORT unsigned long ZQPopCountMM(const unsigned long* words, unsigned long count);
/// 256: fingerprints scanned by these functions are a multiple of this many bits.
ZQ_EXPORT unsigned int ZQGetPopCountFingerprintSizeUnit();

}  // namespace ZQKorvex
