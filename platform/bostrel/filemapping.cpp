#include "contract/bostrel/filemapping.h"

#include <sys/mman.h>

#include <utility>

namespace Bostrel {

bool ZQFileMapping::Map(int descriptor, std::uint64_t length, bool writable) {
  const int protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
  // Some file systems refuse shared mappings, which only writing needs.
  const int sharing = writable ? MAP_SHARED : MAP_PRIVATE;
  void* base = mmap(nullptr, length, protection, sharing, descriptor, 0);
  if (base == MAP_FAILED) return false;
  base_ = base;
  length_ = length;
  return true;
}

bool ZQFileMapping::Unmap() {
  return !base_ || munmap(std::exchange(base_, nullptr), std::exchange(length_, 0)) == 0;
}

}  // namespace Bostrel
