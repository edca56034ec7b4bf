#include "contract/lodrine/record.h"

#include "contract/bostrel/throw.h"
#include "contract/lodrine/json.h"

namespace Lodrine {

using Bostrel::ZQThrow;

unsigned int ZQRecord::CheckField(const ZQFieldBase& field) const {
  if (!entries_.contains(field.GetName())) return ZQFieldStatus::Missing;
  return Find(field) ? ZQFieldStatus::Present : ZQFieldStatus::OtherType;
}

bool ZQRecord::DeleteField(const ZQFieldBase& field) {
  return entries_.erase(field.GetName()) != 0;
}

std::vector<ZQFieldBase> ZQRecord::GetFields() const {
  std::vector<ZQFieldBase> fields;
  for (const auto& [name, entry] : entries_) fields.emplace_back(name, *entry.type);
  return fields;
}

bool ZQRecord::SetBytes(const ZQFieldBase& field, std::string bytes) {
  return Store(field, {&field.GetType(), std::move(bytes), nullptr});
}

std::string ZQRecord::GetBytes(const ZQFieldBase& field) const {
  const Entry* entry = Find(field);
  return entry ? entry->GetBytes() : std::string();
}

void ZQRecord::MarkCacheDirty(const ZQFieldBase& field, bool dirty) {
  if (const Entry* entry = Find(field); entry && entry->object) {
    entries_.at(field.GetName()).isDirty = dirty;
  }
}

std::string ZQRecord::ToJSON() const {
  std::string json;
  for (const auto& [name, entry] : entries_) {
    const std::string key = ZQQuoteJSON(name);
    if (key.empty()) {
      ZQThrow.Error("ZQRecord : a field's name isn't UTF-8");
      return {};
    }
    const std::string bytes = entry.GetBytes();
    const std::string value = bytes.empty() ? std::string() : entry.type->BytesToJSON(bytes);
    json.append(json.empty() ? "{" : ",").append(key).append(":");
    json.append(value.empty() ? "null" : value);
  }
  return json.empty() ? "{}" : json + "}";
}

const ZQRecord::Entry* ZQRecord::Find(const ZQFieldBase& field) const {
  const auto found = entries_.find(field.GetName());
  if (found == entries_.end()) return nullptr;
  const bool isSame = found->second.type->GetName() == field.GetType().GetName();
  return isSame ? &found->second : nullptr;
}

bool ZQRecord::Store(const ZQFieldBase& field, Entry entry) {
  if (CheckField(field) == ZQFieldStatus::OtherType) {
    const std::string stored = entries_.at(field.GetName()).type->GetName();
    ZQThrow.Error("ZQRecord : field %s is of type %s, not %s", field.GetName().c_str(),
                  stored.c_str(), field.GetType().GetName().c_str());
    return false;
  }
  entries_.insert_or_assign(field.GetName(), std::move(entry));
  return true;
}

bool ZQRecord::AddObject(const ZQFieldBase& field, std::shared_ptr<void> object) {
  if (!object) return false;
  if (!field.GetType().IsCacheable()) {
    return SetBytes(field, field.GetType().PtrToBytes(object.get()));
  }
  return Store(field, {&field.GetType(), {}, std::move(object), true});
}

}  // namespace Lodrine
