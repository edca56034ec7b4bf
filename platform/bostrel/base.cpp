#include "contract/bostrel/base.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "contract/bostrel/throw.h"

namespace Bostrel {

namespace {

struct Tags {
  std::mutex mutex;
  std::map<std::string, unsigned int> numbers;
  std::vector<std::string> names;
};

Tags& GetTags() {
  static Tags tags;
  return tags;
}

}  // namespace

unsigned int ZQGetTag(const std::string& name) {
  Tags& tags = GetTags();
  const std::lock_guard<std::mutex> lock(tags.mutex);
  const auto next = ZQFirstNamedTag + static_cast<unsigned int>(tags.names.size());
  const auto [entry, isNew] = tags.numbers.try_emplace(name, next);
  if (isNew) tags.names.push_back(name);
  return entry->second;
}

std::string ZQGetTagName(unsigned int tag) {
  Tags& tags = GetTags();
  const std::lock_guard<std::mutex> lock(tags.mutex);
  const unsigned int place = tag - ZQFirstNamedTag;  // wraps for a smaller number
  return place < tags.names.size() ? tags.names[place] : std::string();
}

void ZQBase::AddData(unsigned int tag, std::any value) {
  if (!data_) data_ = std::make_unique<std::vector<ZQBaseData>>();
  data_->push_back({tag, std::move(value)});
}

void ZQBase::SetData(unsigned int tag, std::any value) {
  DeleteData(tag);
  AddData(tag, std::move(value));
}

bool ZQBase::DeleteData(unsigned int tag) {
  return data_ &&
         std::erase_if(*data_, [tag](const ZQBaseData& datum) { return datum.tag == tag; }) != 0;
}

const std::any* ZQBase::FindData(unsigned int tag) const {
  if (!data_) return nullptr;
  const auto found = std::find_if(data_->begin(), data_->end(),
                                  [tag](const ZQBaseData& datum) { return datum.tag == tag; });
  return found == data_->end() ? nullptr : &found->value;
}

ZQIter<const ZQBaseData> ZQBase::GetDataIter() const {
  if (!data_) return {};
  std::vector<const ZQBaseData*> all;
  for (const ZQBaseData& datum : *data_) all.push_back(&datum);
  return {new ZQPointerIter<const ZQBaseData>(std::move(all))};
}

void ZQBase::WarnOfType(unsigned int tag) {
  ZQThrow.Warning("ZQBase::GetData() : data with tag %u is not of the requested type", tag);
}

}  // namespace Bostrel
