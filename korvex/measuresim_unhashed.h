#pragma once

/// Tanimoto over unhashed fingerprints whose tokens were interned once, for scans: equal tokens are
/// one string object, and a fingerprint is the list of pointers to its tokens, sorted by pointer.
/// No string is looked at. Immutable; one object may be called from many threads.

#include <string>
#include <vector>

#include "korvex/measuresim.h"

namespace ZQKorvex {

class ZQ_EXPORT ZQUnhashedSimFunc : public ZQSimFuncBase {
 public:
  /// 0.0 whatever the fingerprints are: these objects serve the prepared form alone.
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  virtual float operator()(const std::vector<const std::string*>& a,
                           const std::vector<const std::string*>& b) const = 0;
};

/// Tokens in common, repeats matched one by one, of all. Two empty lists give a NaN, one 0.0.
class ZQ_EXPORT ZQTanimotoUnhashedSim : public ZQUnhashedSimFunc {
 public:
  using ZQUnhashedSimFunc::operator();
  float operator()(const std::vector<const std::string*>& a,
                   const std::vector<const std::string*>& b) const override;
  ZQTanimotoUnhashedSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

}  // namespace ZQKorvex
