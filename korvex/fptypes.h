#pragma once

/// The type classes of the eight kinds, and the factories that intern their objects. Most callers
/// need neither: `ZQGetFPType` and similar functions return types as `const ZQFPTypeBase*`.

#include <cstdint>
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

/// The unique type of a kind, version and id, created on first use and deleted at process exit.
/// Thread safe; the pointers need no lock. Doesn't check version or id. Null for an unknown kind.
ZQ_EXPORT const ZQFPTypeBase* ZQInternFPType(unsigned int fptype, unsigned short version,
                                             std::uint64_t id);

/// `ZQInternFPType` for one type class, by version and id.
template <class T>
class ZQFPTypeFactory {
 public:
  const T* GetFPType(unsigned short version, std::uint64_t id) const {
    return static_cast<const T*>(ZQInternFPType(T::number, version, id));
  }
};
/// The same by version alone.
template <class T>
class ZQFPTypeFactoryNoParams {
 public:
  const T* GetFPType(unsigned short version) const {
    return static_cast<const T*>(ZQInternFPType(T::number, version, 0));
  }
};

inline constexpr ZQFPTypeFactoryNoParams<ZQFPMACCS166Type> maccs166TypeFactory{};
inline constexpr ZQFPTypeFactoryNoParams<ZQFPLingoType> lingoTypeFactory{};
inline constexpr ZQFPTypeFactory<ZQFPPathType> pathTypeFactory{};
inline constexpr ZQFPTypeFactory<ZQFPCircularType> circularTypeFactory{};
inline constexpr ZQFPTypeFactory<ZQFPTreeType> treeTypeFactory{};
inline constexpr ZQFPTypeFactory<ZQFPUnhashedPathType> uhpathTypeFactory{};
inline constexpr ZQFPTypeFactory<ZQFPUnhashedCircularType> uhcircularTypeFactory{};
inline constexpr ZQFPTypeFactory<ZQFPUnhashedTreeType> uhtreeTypeFactory{};

}  // namespace ZQKorvex
