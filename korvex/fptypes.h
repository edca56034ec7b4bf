#pragma once

/// The type classes of the eight kinds, and the factories that intern their objects. Most callers
/// need neither: `ZQGetFPType` and similar functions return types as `const ZQFPTypeBase*`.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>

#include "korvex/fingerprint_params.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

/// Packs the parameters of a kind: max in bits 0 to 7, min in 8 to 15, btype in 16 to 23, atype in
/// 24 to 39, numbits (hashed kinds) in 44 to 59. Each one outside the limits in fingerprint.h is an
/// assertion failure, and the result is false.
ZQ_EXPORT bool ZQPackFPTypeID(const ZQFPKind& kind, const ZQFPTypeValues& values,
                              std::uint64_t& id);
/// The reverse, for the fields only. The number of bits is 0 for kinds that have none.
ZQ_EXPORT ZQFPTypeValues ZQDecodeFPTypeID(std::uint64_t id);
/// The same with checks. Bits outside the fields cause the warning "Unrecognised data in
/// ZQFPPathType!", with the type's class, or "Unrecognised data!" for an unhashed kind, and are
/// ignored; a hashed kind's numbits below 16 is an assertion failure.
ZQ_EXPORT ZQFPTypeValues ZQUnpackFPTypeID(const ZQFPKind& kind, std::uint64_t id);

/// The type class of a kind, by the kind's number.
template <unsigned int fptype>
class ZQ_EXPORT ZQFPTypeOfKind : public ZQFPTypeBase {
 public:
  static constexpr unsigned int number = fptype;

  /// A new object, not the interned one, which the factories return.
  explicit ZQFPTypeOfKind(unsigned short version, std::uint64_t id = 0)
      : ZQFPTypeBase(version, id) {}
  unsigned int GetFPType() const override { return number; }
  std::string GetFPTypeString() const override {
    std::string text;
    ZQGetFPTypeStringFromID(number, text, GetVersion(), GetID());
    return text;
  }
};

/// The same for a hashed kind.
template <unsigned int fptype>
class ZQ_EXPORT ZQFPHashedType : public ZQFPTypeOfKind<fptype> {
 public:
  using ZQFPTypeOfKind<fptype>::ZQFPTypeOfKind;

  /// Packs the parameters; 0 after the assertion failures of `ZQPackFPTypeID`.
  static std::uint64_t GetIDFromParams(unsigned int numbits, unsigned int min, unsigned int max,
                                       unsigned int atype, unsigned int btype) {
    std::uint64_t id = 0;
    ZQPackFPTypeID(*ZQFindFPKind(fptype), {numbits, min, max, atype, btype}, id);
    return id;
  }
  /// The reverse, with the reports of `ZQUnpackFPTypeID`.
  static void SetParamsFromID(std::uint64_t id, unsigned int& numbits, unsigned int& min,
                              unsigned int& max, unsigned int& atype, unsigned int& btype) {
    std::tie(numbits, min, max, atype, btype) =
        ZQUnpackFPTypeID(*ZQFindFPKind(fptype), id).AsTuple();
  }
};

/// The same for an unhashed kind, which has no number of bits.
template <unsigned int fptype>
class ZQ_EXPORT ZQFPUnhashedType : public ZQFPTypeOfKind<fptype> {
 public:
  using ZQFPTypeOfKind<fptype>::ZQFPTypeOfKind;

  static std::uint64_t GetIDFromParams(unsigned int min, unsigned int max, unsigned int atype,
                                       unsigned int btype) {
    std::uint64_t id = 0;
    ZQPackFPTypeID(*ZQFindFPKind(fptype), {0, min, max, atype, btype}, id);
    return id;
  }
  static void SetParamsFromID(std::uint64_t id, unsigned int& min, unsigned int& max,
                              unsigned int& atype, unsigned int& btype) {
    std::tie(std::ignore, min, max, atype, btype) =
        ZQUnpackFPTypeID(*ZQFindFPKind(fptype), id).AsTuple();
  }
};

using ZQFPMACCS166Type = ZQFPTypeOfKind<ZQFPType::MACCS166>;
using ZQFPLingoType = ZQFPTypeOfKind<ZQFPType::Lingo>;
using ZQFPPathType = ZQFPHashedType<ZQFPType::Path>;
using ZQFPCircularType = ZQFPHashedType<ZQFPType::Circular>;
using ZQFPTreeType = ZQFPHashedType<ZQFPType::Tree>;
using ZQFPUnhashedPathType = ZQFPUnhashedType<ZQFPType::UnhashedPath>;
using ZQFPUnhashedCircularType = ZQFPUnhashedType<ZQFPType::UnhashedCircular>;
using ZQFPUnhashedTreeType = ZQFPUnhashedType<ZQFPType::UnhashedTree>;

/// Returns the unique T of each key, created on first use and deleted with the factory. Thread
/// safe; the pointers need no lock. Doesn't check version or id.
template <class T, class... Key>
class ZQFPTypeInterner {
 public:
  /// `kind` is for the factories of the process, whose types are those of fingerprints.
  explicit ZQFPTypeInterner(const ZQFPKind* kind = nullptr) : kind_(kind) {}

  const T* GetFPType(Key... key) {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::unique_ptr<T>& type = types_[{key...}];
    if (!type) {
      type = std::make_unique<T>(key...);
      type->kind_ = kind_;
    }
    return type.get();
  }

 private:
  const ZQFPKind* kind_;
  std::mutex mutex_;
  std::map<std::tuple<Key...>, std::unique_ptr<T>> types_;
};

/// The key is version and id.
template <class T>
using ZQFPTypeFactory = ZQFPTypeInterner<T, unsigned short, std::uint64_t>;
/// The key is the version.
template <class T>
using ZQFPTypeFactoryNoParams = ZQFPTypeInterner<T, unsigned short>;

// The factories of the process, which last until it exits.
ZQ_EXPORT extern ZQFPTypeFactoryNoParams<ZQFPMACCS166Type>& maccs166TypeFactory;
ZQ_EXPORT extern ZQFPTypeFactoryNoParams<ZQFPLingoType>& lingoTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPPathType>& pathTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPCircularType>& circularTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPTreeType>& treeTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPUnhashedPathType>& uhpathTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPUnhashedCircularType>& uhcircularTypeFactory;
ZQ_EXPORT extern ZQFPTypeFactory<ZQFPUnhashedTreeType>& uhtreeTypeFactory;

}  // namespace ZQKorvex
