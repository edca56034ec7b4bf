#pragma once

/// Fingerprints as fields of records that flow between programs (contract/lodrine/record.h), alone
/// and as vectors.
///
/// A fingerprint's bytes (contract/lodrine/buffer.h): false; the kind, the version and, as a blob,
/// the type record (fptype_records.h); the number of bits; the bits as a blob of whole words of 8
/// bytes, bit i in byte i/8. Without a type, kind, version and type record are left out. A vector's
/// bytes: the number of elements, and each element's bytes as a blob; no blob for a missing one.
///
/// Bytes hold types of path, circular and tree of their current version, and any of Lingo and
/// MACCS-166. Any other type, such as an unhashed one, is the error "ToBytes : fingerprints of type
/// %s can't be written" and gives empty bytes. Types of an old version are read.
///
/// All functions may run on any thread.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/lodrine/field.h"
#include "contract/lodrine/record.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Reads a fingerprint's bytes. Returns false, and the fingerprint has no type and no bits on, for
/// empty bytes, and after one of these errors: "FPFromBytes : unknown fingerprint type %s", for a
/// kind that has no type record; "FPFromBytes : invalid fingerprint type, %s", for a parameter out
/// of its legal range; "Max size for an ZQBitVector is INT_MAX", for a number of bits above that or
/// negative; "FPFromBytes : out of memory"; "FPFromBytes : the bytes are no fingerprint", if they
/// end too early or too late or don't agree with the number of bits. Bits beyond the number of bits
/// are dropped.
ZQ_EXPORT bool FPFromBytes(ZQFingerPrint& fp, std::string_view bytes);

/// The type string, a line feed, and the bits in hexadecimal digits (`ZQBitVector::ToHexString`). A
/// line feed alone for a fingerprint without a type.
ZQ_EXPORT std::string FPToJSONStr(const ZQFingerPrint& fp);
/// The reverse, for any kind. A fingerprint whose type has a number of bits has that size, any
/// other a multiple of 8. A text without a line feed gives no type and no bits on, as does, after
/// the warning "FPFromJSONStr : the bits aren't pairs of hexadecimal digits", one with other
/// digits. An empty type string gives no type, as does, after the warnings of `ZQGetFPType` and
/// "FPFromJSONStr : invalid fingerprint type `%s`%s", one that isn't valid or has an old version.
ZQ_EXPORT ZQFingerPrint FPFromJSONStr(const std::string& text);

}  // namespace ZQKorvex

namespace Lodrine {

template <>
class ZQ_EXPORT ZQFieldType<ZQKorvex::ZQFingerPrint> final : public ZQFieldTypeHandler {
 public:
  using Value = ZQKorvex::ZQFingerPrint;

  /// A JSON string of `FPToJSONStr`.
  std::string BytesToJSON(std::string_view bytes) const override;
  /// Takes a text of `FPToJSONStr`.
  std::string JSONToBytes(std::string_view json) const override;
  std::string PtrToBytes(const void* pointer) const override;
  std::string GetName() const override { return "Chem.FingerPrint"; }
  bool IsCacheable() const override { return true; }

  static std::string ToBytes(const Value& value);
  /// Empty for a missing value.
  static std::string ToBytes(const std::optional<Value>& value);
  /// `ZQKorvex::FPFromBytes`. A value of empty bytes is missing.
  static bool FromBytes(Value& value, std::string_view bytes);
  static bool FromBytes(std::optional<Value>& value, std::string_view bytes);
  /// For people; the same for all fingerprints.
  static std::string Format(const Value& value);
};

/// Vectors of fingerprints, and in the optional form vectors in which some may be missing.
template <>
class ZQ_EXPORT ZQVectorFieldType<ZQKorvex::ZQFingerPrint> final : public ZQFieldTypeHandler {
 public:
  using Values = std::vector<ZQKorvex::ZQFingerPrint>;
  using OptionalValues = std::vector<std::optional<ZQKorvex::ZQFingerPrint>>;

  /// A JSON array of strings of `FPToJSONStr`, null for a missing element.
  std::string BytesToJSON(std::string_view bytes) const override;
  std::string JSONToBytes(std::string_view json) const override;
  /// The pointer is to `Values`.
  std::string PtrToBytes(const void* pointer) const override;
  std::string GetName() const override { return "Chem.FingerPrintVec"; }

  static std::string ToBytes(const Values& values);
  static std::string ToBytes(const OptionalValues& values);
  /// Adds the elements; one that is missing has no type in the plain form, nor has one whose bytes
  /// are damaged, after its report. Returns false for empty bytes, and after the error "FromBytes :
  /// the bytes are no vector of fingerprints" if they end too early or too late; the elements that
  /// are there have then been added. A number of elements below 1 is an empty vector.
  static bool FromBytes(Values& values, std::string_view bytes);
  static bool FromBytes(OptionalValues& values, std::string_view bytes);
  /// For people: "[2 fingerprints]".
  static std::string Format(const Values& values);
  static std::string Format(const OptionalValues& values);
  static std::unique_ptr<Values> GetCopyForCache(const Values& values);
  static std::unique_ptr<OptionalValues> GetCopyForCache(const OptionalValues& values);
};

}  // namespace Lodrine

namespace ZQKorvex {

/// New handlers, owned by the caller, for `ZQRegisterFieldType`.
ZQ_EXPORT ZQFieldTypeHandler* ZQInitFPFieldHandler();
ZQ_EXPORT ZQFieldTypeHandler* ZQInitFPVecFieldHandler();

/// Stores a copy of a fingerprint in a record, in place of an earlier value, also of another type.
/// It is encoded, with the error above where it can't be, when the record's bytes are read.
ZQ_EXPORT void ZQSetFingerPrintValue(ZQRecord& record, ZQField<ZQFingerPrint>& field,
                                     const ZQFingerPrint& fp);

}  // namespace ZQKorvex
