#pragma once

/// A record: named fields, each a value of one type. Values are stored as bytes; those of cacheable
/// types also as objects, which are encoded only when their bytes are read. A record may be moved
/// and not copied. It isn't synchronised; const members may run at once.

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "contract/lodrine/field.h"

namespace Lodrine {

/// Results of `ZQRecord::CheckField`. Types are the same if their names are.
namespace ZQFieldStatus {
inline constexpr unsigned int Present = 0;
inline constexpr unsigned int Missing = 1;
inline constexpr unsigned int OtherType = 4;  ///< a field of this name has another type
}  // namespace ZQFieldStatus

/// Functions with a field do nothing for a record's field of the same name and another type: they
/// return false or an empty value. Those that store report the error "ZQRecord : field %s is of
/// type %s, not %s" first.
class ZQ_EXPORT ZQRecord {
 public:
  ZQRecord() = default;
  ZQRecord(ZQRecord&&) = default;
  ZQRecord& operator=(ZQRecord&&) = default;

  unsigned int CheckField(const ZQFieldBase& field) const;
  /// Deletes the field of this name, whatever its type. Returns whether there was one.
  bool DeleteField(const ZQFieldBase& field);
  /// All fields, in the order of their names.
  std::vector<ZQFieldBase> GetFields() const;

  /// Stores a value as bytes, in place of an earlier one.
  bool SetBytes(const ZQFieldBase& field, std::string bytes);
  /// The bytes of a value; empty if it is missing. Encodes an object that is dirty, at each call.
  std::string GetBytes(const ZQFieldBase& field) const;
  /// A copy of a value. Returns false if it is missing or its bytes aren't a value.
  template <class T>
  bool GetValue(const ZQField<T>& field, T& value) const {
    const Entry* entry = Find(field);
    if (!entry) return false;
    if (entry->object) {
      value = *static_cast<const T*>(entry->object.get());
      return true;
    }
    value = T();
    return ZQFieldTypeOf<T>::Type::FromBytes(value, entry->bytes);
  }

  /// The object in the cache; null if there is none. It is valid until the field's value is
  /// replaced or deleted. Call `MarkCacheDirty` after changing it.
  template <class T>
  T* CheckCache(const ZQField<T>& field) {
    const Entry* entry = Find(field);
    return entry ? static_cast<T*>(entry->object.get()) : nullptr;
  }
  /// Whether the object in the cache differs from the bytes of the record. Without an object,
  /// nothing changes.
  void MarkCacheDirty(const ZQFieldBase& field, bool dirty);
  /// Stores an object, in place of an earlier value; it is dirty. One of a type that isn't
  /// cacheable is encoded at once and deleted. Returns false for null.
  template <class T>
  bool AddToCache(const ZQField<T>& field, std::unique_ptr<T> object) {
    return AddObject(field, std::move(object));
  }

  /// A JSON object of all fields, null for empty bytes. Empty, after the error "ZQRecord : a
  /// field's name isn't UTF-8", if one isn't.
  std::string ToJSON() const;

 private:
  struct ZQ_LOCAL Entry {
    const ZQFieldTypeHandler* type;
    std::string bytes;
    std::shared_ptr<void> object;
    bool isDirty = false;

    std::string GetBytes() const { return isDirty ? type->PtrToBytes(object.get()) : bytes; }
  };

  const Entry* Find(const ZQFieldBase& field) const;
  bool Store(const ZQFieldBase& field, Entry entry);
  bool AddObject(const ZQFieldBase& field, std::shared_ptr<void> object);

  std::map<std::string, Entry> entries_;
};

}  // namespace Lodrine
