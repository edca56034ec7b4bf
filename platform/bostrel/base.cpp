#include "contract/bostrel/base.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "contract/bostrel/throw.h"

namespace Bostrel {

unsigned int ZQGetTag(const std::string& name) {
  constexpr unsigned int firstNamedTag = 65536;
  static std::mutex mutex;
  static std::map<std::string, unsigned int> tags;
  const std::lock_guard<std::mutex> lock(mutex);
  return tags.try_emplace(name, firstNamedTag + static_cast<unsigned int>(tags.size()))
      .first->second;
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
