#pragma once

/// Types of fields: how a value becomes bytes and JSON. A type is a class derived from
/// `ZQFieldTypeHandler`; for values of type T that is `ZQFieldType<T>`, for vectors of them
/// `ZQVectorFieldType<T>`, which a library specialises for its T. Empty bytes are no value.
///
/// Handlers have no state: any number of threads may use one.

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "contract/bostrel/export.h"

namespace Lodrine {

class ZQ_EXPORT ZQFieldTypeHandler {
 public:
  ZQFieldTypeHandler() = default;
  ZQFieldTypeHandler(const ZQFieldTypeHandler&) = delete;
  ZQFieldTypeHandler& operator=(const ZQFieldTypeHandler&) = delete;
  virtual ~ZQFieldTypeHandler() = default;

  /// The JSON value of a value's bytes.
  virtual std::string BytesToJSON(std::string_view bytes) const = 0;
  /// The bytes of a value given as JSON: if this is a JSON string, its text, without quotes and
  /// escapes; else the text of an object with the value under the key "value". Empty, after a
  /// report, for JSON that is no value of the type.
  virtual std::string JSONToBytes(std::string_view json) const = 0;
  /// The bytes of an object of the type; empty for null.
  virtual std::string PtrToBytes(const void* pointer) const = 0;
  /// The type's name in records, unique in a process.
  virtual std::string GetName() const = 0;
  /// Whether a record stores the object itself until its bytes are needed.
  virtual bool IsCacheable() const { return false; }
  /// Whether the bytes are those of the object in memory.
  virtual bool IsPOD() const { return false; }
};

// Specialisations also have static members `ToBytes(value)` and `FromBytes(value, bytes)`, which
// returns whether the bytes were a value.
template <class T>
class ZQFieldType;
template <class T>
class ZQVectorFieldType;

/// The field type of C++ type T.
template <class T>
struct ZQFieldTypeOf {
  using Type = ZQFieldType<T>;
};
template <class T>
struct ZQFieldTypeOf<std::vector<T>> {
  using Type = ZQVectorFieldType<T>;
};

/// Adds a type to those that are found by name. Returns false, and changes nothing, for null or a
/// name that is registered already. Safe from any thread.
ZQ_EXPORT bool ZQRegisterFieldType(std::unique_ptr<ZQFieldTypeHandler> type);
/// The registered type of a name, which exists until the process exits; null if there is none. Safe
/// from any thread.
ZQ_EXPORT const ZQFieldTypeHandler* ZQFindFieldType(const std::string& name);

/// A field of records: its name and its type, which must outlive it.
class ZQFieldBase {
 public:
  ZQFieldBase(std::string name, const ZQFieldTypeHandler& type)
      : name_(std::move(name)), type_(&type) {}
  const std::string& GetName() const { return name_; }
  const ZQFieldTypeHandler& GetType() const { return *type_; }

 private:
  std::string name_;
  const ZQFieldTypeHandler* type_;
};

/// A field whose values are of C++ type T.
template <class T>
class ZQField : public ZQFieldBase {
 public:
  explicit ZQField(std::string name) : ZQFieldBase(std::move(name), TypeOfT()) {}

 private:
  static const ZQFieldTypeHandler& TypeOfT() {
    static const typename ZQFieldTypeOf<T>::Type type;
    return type;
  }
};

}  // namespace Lodrine
