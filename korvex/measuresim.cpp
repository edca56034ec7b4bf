#include "korvex/measuresim.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "korvex/fpfast_variants_local.h"
#include "korvex/fpkinds.h"
#include "korvex/fptext_local.h"
#include "korvex/lingo.h"
#include "korvex/measures_local.h"
#include "korvex/multiset_local.h"

namespace ZQKorvex {

namespace {

// What is counted in a fingerprint with a type: bits if its kind isn't in the table.
ZQFPMeasures MeasuresOf(const ZQFingerPrint& fp) {
  const ZQFPKind* kind = ZQFindFPKind(fp.GetFPTypeBase());
  return kind ? kind->measures : ZQFPMeasures::Bits;
}

// The tokens of an unhashed fingerprint, sorted bytewise.
std::vector<std::string_view> SortedTokens(const ZQFingerPrint& fp) {
  std::vector<std::string_view> tokens = ZQTokensOf(fp);
  std::sort(tokens.begin(), tokens.end());
  return tokens;
}

// Tanimoto of the multisets of tokens.
float TokenTanimoto(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  const std::vector<std::string_view> tokensA = SortedTokens(a);
  const std::vector<std::string_view> tokensB = SortedTokens(b);
  if (tokensA.empty() || tokensB.empty()) return 0.0F;
  return ZQMultisetTanimotoOf(tokensA, tokensB);
}

ZQCounts BitCountsOf(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  if (a.GetSize() != b.GetSize()) {  // only texts, and bits set by hand
    ZQCounts n;
    Bostrel::ZQGetBitCounts(a, b, &n.onlyA, &n.onlyB, &n.both, &n.neither);
    return n;
  }
  const ZQBitTerms terms = ZQGetProcessor().scans->count(a.Words(), b.Words(), a.NumWords());
  return {terms.a - terms.both, terms.b - terms.both, terms.both,
          a.GetSize() - (terms.a + terms.b - terms.both)};
}

// The score of two fingerprints that aren't of one type with bits. Apart from the common case, so
// that a scan doesn't pay for it.
[[gnu::noinline]] float OtherSimilarity(unsigned int measure, const ZQFingerPrint& a,
                                        const ZQFingerPrint& b, float alpha, float beta) {
  const ZQMeasure* row = ZQFindMeasure(measure);
  if (!ZQ_ASSERT(row)) return 0.0F;
  if (measure == ZQSimMeasure::Tanimoto) {
    if (!ZQIsSameFPType(a, b)) {
      ZQThrow.Error("ZQTanimoto() fingerprint type mismatch!");
      return 0.0F;
    }
    const ZQFPKind* kind = ZQFindFPKind(a.GetFPTypeBase());
    if (kind && kind->IsUnhashed()) return TokenTanimoto(a, b);
  }
  ZQCounts n;
  if (!ZQGetBitCounts(a, b, &n.onlyA, &n.onlyB, &n.both, &n.neither)) return 0.0F;
  return ZQScoreOf(*row, n, alpha, beta);
}

}  // namespace

ZQCounts ZQCountItems(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  ZQCounts n;
  if (!ZQFindFPKind(a.GetFPTypeBase())->IsUnhashed()) {
    ZQGetBitCounts(a, b, &n.onlyA, &n.onlyB, &n.both, &n.neither);
    return n;
  }
  const std::vector<std::string_view> tokensA = SortedTokens(a);
  const std::vector<std::string_view> tokensB = SortedTokens(b);
  n.both = ZQCheckedUnsigned(ZQMultisetCommonOf(tokensA, tokensB));
  n.onlyA = ZQCheckedUnsigned(tokensA.size()) - n.both;
  n.onlyB = ZQCheckedUnsigned(tokensB.size()) - n.both;
  return n;
}

std::string ZQGetSimilarityMeasureName(unsigned int measure) {
  const ZQMeasure* row = ZQFindMeasure(measure);
  return row ? row->name : "unknown";
}

bool ZQGetBitCounts(const ZQFingerPrint& a, const ZQFingerPrint& b, unsigned int* onlyA,
                    unsigned int* onlyB, unsigned int* both, unsigned int* neither) {
  if (!ZQIsSameFPType(a, b)) {
    ZQThrow.Error("fingerprint type mismatch!");
    return false;
  }
  const ZQFPMeasures measures = MeasuresOf(a);
  if (measures == ZQFPMeasures::Lingos) return ZQGetLingoSimTerms(a, b, onlyA, onlyB, both);
  if (!ZQ_ASSERT(measures != ZQFPMeasures::Tokens)) return false;
  const ZQCounts n = BitCountsOf(a, b);
  *onlyA = n.onlyA;
  *onlyB = n.onlyB;
  *both = n.both;
  if (neither) *neither = n.neither;
  return true;
}

float ZQGetSimilarity(unsigned int measure, const ZQFingerPrint& a, const ZQFingerPrint& b,
                      float alpha, float beta) {
  const ZQMeasure* row = ZQFindMeasure(measure);
  const ZQFPTypeBase* type = a.GetFPTypeBase();
  const bool isPlain = row && type && type == b.GetFPTypeBase();
  if (isPlain && MeasuresOf(a) == ZQFPMeasures::Bits) {
    return ZQScoreOf(*row, BitCountsOf(a, b), alpha, beta);
  }
  return OtherSimilarity(measure, a, b, alpha, beta);
}

float ZQTanimoto(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQGetSimilarity(ZQSimMeasure::Tanimoto, a, b, 0.0F, 0.0F);
}

float ZQCosine(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQGetSimilarity(ZQSimMeasure::Cosine, a, b, 0.0F, 0.0F);
}

float ZQDice(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQGetSimilarity(ZQSimMeasure::Dice, a, b, 0.0F, 0.0F);
}

float ZQEuclid(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQGetSimilarity(ZQSimMeasure::Euclid, a, b, 0.0F, 0.0F);
}

float ZQTversky(const ZQFingerPrint& a, const ZQFingerPrint& b, float alpha, float beta) {
  return ZQGetSimilarity(ZQSimMeasure::Tversky, a, b, alpha, beta);
}

float ZQManhattan(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQGetSimilarity(ZQSimMeasure::Manhattan, a, b, 0.0F, 0.0F);
}

unsigned int ZQGetPopCountMethod() { return ZQGetProcessor().popCountMethod; }

ZQPopCountFunc ZQGetPopCountFunc(unsigned int method) {
  switch (method) {
    case 1:
      return ZQPopCountBitCount;
    case 2:
      return ZQPopCountPOPCNT;
    default:
      ZQ_ASSERT(method != 0);
      ZQ_ASSERT(method == 1 || method == 2);
      return nullptr;
  }
}

unsigned long ZQPopCountARM(const unsigned long*, unsigned long) {
  ZQ_ASSERT(!"a scan function of another processor");
  return 0;
}

unsigned long ZQPopCountMM(const unsigned long*, unsigned long) {
  ZQ_ASSERT(!"a scan function of another processor");
  return 0;
}

unsigned int ZQGetPopCountFingerprintSizeUnit() { return 64 * zqWordsPerUnit; }

}  // namespace ZQKorvex
