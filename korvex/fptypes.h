#pragma once

/// The type classes of the eight kinds, and the factories that intern their objects. Most callers
/// need neither: `ZQGetFPType` and its peers return types as `const ZQFPTypeBase*`.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The kinds that have a number of bits among their parameters, and those that have no bits.
template <unsigned int fptype>
concept ZQHashedFPKind =
    fptype == ZQFPType::Path || fptype == ZQFPType::Circular || fptype == ZQFPType::Tree;
template <unsigned int fptype>
concept ZQUnhashedFPKind = fptype >= ZQFPType::UnhashedPath;

/// The type class of a kind, by the kind's number.
template <unsigned int fptype>
class ZQ_EXPORT ZQFPTypeOfKind final : public ZQFPTypeBase {
 public:
  static constexpr unsigned int number = fptype;

  /// A new object, which isn't the interned one: the factories make those.
  explicit ZQFPTypeOfKind(unsigned short version, std::uint64_t id = 0)
      : ZQFPTypeBase(version, id) {}
  unsigned int GetFPType() const override { return number; }
  std::string GetFPTypeString() const override;

  /// Packs the parameters of a hashed kind: max in bits 0 to 7, min in 8 to 15, btype in 16 to 23,
  /// atype in 24 to 39, numbits in 44 to 59. An assertion failure for each one beyond the limits
  /// that fingerprint.h gives, and 0.
  static std::uint64_t GetIDFromParams(unsigned int numbits, unsigned int min, unsigned int max,
                                       unsigned int atype,
                                       unsigned int btype) requires ZQHashedFPKind<fptype>;
  /// The same for an unhashed kind, which has no number of bits.
  static std::uint64_t GetIDFromParams(unsigned int min, unsigned int max, unsigned int atype,
                                       unsigned int btype) requires ZQUnhashedFPKind<fptype>;

  /// The reverse. Bits outside of the fields warn "Unrecognised data in ZQFPPathType!", with the
  /// class at hand, and change nothing; numbits below 16 is an assertion failure.
  static void SetParamsFromID(std::uint64_t id, unsigned int& numbits, unsigned int& min,
                              unsigned int& max, unsigned int& atype,
                              unsigned int& btype) requires ZQHashedFPKind<fptype>;
  /// The same for an unhashed kind, with the warning "Unrecognised data!".
  static void SetParamsFromID(std::uint64_t id, unsigned int& min, unsigned int& max,
                              unsigned int& atype,
                              unsigned int& btype) requires ZQUnhashedFPKind<fptype>;
};

using ZQFPMACCS166Type = ZQFPTypeOfKind<ZQFPType::MACCS166>;
using ZQFPLingoType = ZQFPTypeOfKind<ZQFPType::Lingo>;
using ZQFPPathType = ZQFPTypeOfKind<ZQFPType::Path>;
using ZQFPCircularType = ZQFPTypeOfKind<ZQFPType::Circular>;
using ZQFPTreeType = ZQFPTypeOfKind<ZQFPType::Tree>;
using ZQFPUnhashedPathType = ZQFPTypeOfKind<ZQFPType::UnhashedPath>;
using ZQFPUnhashedCircularType = ZQFPTypeOfKind<ZQFPType::UnhashedCircular>;
using ZQFPUnhashedTreeType = ZQFPTypeOfKind<ZQFPType::UnhashedTree>;

extern template class ZQFPTypeOfKind<ZQFPType::MACCS166>;
extern template class ZQFPTypeOfKind<ZQFPType::Lingo>;
extern template class ZQFPTypeOfKind<ZQFPType::Path>;
extern template class ZQFPTypeOfKind<ZQFPType::Circular>;
extern template class ZQFPTypeOfKind<ZQFPType::Tree>;
extern template class ZQFPTypeOfKind<ZQFPType::UnhashedPath>;
extern template class ZQFPTypeOfKind<ZQFPType::UnhashedCircular>;
extern template class ZQFPTypeOfKind<ZQFPType::UnhashedTree>;

/// Hands out the one T of each key, made on first use and deleted at process exit. Any thread may
/// call; the pointers need no lock. Neither version nor id is checked.
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

// The factories of the process.
ZQ_EXPORT extern ZQFPTypeFactoryNoParams<ZQFPMACCS166Type> maccs166TypeFactory;
ZQ_EXPORT extern ZQFPTypeFactoryNoParams<ZQFPLingoType> lingoTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPPathType> pathTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPCircularType> circularTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPTreeType> treeTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPUnhashedPathType> uhpathTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPUnhashedCircularType> uhcircularTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPUnhashedTreeType> uhtreeTypeFactory;

}  // namespace ZQKorvex
