#pragma once

/// The table of fingerprint kinds, one row per kind. Its columns hold all differences between
/// kinds; parsers, types, generators, measures and program options read them. A new kind needs a
/// row in fpkinds.cpp and a pair of files with its generator. The table is constant and thread
/// safe.

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <tuple>

#include "korvex/fingerprint.h"

namespace Quarnel {
class ZQAtomBondSet;
class ZQMatchBase;
}  // namespace Quarnel

namespace ZQKorvex {

class ZQFPFragments;
class ZQFPPattern;

/// The parameters of a type, unpacked. Kinds without bits or distances leave them at 0.
struct ZQFPTypeValues {
  unsigned int numbits = 0;
  unsigned int minDistance = 0;
  unsigned int maxDistance = 0;
  unsigned int atype = 0;
  unsigned int btype = 0;

  /// For assignment to a tie, in this order.
  auto AsTuple() const { return std::tuple(numbits, minDistance, maxDistance, atype, btype); }
};

/// The items that similarity measures count (measuresim.h).
enum class ZQFPMeasures {
  Bits,         ///< bits, by all measures
  Lingos,       ///< four-character substrings of a SMILES, by all measures
  Tokens,       ///< tokens of a text, by Tanimoto only
  TokensOrBits  ///< tokens of a text by Tanimoto, bits of the text by all others
};

/// Texts in messages, which users' scripts may compare. Null if a kind doesn't use one.
struct ZQFPKindTexts {
  const char* operation;      ///< "ZQMakePathFP()"
  const char* wrongType;      ///< the message about a type of another kind
  bool isWrongTypeError;      ///< an error; else a warning
  const char* strayBits;      ///< the warning about an id with bits outside its fields
  const char* name;           ///< "path", in the warnings about repaired parameters
  const char* ending;         ///< the end of most of these warnings
  const char* ofMaxDistance;  ///< follows the name in that about the largest distance
};

/// The functions that explain a fingerprint by the fragments of molecules (fppattern.h); null where
/// a kind has none.
struct ZQFPKindFragments {
  ZQIter<ZQFPPattern> (*patterns)(const ZQMolBase& mol, const ZQFPTypeBase* type);
  ZQIter<ZQAtomBondSet> (*coverage)(const ZQMolBase& mol, const ZQFPTypeBase* type, bool unique);
  ZQIter<ZQMatchBase> (*overlap)(const ZQMolBase& a, const ZQMolBase& b, const ZQFPTypeBase* type);
  /// For the library: collects the fragments of a valid molecule; for an explanation with their
  /// bits, and those of all symmetric atoms. Returns false after a message. May throw
  /// `std::bad_alloc`.
  bool (*collect)(ZQFPFragments& fragments, const ZQMolBase& mol, const ZQFPTypeBase* type,
                  bool forExplanation);
  bool dropsEqualMatches;  ///< from an overlap
  const char* missing;     ///< the end of the warning where there is none
};

/// One kind of fingerprint.
struct ZQFPKind {
  unsigned int number;         ///< stored in files, never renumbered; unhashed kinds from 9000 on
  const char* name;            ///< prefix of its type strings; none is a prefix of another
  unsigned short version;      ///< current (fpversion.h)
  ZQFPMeasures measures;       ///< the items that measures count
  bool isStorable;             ///< a fast database (fpfast.h) can hold it
  const char* sizeKey;         ///< type string: key of the number of bits; null without parameters
  const char* distanceKey;     ///< type string: "bonds" or "radius"; null without parameters
  ZQFPTypeValues defaults;     ///< without parameters: the number of bits, 0 if it varies
  unsigned int distanceLimit;  ///< largest distance of a type
  unsigned int largestUnrepaired;  ///< largest that a generator doesn't repair
  bool readsPreparedMolecules;     ///< prepared ones without a copy (fpatomtyper.h)
  bool perceivesSymmetry;          ///< in larger molecules, to start from one atom per class
  /// Makes the fingerprint of a molecule for a type; see `ZQMakeFP`.
  bool (*make)(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);
  /// The unique type of a version and id (fptypes.h). Doesn't check either.
  const ZQFPTypeBase* (*intern)(unsigned short version, std::uint64_t id);
  ZQFPKindFragments fragments;
  ZQFPKindTexts texts;

  bool HasParams() const { return distanceKey != nullptr; }
  /// Whether the bits are hashes of fragments and their number is a parameter.
  bool IsHashed() const { return measures == ZQFPMeasures::Bits && HasParams(); }
  /// Whether the fingerprint contains the fragments themselves, as a text of tokens.
  bool IsUnhashed() const {
    return measures == ZQFPMeasures::Tokens || measures == ZQFPMeasures::TokensOrBits;
  }
  /// Whether the fingerprint's bytes are a NUL-terminated text.
  bool IsText() const { return measures != ZQFPMeasures::Bits; }
  /// Largest distance for which fingerprints of a type can be made.
  unsigned int LargestMade() const { return std::min(distanceLimit, largestUnrepaired); }
};

/// All kinds: first those of databases, then the unhashed ones, then those without parameters.
ZQ_EXPORT std::span<const ZQFPKind> ZQGetFPKinds();
/// The kind with this number; null if there is none.
ZQ_EXPORT const ZQFPKind* ZQFindFPKind(unsigned int number);
/// The kind by a type string's prefix; null if there is none.
ZQ_EXPORT const ZQFPKind* ZQFindFPKind(const std::string& typeString);
/// The kind of a type; null for null and for a type of an application's own kind.
inline const ZQFPKind* ZQFindFPKind(const ZQFPTypeBase* type) {
  if (!type) return nullptr;
  const ZQFPKind* kind = type->GetInternedKind();
  return kind ? kind : ZQFindFPKind(type->GetFPType());
}

/// Describes the first parameter out of its legal range, such as "size 8 is outside 16 to 65535";
/// empty if there is none.
ZQ_EXPORT std::string ZQFindFPTypeFault(const ZQFPKind& kind, const ZQFPTypeValues& values);
/// The type of a kind by its parameters, with the current version or a given one. Each parameter
/// out of range (fingerprint.h) is an assertion failure, and the result is null.
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, const ZQFPTypeValues& values);
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, unsigned short version,
                                          const ZQFPTypeValues& values);

}  // namespace ZQKorvex
