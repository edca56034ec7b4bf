#pragma once

/// The one place where exceptions become messages. Nearly all are lack of memory.

#include <exception>
#include <new>

#include "korvex/checked_local.h"

namespace ZQKorvex {

/// Returns what `make` returns. After an exception of type `Failure` it returns what
/// `report(exception)` returns instead.
template <class Failure = std::exception, class Make, class Report>
auto ZQCatch(Make make, Report report) -> decltype(make()) {
  try {
    return make();
  } catch (const Failure& failure) {
    return report(failure);
  }
}

/// The same with the warning "%s : %s!" of `caller` and the exception's text; it then returns
/// `makeEmpty()`.
template <class Make, class MakeEmpty>
auto ZQWarnOnFailure(const char* caller, Make make, MakeEmpty makeEmpty) -> decltype(make()) {
  return ZQCatch(make, [&](const std::exception& failure) {
    ZQThrow.Warning("%s : %s!", caller, failure.what());
    return makeEmpty();
  });
}

/// The same; it then returns an empty result.
template <class Make>
auto ZQWarnOnFailure(const char* caller, Make make) -> decltype(make()) {
  return ZQWarnOnFailure(caller, make, [] { return decltype(make())(); });
}

/// Returns what `make` returns, or false after an error report where memory ends: what a hostile
/// molecule needs is more than there is. `name` is the operation, as messages name it.
template <class Make>
bool ZQGuardMemory(const char* name, Make make) {
  return ZQCatch<std::bad_alloc>(make, [name](const std::bad_alloc&) {
    ZQThrow.Error("%s : out of memory", name);
    return false;
  });
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
