#include "korvex/measuresim.h"

#include <cpuid.h>
#include <emmintrin.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "contract/bostrel/characters_local.h"
#include "korvex/fpkinds.h"
#include "korvex/lingo.h"
#include "korvex/measure_formulae_local.h"

namespace ZQKorvex {

namespace {

// What is counted in a fingerprint that has a type: bits where its kind isn't in the table.
ZQFPMeasures MeasuresOf(const ZQFingerPrint& fp) {
  const ZQFPKind* kind = ZQFindFPKind(fp.GetFPTypeBase());
  return kind ? kind->measures : ZQFPMeasures::Bits;
}

// The tokens of the NUL-terminated text that an unhashed fingerprint holds, sorted by byte.
std::vector<std::string_view> SortedTokens(const ZQFingerPrint& fp) {
  const std::string_view bytes(reinterpret_cast<const char*>(fp.Words()),
                               std::size_t{fp.NumWords()} * sizeof(std::uint64_t));
  std::string_view text = bytes.substr(0, bytes.find('\0'));
  std::vector<std::string_view> tokens;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    if (text.empty()) break;
    tokens.push_back(text.substr(0, text.find_first_of(whiteSpace)));
    text.remove_prefix(tokens.back().size());
  }
  std::sort(tokens.begin(), tokens.end());
  return tokens;
}

// Tanimoto over the multisets of tokens.
float TokenTanimoto(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  const std::vector<std::string_view> tokensA = SortedTokens(a);
  const std::vector<std::string_view> tokensB = SortedTokens(b);
  if (tokensA.empty() || tokensB.empty()) return 0.0F;
  return ZQMultisetTanimotoOf(tokensA, tokensB);
}

ZQCounts CountsOf(const ZQFingerPrint& a, const ZQFingerPrint& b, bool withNeither) {
  ZQCounts n;
  n.valid = ZQGetBitCounts(a, b, &n.onlyA, &n.onlyB, &n.both, withNeither ? &n.neither : nullptr);
  return n;
}
constexpr bool withoutNeither = false;
constexpr bool withNeither = true;

constexpr unsigned long wordsAtOnce = 4;

}  // namespace

std::string ZQGetSimilarityMeasureName(unsigned int measure) {
  switch (measure) {
    case ZQSimMeasure::Tanimoto:
      return "Tanimoto";
    case ZQSimMeasure::Cosine:
      return "Cosine";
    case ZQSimMeasure::Dice:
      return "Dice";
    case ZQSimMeasure::Euclid:
      return "Euclid";
    case ZQSimMeasure::Tversky:
      return "Tversky";
    case ZQSimMeasure::Manhattan:
      return "Manhattan";
    default:
      return "unknown";
  }
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
  if (neither) {
    Bostrel::ZQGetBitCounts(a, b, onlyA, onlyB, both, neither);
  } else {
    Bostrel::ZQGetBitCounts(a, b, onlyA, onlyB, both);
  }
  return true;
}

float ZQTanimoto(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  if (!ZQIsSameFPType(a, b)) {
    ZQThrow.Error("ZQTanimoto() fingerprint type mismatch!");
    return 0.0F;
  }
  const ZQFPMeasures measures = MeasuresOf(a);
  if (measures == ZQFPMeasures::Tokens || measures == ZQFPMeasures::TokensOrBits) {
    return TokenTanimoto(a, b);
  }
  return ZQTanimotoOf(CountsOf(a, b, withoutNeither));
}

float ZQCosine(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQCosineOf(CountsOf(a, b, withoutNeither));
}

float ZQDice(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQDiceOf(CountsOf(a, b, withNeither));
}

float ZQEuclid(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQEuclidOf(CountsOf(a, b, withNeither));
}

float ZQTversky(const ZQFingerPrint& a, const ZQFingerPrint& b, float alpha, float beta) {
  return ZQTverskyOf(CountsOf(a, b, withoutNeither), alpha, beta);
}

float ZQManhattan(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  return ZQManhattanOf(CountsOf(a, b, withNeither));
}

float ZQTanimotoSim::operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const {
  return ZQTanimoto(a, b);
}
ZQTanimotoSim* ZQTanimotoSim::CreateCopy() const { return new ZQTanimotoSim(*this); }
std::string ZQTanimotoSim::GetSimTypeString() const { return "ZQTanimoto"; }

float ZQCosineSim::operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const {
  return ZQCosine(a, b);
}
ZQCosineSim* ZQCosineSim::CreateCopy() const { return new ZQCosineSim(*this); }
std::string ZQCosineSim::GetSimTypeString() const { return "ZQCosine"; }

