#pragma once

/// The kinds of fingerprint in one table, a row each. All that differs between kinds is a column
/// here, and everything else reads it: parsers, types, generators, measures, options of programs. A
/// new kind is a row in fpkinds.cpp and a pair of files with its generator. The table is constant;
/// any thread may read it.

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <tuple>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The parameters of a type, unpacked. Kinds without bits or distances leave them at 0.
struct ZQFPTypeValues {
  unsigned int numbits = 0;
  unsigned int minDistance = 0;
  unsigned int maxDistance = 0;
  unsigned int atype = 0;
  unsigned int btype = 0;

  /// In this order, to be assigned to a tie.
  auto AsTuple() const { return std::tuple(numbits, minDistance, maxDistance, atype, btype); }
};

/// What similarity measures count in fingerprints of a kind (measuresim.h).
enum class ZQFPMeasures {
  Bits,         ///< bits, by all measures
  Lingos,       ///< substrings of four characters of a SMILES, by all measures
  Tokens,       ///< tokens of a text, by Tanimoto alone
  TokensOrBits  ///< tokens of a text by Tanimoto, the bits of that text by all others
};

/// Texts in reports, which users and their scripts may compare. Null where a kind has no use for
/// it.
struct ZQFPKindTexts {
  const char* operation;      ///< "ZQMakePathFP()"
  const char* wrongType;      ///< the report on a type of another kind
  bool isWrongTypeError;      ///< its level: else a warning
  const char* strayBits;      ///< the warning of an id with bits outside its fields
  const char* name;           ///< "path", in the warnings of repaired parameters
  const char* ending;         ///< of most of these
  const char* ofMaxDistance;  ///< behind the name in the one on the largest distance
};

/// One kind of fingerprint.
struct ZQFPKind {
  unsigned int number;      ///< stored in files, never renumbered; unhashed kinds from 9000 on
  const char* name;         ///< the beginning of its type strings; none is the beginning of another
  unsigned short version;   ///< current (fpversion.h)
  ZQFPMeasures measures;    ///< what is counted
  bool isStorable;          ///< a fast database (fpfast.h) can hold it
  const char* sizeKey;      ///< type string: key of the number of bits; null without parameters
  const char* distanceKey;  ///< type string: "bonds" or "radius"; null without parameters
  ZQFPTypeValues defaults;  ///< without parameters: the number of bits, 0 if it varies
  unsigned int distanceLimit;      ///< largest distance of a type
  unsigned int largestUnrepaired;  ///< largest that a generator takes as it is
  bool readsPreparedMolecules;     ///< as they stand, without a copy (fpatomtyper.h)
  bool perceivesSymmetry;          ///< in larger molecules, to start from one atom of each class
  /// Makes the fingerprint of a molecule under a type, as `ZQMakeFP` does.
  bool (*make)(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);
  /// A new object of the kind's type class (fptypes.h), owned by the caller.
  ZQFPTypeBase* (*newType)(unsigned short version, std::uint64_t id);
  ZQFPKindTexts texts;

  bool HasParams() const { return distanceKey != nullptr; }
  /// Whether bits are made by hashing fragments, and their number is a parameter.
  bool IsHashed() const { return measures == ZQFPMeasures::Bits && HasParams(); }
  /// Whether the fragments themselves are kept, as a text of tokens.
  bool IsUnhashed() const {
    return measures == ZQFPMeasures::Tokens || measures == ZQFPMeasures::TokensOrBits;
  }
  /// Whether the fingerprint's bytes are a text that NUL ends.
  bool IsText() const { return measures != ZQFPMeasures::Bits; }
  /// Largest distance of which fingerprints are made under a type.
  unsigned int LargestMade() const { return std::min(distanceLimit, largestUnrepaired); }
};

/// All kinds: those of databases first, then the unhashed ones, then those without parameters.
ZQ_EXPORT std::span<const ZQFPKind> ZQGetFPKinds();
/// The kind of a number; null for none.
ZQ_EXPORT const ZQFPKind* ZQFindFPKind(unsigned int number);
/// The kind by how a type string begins; null for none.
ZQ_EXPORT const ZQFPKind* ZQFindFPKind(const std::string& typeString);
/// The kind of a type; null for null and for a type of an application's own kind.
inline const ZQFPKind* ZQFindFPKind(const ZQFPTypeBase* type) {
  if (!type) return nullptr;
  const ZQFPKind* kind = type->GetInternedKind();
  return kind ? kind : ZQFindFPKind(type->GetFPType());
}

/// The first parameter out of its legal range and that range, such as "size 8 is outside 16 to
/// 65535"; empty if there is none.
ZQ_EXPORT std::string ZQFindFPTypeFault(const ZQFPKind& kind, const ZQFPTypeValues& values);
/// The type of a kind by its parameters, under the current version or a given one; null after an
/// assertion failure for each that is out of its range (fingerprint.h).
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, const ZQFPTypeValues& values);
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, unsigned short version,
                                          const ZQFPTypeValues& values);

}  // namespace ZQKorvex
