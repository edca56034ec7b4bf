#pragma once

/// The concrete fingerprint types: a description of each kind, the packing of its parameters into
/// 64 bits, and the factories that intern the type objects.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
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
};

/// What one kind of fingerprint is called and allows.
struct ZQFPKind {
  unsigned int number;          ///< constant of `ZQFPType`
  const char* prefix;           ///< of its type string
  const char* sizeKey;          ///< key of the number of bits; null for a kind without parameters
  const char* distanceKey;      ///< "bonds" or "radius"
  unsigned int distanceLimit;   ///< largest legal distance
  const char* strayBitsReport;  ///< what an id with bits outside its fields is reported as

  bool HasParams() const { return sizeKey != nullptr; }
  /// Hashed kinds have a number of bits in their type.
  bool IsHashed() const { return number < ZQFPType::UnhashedPath; }
};

inline constexpr ZQFPKind zqMACCS166Kind{
    ZQFPType::MACCS166, "MACCS166", nullptr, nullptr, 0, nullptr};
inline constexpr ZQFPKind zqLingoKind{ZQFPType::Lingo, "Lingo", nullptr, nullptr, 0, nullptr};
inline constexpr ZQFPKind zqPathKind{ZQFPType::Path, "Path", "size",
                                     "bonds",        19,     "Unrecognised data in ZQFPPathType!"};
inline constexpr ZQFPKind zqCircularKind{
    ZQFPType::Circular, "Circular", "size",
    "radius",           255,        "Unrecognised data in ZQFPCircularType!"};
inline constexpr ZQFPKind zqTreeKind{ZQFPType::Tree, "Tree", "size",
                                     "bonds",        19,     "Unrecognised data in ZQFPTreeType!"};
inline constexpr ZQFPKind zqUnhashedPathKind{
    ZQFPType::UnhashedPath, "UHPath", "numbits", "bonds", 255, "Unrecognised data!"};
inline constexpr ZQFPKind zqUnhashedCircularKind{
    ZQFPType::UnhashedCircular, "UHCircular", "numbits", "radius", 9, "Unrecognised data!"};
inline constexpr ZQFPKind zqUnhashedTreeKind{
    ZQFPType::UnhashedTree, "UHTree", "numbits", "bonds", 19, "Unrecognised data!"};

/// Packs parameters: max in bits 0 to 7, min in 8 to 15, btype in 16 to 23, atype in 24 to 39,
/// numbits (hashed kinds) in 44 to 59. False after an assertion failure for each that is out of
/// its range.
bool ZQPackFPTypeID(const ZQFPKind& kind, const ZQFPTypeValues& values, std::uint64_t& id);
/// The reverse. Warns of bits outside the fields and goes on; a hashed kind's numbits below 16 is
/// an assertion failure.
ZQFPTypeValues ZQUnpackFPTypeID(const ZQFPKind& kind, std::uint64_t id);

/// The type of a kind under a version, without a test of either: what a stored record says.
const ZQFPTypeBase* ZQInternFPType(const ZQFPKind& kind, unsigned short version, std::uint64_t id);
/// The type of a kind by its parameters, under the current version or a given one; null after an
/// assertion failure for each that is out of its range.
const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, const ZQFPTypeValues& values = {});
const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, unsigned short version,
                                const ZQFPTypeValues& values = {});

/// Appends the type string.
void ZQAppendFPTypeString(std::string& text, const ZQFPKind& kind, unsigned short version,
                          std::uint64_t id);

/// The kind by how the string begins; null for none.
const ZQFPKind* ZQFindFPKind(const std::string& typeString);
/// The parser of the kinds with parameters: what no token names is all ones, an unhashed kind's
/// numbits 0. False after a warning.
bool ZQParseFPTypeString(const ZQFPKind& kind, const std::string& typeString,
                         unsigned short& version, ZQFPTypeValues& values);
/// The parser of the kinds without.
bool ZQParseFPTypeString(const ZQFPKind& kind, const std::string& typeString,
                         unsigned short& version);

/// The type class of a kind.
template <const ZQFPKind& kind>
class ZQFPConcreteType final : public ZQFPTypeBase {
 public:
  explicit ZQFPConcreteType(unsigned short version, std::uint64_t id = 0)
      : ZQFPTypeBase(version, id) {}
  unsigned int GetFPType() const override { return kind.number; }
  std::string GetFPTypeString() const override {
    std::string text;
    ZQAppendFPTypeString(text, kind, GetVersion(), GetID());
    return text;
  }
};

using ZQFPMACCS166Type = ZQFPConcreteType<zqMACCS166Kind>;
using ZQFPLingoType = ZQFPConcreteType<zqLingoKind>;
using ZQFPPathType = ZQFPConcreteType<zqPathKind>;
using ZQFPCircularType = ZQFPConcreteType<zqCircularKind>;
using ZQFPTreeType = ZQFPConcreteType<zqTreeKind>;
using ZQFPUnhashedPathType = ZQFPConcreteType<zqUnhashedPathKind>;
using ZQFPUnhashedCircularType = ZQFPConcreteType<zqUnhashedCircularKind>;
using ZQFPUnhashedTreeType = ZQFPConcreteType<zqUnhashedTreeKind>;

/// Hands out the one T of each key, made on first use and deleted at process exit. Any thread may
/// ask; the pointers need no lock.
template <class T, class... Key>
class ZQFPTypeInterner {
 public:
  const T* GetFPType(Key... key) {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::unique_ptr<T>& type = types_[{key...}];
    if (!type) type = std::make_unique<T>(key...);
    return type.get();
  }

 private:
  std::mutex mutex_;
  std::map<std::tuple<Key...>, std::unique_ptr<T>> types_;
};

/// Keyed by version and id.
template <class T>
using ZQFPTypeFactory = ZQFPTypeInterner<T, unsigned short, std::uint64_t>;
/// Keyed by version alone.
template <class T>
using ZQFPTypeFactoryNoParams = ZQFPTypeInterner<T, unsigned short>;

}  // namespace ZQKorvex
