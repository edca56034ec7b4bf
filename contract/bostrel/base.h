#pragma once

/// Generic data: values of any type that an application hangs onto a molecule, atom or bond
/// under an unsigned tag. An object without data costs one null pointer. Not synchronised.

#include <any>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "contract/bostrel/export.h"
#include "contract/bostrel/iter.h"

namespace Bostrel {

/// The number of a tag name, the same for the life of the process; new names get numbers from
/// 65536 up, so that fixed numbers below stay free. Safe from any thread.
ZQ_EXPORT unsigned int ZQGetTag(const std::string& name);
inline unsigned int ZQGetTag(unsigned int number) { return number; }

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

  /// Adds a datum; one tag may carry several.
  void AddData(unsigned int tag, std::any value);
  /// Replaces everything under the tag by this one value.
  void SetData(unsigned int tag, std::any value);
  /// Whether anything was there to delete.
  bool DeleteData(unsigned int tag);
  /// The first value under the tag, or null.
  const std::any* FindData(unsigned int tag) const;
  /// All data, in the order in which they were added.
  ZQIter<const ZQBaseData> GetDataIter() const;
  /// Replaces the data by a copy of the other object's.
  void CopyData(const ZQBase& other) {
    data_ = other.data_ ? std::make_unique<std::vector<ZQBaseData>>(*other.data_) : nullptr;
  }
  void ClearData() { data_.reset(); }

  /// The value under the tag if it has type T. A value of another type counts as absent and is
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
