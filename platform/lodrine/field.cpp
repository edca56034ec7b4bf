#include "contract/lodrine/field.h"

#include <map>
#include <mutex>

namespace Lodrine {

namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, std::unique_ptr<const ZQFieldTypeHandler>> types;
};

// Usable while other files are being initialised.
Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

bool ZQRegisterFieldType(std::unique_ptr<ZQFieldTypeHandler> type) {
  if (!type) return false;
  std::string name = type->GetName();
  Registry& registry = TheRegistry();
  const std::lock_guard<std::mutex> lock(registry.mutex);
  return registry.types.try_emplace(std::move(name), std::move(type)).second;
}

const ZQFieldTypeHandler* ZQFindFieldType(const std::string& name) {
  Registry& registry = TheRegistry();
  const std::lock_guard<std::mutex> lock(registry.mutex);
  const auto found = registry.types.find(name);
  return found == registry.types.end() ? nullptr : found->second.get();
}

}  // namespace Lodrine
