#include "contract/bostrel/nspace.h"

#include <algorithm>
#include <utility>

namespace Bostrel {

namespace {

const ZQNamespacePrim* Find(const std::vector<ZQNamespacePrim>& prims, std::string_view name) {
  const auto found = std::find_if(prims.begin(), prims.end(),
                                  [name](const ZQNamespacePrim& p) { return p.name == name; });
  return found == prims.end() ? nullptr : &*found;
}

// Removes the first name of a combination from `rest` and returns it; empty if there is none.
std::string_view NextName(std::string_view& rest) {
  const std::size_t bar = rest.find('|');
  const std::string_view name = rest.substr(0, bar);
  rest = bar == std::string_view::npos ? std::string_view() : rest.substr(bar + 1);
  return name;
}

}  // namespace

ZQNamespaceInterface::ZQNamespaceInterface(std::string name, ZQNamespaceMode mode,
                                           std::vector<ZQNamespacePrim> prims)
    : name_(std::move(name)), mode_(mode), prims_(std::move(prims)) {}

bool ZQNamespaceInterface::IsValid(std::string_view name) const {
  if (mode_ == ZQNamespaceMode::Single) return Find(prims_, name) != nullptr;
  if (name.empty() || name.back() == '|') return false;
  while (!name.empty()) {
    if (!Find(prims_, NextName(name))) return false;
  }
  return true;
}

unsigned int ZQNamespaceInterface::GetValue(std::string_view name,
                                            unsigned int defaultValue) const {
  if (!IsValid(name)) return defaultValue;
  if (mode_ == ZQNamespaceMode::Single) return Find(prims_, name)->value;
  unsigned int value = 0;
  while (!name.empty()) value |= Find(prims_, NextName(name))->value;
  return value;
}

std::string ZQNamespaceInterface::GetName(unsigned int value,
                                          const std::string& defaultValue) const {
  std::string text;
  unsigned int named = 0;
  for (const ZQNamespacePrim& prim : prims_) {
    if (mode_ == ZQNamespaceMode::Single) {
      if (prim.value == value) return prim.name;
    } else if ((prim.value & value) == prim.value) {
      named |= prim.value;
      if (!text.empty()) text += '|';
      text += prim.name;
    }
  }
  return named == value && !text.empty() ? text : defaultValue;
}

}  // namespace Bostrel
