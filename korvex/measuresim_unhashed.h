#pragma once

/// Tanimoto of unhashed fingerprints whose tokens were interned once, for scans: equal tokens are
/// one string object, and a fingerprint is the list of pointers to its tokens, sorted by pointer.
/// Strings aren't read. Immutable; one object may be called from many threads.

#include <string>
#include <vector>

#include "korvex/measuresim.h"

namespace ZQKorvex {

class ZQ_EXPORT ZQUnhashedSimFunc : public ZQSimFuncBase {
 public:
  /// Always returns 0.0: these objects support only the prepared form.
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  virtual float operator()(const std::vector<const std::string*>& a,
                           const std::vector<const std::string*>& b) const = 0;
};

/// Number of common tokens, repeats matched one by one, divided by that of all. Two empty lists
/// give a NaN, one empty list 0.0.
class ZQ_EXPORT ZQTanimotoUnhashedSim : public ZQUnhashedSimFunc {
 public:
  using ZQUnhashedSimFunc::operator();
  float operator()(const std::vector<const std::string*>& a,
                   const std::vector<const std::string*>& b) const override;
  ZQTanimotoUnhashedSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

}  // namespace ZQKorvex
