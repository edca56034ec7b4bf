#pragma once

/// The fingerprint value and its types. A fingerprint is a bit vector with a type; a type is an
/// immutable, interned description: kind, version, packed parameters. Two fingerprints are
/// comparable exactly when they have the same type pointer. Type objects exist until process exit,
/// are shared by bare pointer and may be read from any thread.

#include <cstdint>
#include <string>

#include "contract/bostrel/bitvector.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// Kinds of fingerprint. The numbers are stored in files and never change.
namespace ZQFPType {
inline constexpr unsigned int MACCS166 = 101;
inline constexpr unsigned int Path = 102;
inline constexpr unsigned int Lingo = 103;
inline constexpr unsigned int Circular = 104;
inline constexpr unsigned int Tree = 105;
inline constexpr unsigned int UnhashedPath = 9000;
inline constexpr unsigned int UnhashedCircular = 9001;
inline constexpr unsigned int UnhashedTree = 9002;
}  // namespace ZQFPType

struct ZQFPKind;

class ZQ_EXPORT ZQFPTypeBase {
 public:
  virtual ~ZQFPTypeBase() = default;
  ZQFPTypeBase(const ZQFPTypeBase&) = delete;
  ZQFPTypeBase& operator=(const ZQFPTypeBase&) = delete;

  /// A constant of `ZQFPType`.
  virtual unsigned int GetFPType() const = 0;
  /// The text form, such as
  /// "Path,ver=2.0.0,size=4096,bonds=0-5,atype=AtmNum|Arom,btype=Order".
  virtual std::string GetFPTypeString() const = 0;

  /// Packed version (fpversion.h).
  unsigned short GetVersion() const { return version_; }
  /// Packed parameters; 0 for MACCS-166 and Lingo.
  std::uint64_t GetID() const { return id_; }
  /// The kind's table row (fpkinds.h) if this is the interned object of its kind, version and
  /// parameters; else null.
  const ZQFPKind* GetInternedKind() const { return kind_; }

 protected:
  ZQFPTypeBase(unsigned short version, std::uint64_t id) : version_(version), id_(id) {}

 private:
  template <class T, class... Key>
  friend class ZQFPTypeInterner;

  unsigned short version_;
  std::uint64_t id_;
  const ZQFPKind* kind_ = nullptr;
};

/// A fingerprint: its bits and its type. Without a type it is uninitialised: it converts to false,
/// and every comparison rejects it.
class ZQ_EXPORT ZQFingerPrint : public ZQBitVector {
 public:
  ZQFingerPrint() = default;

  explicit operator bool() const { return type_ != nullptr; }
  const ZQFPTypeBase* GetFPTypeBase() const { return type_; }
  void SetFPTypeBase(const ZQFPTypeBase* type) { type_ = type; }

  /// Compares type object, size and bits. Returns false, after the warning
  /// "ZQFingerPrint::operator== : uninitialized fingerprint type!", if either has no type.
  bool operator==(const ZQFingerPrint& other) const;
  bool operator!=(const ZQFingerPrint& other) const { return !(*this == other); }

 private:
  const ZQFPTypeBase* type_ = nullptr;
};

/// Whether the fingerprint, which must have a type, is of this kind.
ZQ_EXPORT bool ZQIsFPType(const ZQFingerPrint& fp, unsigned int fptype);
/// Whether both have the same type object. Warns and returns false if either has no type.
ZQ_EXPORT bool ZQIsSameFPType(const ZQFingerPrint& a, const ZQFingerPrint& b);

/// Whether fingerprints of this type can be made. A legal type, or one read from a record, may have
/// values that no generator supports: an old version, a circular radius above 10, both typings None
/// in a hashed type, stray bits. If false, `*fault` receives the reason unless `fault` is null.
/// False for a null type. Never warns.
ZQ_EXPORT bool ZQCanMakeFP(const ZQFPTypeBase* type, std::string* fault = nullptr);

/// Makes the fingerprint of a molecule for a type. Returns false for a null type or an invalid
/// molecule; `fp` then has no type.
ZQ_EXPORT bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);
/// The same with the default type of a kind.
ZQ_EXPORT bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int fptype,
                        bool ignoreChargeAndHyb = false);

/// The default type of a kind. `ignoreChargeAndHyb` removes formal charge and hybridization from
/// the atom typing of path and tree, and formal charge from that of circular. Returns null for an
/// unknown kind, after the warning "ZQGetFPType() unknown fingerprint type".
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(unsigned int fptype, bool ignoreChargeAndHyb = false);

// Types by parameters, with the current version or a given one, which is the current version or 0
// (types of older records); the unhashed kinds have the current version only. Legal: numbits 16 to
// 65535, atype below 8192, btype below 256, min at most max, min and max below 20 (at most 255 for
// circular). For the unhashed kinds min and max may be in any order, up to 255 for path, 9 for
// circular, 19 for tree. Each value out of range is an assertion failure, and the result is null.
ZQ_EXPORT const ZQFPTypeBase* ZQGetPathFPType(unsigned int numbits, unsigned int minbonds,
                                              unsigned int maxbonds, unsigned int atype,
                                              unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetPathFPType(unsigned short version, unsigned int numbits,
                                              unsigned int minbonds, unsigned int maxbonds,
                                              unsigned int atype, unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetCircularFPType(unsigned int numbits, unsigned int minradius,
                                                  unsigned int maxradius, unsigned int atype,
                                                  unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetCircularFPType(unsigned short version, unsigned int numbits,
                                                  unsigned int minradius, unsigned int maxradius,
                                                  unsigned int atype, unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetTreeFPType(unsigned int numbits, unsigned int minbonds,
                                              unsigned int maxbonds, unsigned int atype,
                                              unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetTreeFPType(unsigned short version, unsigned int numbits,
                                              unsigned int minbonds, unsigned int maxbonds,
                                              unsigned int atype, unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetUnhashedPathFPType(unsigned short version, unsigned int minbonds,
                                                      unsigned int maxbonds, unsigned int atype,
                                                      unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetUnhashedCircularFPType(unsigned short version,
                                                          unsigned int minradius,
                                                          unsigned int maxradius,
                                                          unsigned int atype, unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetUnhashedTreeFPType(unsigned short version, unsigned int minbonds,
                                                      unsigned int maxbonds, unsigned int atype,
                                                      unsigned int btype);
ZQ_EXPORT const ZQFPTypeBase* ZQGetLingoFPType(unsigned short version);
ZQ_EXPORT const ZQFPTypeBase* ZQGetMACCS166FPType(unsigned short version);

}  // namespace ZQKorvex
