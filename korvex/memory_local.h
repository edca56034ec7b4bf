#pragma once

#include <new>

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

/// Lets `generate` add to the container; returns its size. It is left empty where memory ends.
template <class Ids, class Generate>
unsigned int ZQCollectIds(const char* name, Ids& ids, Generate generate) {
  const bool done = ZQGuardMemory(name, [&] {
    generate();
    return true;
  });
  if (!done) Ids().swap(ids);
  return ZQCheckedUnsigned(ids.size());
}

}  // namespace ZQKorvex
