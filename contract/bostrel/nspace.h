#pragma once

/// A namespace interface: the table of names and values used by type strings, command lines and
/// help texts. Immutable once built; safe from any thread.

#include <string>
#include <string_view>
#include <vector>

#include "contract/bostrel/export.h"

namespace Bostrel {

struct ZQNamespacePrim {
  std::string name;
  unsigned int value;
  std::string help;  ///< may be empty
};

enum class ZQNamespaceMode {
  Single,     ///< a value is one of the primitives
  Combining,  ///< values are bit sets, written as names joined by "|"
};

class ZQ_EXPORT ZQNamespaceInterface {
 public:
  ZQNamespaceInterface(std::string name, ZQNamespaceMode mode, std::vector<ZQNamespacePrim> prims);
  virtual ~ZQNamespaceInterface() = default;

  const std::string& GetNamespaceName() const { return name_; }
  ZQNamespaceMode GetMode() const { return mode_; }
  const std::vector<ZQNamespacePrim>& GetPrimitives() const { return prims_; }

  /// Whether the name, or each name of a combination, is in the table. False for an empty text.
  bool IsValid(std::string_view name) const;
  /// Returns the value of a name or of a combination, in any order; `defaultValue` if not valid.
  unsigned int GetValue(std::string_view name, unsigned int defaultValue) const;
  /// Returns the name of a value, combinations in table order; `defaultValue` if any bit has no
  /// name.
  std::string GetName(unsigned int value, const std::string& defaultValue) const;

 private:
  std::string name_;
  ZQNamespaceMode mode_;
  std::vector<ZQNamespacePrim> prims_;
};

}  // namespace Bostrel
