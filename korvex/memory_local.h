#pragma once

#include <new>
#include <vector>

#include "korvex/checked_local.h"

namespace ZQKorvex {

/// The answer of `make`, or false after an error report where memory ends: what a hostile molecule
/// asks for is more than there is. `name` is the operation, as messages name it.
template <class Make>
bool ZQGuardMemory(const char* name, Make make) {
  try {
    return make();
  } catch (const std::bad_alloc&) {
    ZQThrow.Error("%s : out of memory", name);
    return false;
  }
}

/// Lets `generate` fill the vector; returns the number of identifiers, none where memory ends.
template <class T, class Generate>
unsigned int ZQCollectIds(const char* name, std::vector<T>& ids, Generate generate) {
  ids.clear();
  const bool done = ZQGuardMemory(name, [&] {
    generate();
    return true;
  });
  if (!done) std::vector<T>().swap(ids);
  return ZQCheckedUnsigned(ids.size());
}

}  // namespace ZQKorvex
