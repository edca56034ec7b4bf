#include "apps/stored.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "apps/molecules.h"
#include "contract/bostrel/strings.h"
#include "korvex/fpkinds.h"
#include "korvex/fptypes.h"

namespace KorvexProgram {

namespace {

constexpr const char* titleTag = "ZQTitle";

// Why a fingerprint can't be compared; empty if it can. A record may hold any parameters, also of
// an old version, and any number of bits.
std::string FindFault(const ZQFingerPrint& fp) {
  const ZQFPTypeBase* type = fp.GetFPTypeBase();
  const ZQFPKind& kind = *ZQFindFPKind(type);
  const ZQFPTypeValues values = kind.HasParams() ? ZQDecodeFPTypeID(type->GetID()) : kind.defaults;
  std::string fault = ZQFindFPTypeFault(kind, values);
  if (fault.empty() && values.numbits != 0 && values.numbits != fp.GetSize()) {
    fault =
        std::to_string(fp.GetSize()) + " bits, but its type has " + std::to_string(values.numbits);
  }
  return fault;
}

}  // namespace

bool IsStoredName(const std::string& filename) {
  std::string extension = ZQFileExtension(filename);
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension == "zqb";
}

bool StoredReader::Open(const std::string& filename) {
  filename_ = filename;
  std::string cause;
  if (file_.Open(filename, &cause)) return true;
  ZQThrow.Error("cannot read %s: %s", filename.c_str(), cause.c_str());
  return false;
}

bool StoredReader::Read(StoredFingerPrint& stored) {
  stored.title.clear();
  while (file_.peek() != zqifstream::traits_type::eof()) {
    const auto begin = static_cast<std::size_t>(file_.tellg());
    ZQUnknownZQBData other;
    stored.fp = ZQFingerPrint();
    const unsigned int status = ZQBinaryRead(file_, stored.fp, handler_, &other);
    if (status == ZQBStatus::NoHandler) {
      if (other.tag == titleTag) stored.title = std::move(other.bytes);
      continue;
    }
    count_ += status != ZQBStatus::NoTag;
    stored.number = count_;
    if (status == ZQBStatus::Ok) {
      const std::string fault = stored.fp ? FindFault(stored.fp) : "unknown type";
      if (fault.empty()) return true;
      ZQThrow.Warning("fingerprint %lu of %s is left out: %s", count_, filename_.c_str(),
                      fault.c_str());
    } else {
      ZQThrow.Warning("%s: the record at byte %zu is damaged", filename_.c_str(), begin);
    }
    stored.title.clear();
    if (!file_ || status == ZQBStatus::NoTag) return false;
  }
  return false;
}

bool ReadStored(std::vector<StoredFingerPrint>& all, const std::string& filename) {
  all.clear();
  StoredReader reader;
  if (!reader.Open(filename)) return false;
  for (StoredFingerPrint stored; reader.Read(stored);) {
    const bool isSame = all.empty() || all.front().fp.GetFPTypeBase() == stored.fp.GetFPTypeBase();
    if (isSame) {
      all.push_back(std::move(stored));
    } else {
      ZQThrow.Warning("fingerprint %lu of %s is left out: its type isn't that of the first",
                      stored.number, filename.c_str());
    }
  }
  if (all.empty()) ZQThrow.Error("%s holds no fingerprints", filename.c_str());
  return !all.empty();
}

bool CheckQueryType(const ZQFPTypeBase* queryType, const ZQFPTypeBase* type,
                    const std::string& filename) {
  if (!queryType || queryType == type) return true;
  ZQThrow.Error("the queries are of type %s, but %s is of type %s",
                queryType->GetFPTypeString().c_str(), filename.c_str(),
                type->GetFPTypeString().c_str());
  return false;
}

bool CheckMaking(const ZQFPTypeBase* type, const std::string& filename) {
  std::string fault;
  if (ZQCanMakeFP(type, &fault)) return true;
  ZQThrow.Error("%s: its type can't be made of molecules: %s", filename.c_str(), fault.c_str());
  return false;
}

int WriteStored(const std::string& filename, const ZQMolDatabase& molecules,
                const ZQFPTypeBase* type, unsigned int numThreads) {
  constexpr std::size_t perBatch = 4096;  // enough to keep threads busy between two writes
  if (ZQFindFPKind(type)->IsUnhashed()) {
    ZQThrow.Error("%s: fingerprints of kind %s can't be stored", filename.c_str(),
                  ZQFindFPKind(type)->name);
    return BadUsage;
  }
  const PartialFile partial(filename);
  std::ofstream out(partial.GetName(), std::ios::binary);
  const ZQBinaryIOHandler handler;
  std::vector<ZQFingerPrint> fps;
  std::size_t written = 0;
  for (std::size_t first = 0; first < molecules.GetMaxMolIdx() && out; first += fps.size()) {
    fps.assign(std::min<std::size_t>(perBatch, molecules.GetMaxMolIdx() - first), ZQFingerPrint());
    MakeFingerPrints(fps, molecules, first, type, numThreads);
    for (std::size_t i = 0; i < fps.size(); ++i) {
      if (!fps[i]) continue;  // has a message
      ZQBWriteRecord(out, {titleTag, molecules.GetTitle(static_cast<unsigned int>(first + i))});
      ZQBinaryWrite(out, fps[i], handler);
      ++written;
    }
  }
  out.close();
  if (!out) {
    ZQThrow.Error("cannot write %s: %s", filename.c_str(), std::strerror(errno));
    return BadInput;
  }
  if (written == 0) {
    ZQThrow.Error("%s holds no molecule that could be used", molecules.GetName().c_str());
    return BadInput;
  }
  if (!partial.Rename()) return BadInput;
  std::printf("%s: %zu fingerprints\n", filename.c_str(), written);
  return Done;
}

}  // namespace KorvexProgram
