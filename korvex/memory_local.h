#pragma once

/// The only place in the library proper that turns exceptions into messages. Nearly all are lack of
/// memory.

#include <exception>
#include <new>

#include "korvex/checked_local.h"

namespace ZQKorvex {

/// Returns the result of `make` or, after an exception of type `Failure`, of `report(exception)`.
template <class Failure = std::exception, class Make, class Report>
auto ZQCatch(Make make, Report report) -> decltype(make()) {
  try {
    return make();
  } catch (const Failure& failure) {
    return report(failure);
  }
}

/// The same; a failure warns "%s : %s!" with `caller` and the exception's text, and returns
/// `makeEmpty()`.
template <class Make, class MakeEmpty>
auto ZQWarnOnFailure(const char* caller, Make make, MakeEmpty makeEmpty) -> decltype(make()) {
  return ZQCatch(make, [&](const std::exception& failure) {
    ZQThrow.Warning("%s : %s!", caller, failure.what());
    return makeEmpty();
  });
}

/// The same; a failure returns an empty result.
template <class Make>
auto ZQWarnOnFailure(const char* caller, Make make) -> decltype(make()) {
  return ZQWarnOnFailure(caller, make, [] { return decltype(make())(); });
}

/// Returns the result of `make`, or false after an error report if memory runs out, as for a
/// hostile molecule. `name` is the operation's name in messages.
template <class Make>
bool ZQGuardMemory(const char* name, Make make) {
  return ZQCatch<std::bad_alloc>(make, [name](const std::bad_alloc&) {
    ZQThrow.Error("%s : out of memory", name);
    return false;
  });
}

/// Calls `generate`, which adds to the container; returns its size. If memory runs out, the
/// container is empty.
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
