#pragma once

/// What the types of fingerprints are made from: a description of each kind, the packing of its
/// parameters into 64 bits, and their limits.

#include <cstdint>
#include <string>
#include <tuple>

#include "korvex/fptypes.h"

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

/// What one kind of fingerprint is called and allows.
struct ZQFPKind {
  unsigned int number;          ///< constant of `ZQFPType`
  const char* prefix;           ///< of its type string
  const char* sizeKey;          ///< key of the number of bits; null for a kind without parameters
  const char* distanceKey;      ///< "bonds" or "radius"
  unsigned int distanceLimit;   ///< largest legal distance
  unsigned int largestMade;     ///< largest distance of which fingerprints are made
  const char* strayBitsReport;  ///< what an id with bits outside its fields is reported as

  bool HasParams() const { return sizeKey != nullptr; }
  /// Hashed kinds have a number of bits in their type.
  bool IsHashed() const { return number < ZQFPType::UnhashedPath; }
};

inline constexpr ZQFPKind zqMACCS166Kind{
    ZQFPType::MACCS166, "MACCS166", nullptr, nullptr, 0, 0, nullptr};
inline constexpr ZQFPKind zqLingoKind{ZQFPType::Lingo, "Lingo", nullptr, nullptr, 0, 0, nullptr};
inline constexpr ZQFPKind zqPathKind{
    ZQFPType::Path, "Path", "size", "bonds", 19, 19, "Unrecognised data in ZQFPPathType!"};
inline constexpr ZQFPKind zqCircularKind{ZQFPType::Circular,
                                         "Circular",
                                         "size",
                                         "radius",
                                         255,
                                         10,
                                         "Unrecognised data in ZQFPCircularType!"};
inline constexpr ZQFPKind zqTreeKind{
    ZQFPType::Tree, "Tree", "size", "bonds", 19, 19, "Unrecognised data in ZQFPTreeType!"};
inline constexpr ZQFPKind zqUnhashedPathKind{
    ZQFPType::UnhashedPath, "UHPath", "numbits", "bonds", 255, 255, "Unrecognised data!"};
inline constexpr ZQFPKind zqUnhashedCircularKind{
    ZQFPType::UnhashedCircular, "UHCircular", "numbits", "radius", 9, 9, "Unrecognised data!"};
inline constexpr ZQFPKind zqUnhashedTreeKind{
    ZQFPType::UnhashedTree, "UHTree", "numbits", "bonds", 19, 19, "Unrecognised data!"};

/// The kind of a number; null for none.
const ZQFPKind* ZQFindFPKind(unsigned int number);

/// The first parameter out of its legal range and that range, such as "size 8 is outside 16 to
/// 65535"; empty if there is none.
std::string ZQFindFPTypeFault(const ZQFPKind& kind, const ZQFPTypeValues& values);

/// Packs parameters: max in bits 0 to 7, min in 8 to 15, btype in 16 to 23, atype in 24 to 39,
/// numbits (hashed kinds) in 44 to 59. False after an assertion failure for each that is out of
/// its range.
bool ZQPackFPTypeID(const ZQFPKind& kind, const ZQFPTypeValues& values, std::uint64_t& id);
/// The reverse, of the fields alone. Kinds without a number of bits have 0 there.
ZQFPTypeValues ZQDecodeFPTypeID(std::uint64_t id);
/// The same for a type that is to be used. Warns of bits outside the fields and goes on; a hashed
/// kind's numbits below 16 is an assertion failure.
ZQFPTypeValues ZQUnpackFPTypeID(const ZQFPKind& kind, std::uint64_t id);

/// The type of a kind under a version, without a test of either: what a stored record says.
const ZQFPTypeBase* ZQInternFPType(const ZQFPKind& kind, unsigned short version, std::uint64_t id);
/// The type of a kind by its parameters, under the current version or a given one; null after an
/// assertion failure for each that is out of its range.
const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, const ZQFPTypeValues& values = {});
const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, unsigned short version,
                                const ZQFPTypeValues& values = {});

/// The kind by how the string begins; null for none.
const ZQFPKind* ZQFindFPKind(const std::string& typeString);

}  // namespace ZQKorvex