float ZQDiceSim::operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const {
  return ZQDice(a, b);
}
ZQDiceSim* ZQDiceSim::CreateCopy() const { return new ZQDiceSim(*this); }
std::string ZQDiceSim::GetSimTypeString() const { return "ZQDice"; }

float ZQEuclidSim::operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const {
  return ZQEuclid(a, b);
}
ZQEuclidSim* ZQEuclidSim::CreateCopy() const { return new ZQEuclidSim(*this); }
std::string ZQEuclidSim::GetSimTypeString() const { return "ZQEuclid"; }

float ZQManhattanSim::operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const {
  return ZQManhattan(a, b);
}
ZQManhattanSim* ZQManhattanSim::CreateCopy() const { return new ZQManhattanSim(*this); }
std::string ZQManhattanSim::GetSimTypeString() const { return "ZQManhattan"; }

float ZQTverskySim::operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const {
  return ZQTversky(a, b, alpha_, beta_);
}
ZQTverskySim* ZQTverskySim::CreateCopy() const { return new ZQTverskySim(*this); }
std::string ZQTverskySim::GetSimTypeString() const { return "ZQTversky"; }

unsigned int ZQGetPopCountMethod() {
  unsigned int a = 0;
  unsigned int b = 0;
  unsigned int c = 0;
  unsigned int d = 0;
  __cpuid(0, a, b, c, d);
  if (static_cast<int>(a) <= 0) return 1;
  __cpuid(1, a, b, c, d);
  constexpr unsigned int sse42 = 1U << 20;
  constexpr unsigned int popcnt = 1U << 23;
  return (c & sse42) && (c & popcnt) ? 2 : 1;
}

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

__attribute__((target("popcnt"))) unsigned long ZQPopCountPOPCNT(const unsigned long* words,
                                                                 unsigned long count) {
  if (!ZQ_ASSERT(count % wordsAtOnce == 0)) return 0;
  // One accumulator a position, so that the additions don't wait on one another.
  unsigned long sum[wordsAtOnce] = {};
  for (unsigned long i = 0; i < count; i += wordsAtOnce) {
    for (unsigned long j = 0; j < wordsAtOnce; ++j) {
      sum[j] += static_cast<unsigned long>(__builtin_popcountl(words[i + j]));
    }
  }
  return sum[0] + sum[1] + sum[2] + sum[3];
}

unsigned long ZQPopCountBitCount(const unsigned long* words, unsigned long count) {
  if (!ZQ_ASSERT(count % wordsAtOnce == 0)) return 0;
  const __m128i pairs = _mm_set1_epi64x(0x5555555555555555);
  const __m128i nibbles = _mm_set1_epi64x(0x3333333333333333);
  const __m128i bytes = _mm_set1_epi64x(0x0F0F0F0F0F0F0F0F);
  const __m128i lane = _mm_set1_epi64x(127);
  // Adjacent fields are added until each 64-bit lane holds the count of its word.
  const auto countLanes = [&](const unsigned long* at) {
    __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    x = _mm_add_epi64(_mm_and_si128(x, pairs), _mm_and_si128(_mm_srli_epi64(x, 1), pairs));
    x = _mm_add_epi64(_mm_and_si128(x, nibbles), _mm_and_si128(_mm_srli_epi64(x, 2), nibbles));
    x = _mm_and_si128(_mm_add_epi64(x, _mm_srli_epi64(x, 4)), bytes);
    x = _mm_add_epi64(x, _mm_srli_epi64(x, 8));
    x = _mm_add_epi64(x, _mm_srli_epi64(x, 16));
    return _mm_and_si128(_mm_add_epi64(x, _mm_srli_epi64(x, 32)), lane);
  };
  __m128i sum0 = _mm_setzero_si128();
  __m128i sum1 = _mm_setzero_si128();
  for (unsigned long i = 0; i < count; i += wordsAtOnce) {
    sum0 = _mm_add_epi64(sum0, countLanes(words + i));
    sum1 = _mm_add_epi64(sum1, countLanes(words + i + 2));
  }
  const __m128i sum = _mm_add_epi64(sum0, sum1);
  return static_cast<unsigned long>(_mm_cvtsi128_si64(sum)) +
         static_cast<unsigned long>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(sum, sum)));
}

unsigned long ZQPopCountARM(const unsigned long*, unsigned long) {
  ZQ_ASSERT(!"a scan function of another processor");
  return 0;
}

unsigned long ZQPopCountMM(const unsigned long*, unsigned long) {
  ZQ_ASSERT(!"a scan function of another processor");
  return 0;
}

unsigned int ZQGetPopCountFingerprintSizeUnit() { return 64 * wordsAtOnce; }

}  // namespace ZQKorvex
