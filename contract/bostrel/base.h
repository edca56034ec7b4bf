#pragma once

/// Generic data: values of any type that an application attaches to a molecule, atom or bond under
/// an unsigned tag. An object without data costs one null pointer. Not synchronised.

#include <any>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "contract/bostrel/export.h"
#include "contract/bostrel/iter.h"

namespace Bostrel {

/// Returns the number of a tag name, constant within a process. New names get numbers from 65536
/// up; smaller ones are reserved for fixed tags. Safe from any thread.
ZQ_EXPORT unsigned int ZQGetTag(const std::string& name);
inline unsigned int ZQGetTag(unsigned int number) { return number; }

/// The name of a number that the other form returned; empty for any other.
ZQ_EXPORT std::string ZQGetTagName(unsigned int tag);

/// The smallest number of a tag name.
inline constexpr unsigned int ZQFirstNamedTag = 65536;

/// One datum: its tag and its value.
struct ZQBaseData {
  unsigned int tag;
  std::any value;
};

class ZQ_EXPORT ZQBase {
 public:
  ZQBase() = default;
  ZQBase(const ZQBase& other) { CopyData(other); }
  ZQBase& operator=(const ZQBase& other) {
    if (this != &other) CopyData(other);
    return *this;
  }
  virtual ~ZQBase() = default;

  /// Adds a datum; one tag may have several.
  void AddData(unsigned int tag, std::any value);
  /// Replaces all data of the tag by this value.
  void SetData(unsigned int tag, std::any value);
  /// Returns whether the tag had data.
  bool DeleteData(unsigned int tag);
  /// Returns the first value of the tag, or null.
  const std::any* FindData(unsigned int tag) const;
  /// Returns the first value of the tag that has type T, or null. Doesn't allocate.
  template <class T>
  const T* FindDataOf(unsigned int tag) const {
    if (!data_) return nullptr;
    for (const ZQBaseData& datum : *data_) {
      if (datum.tag != tag) continue;
      if (const T* value = std::any_cast<T>(&datum.value)) return value;
    }
    return nullptr;
  }
  /// All data, in the order of addition.
  ZQIter<const ZQBaseData> GetDataIter() const;
  /// Replaces the data by a copy of the other object's.
  void CopyData(const ZQBase& other) {
    data_ = other.data_ ? std::make_unique<std::vector<ZQBaseData>>(*other.data_) : nullptr;
  }
  void ClearData() { data_.reset(); }

  /// Returns the value of the tag if it has type T. A value of another type counts as absent and is
  /// reported as a warning.
  template <class T>
  bool GetData(unsigned int tag, T& value) const {
    const std::any* found = FindData(tag);
    if (!found) return false;
    const T* typed = std::any_cast<T>(found);
    if (!typed) {
      WarnOfType(tag);
      return false;
    }
    value = *typed;
    return true;
  }

 private:
  static void WarnOfType(unsigned int tag);

  std::unique_ptr<std::vector<ZQBaseData>> data_;
};

}  // namespace Bostrel
