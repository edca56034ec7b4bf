#pragma once

/// The measures of measuresim.h over Lingo texts of which the query's was made ready once, for
/// scans. The query is side A. Counts are those of `ZQGetLingoSimTerms`, with neither as 0; a query
/// that isn't valid warns and scores 0.0. Immutable; one object may be called from many threads.

#include <string>

#include "korvex/lingo.h"
#include "korvex/measuresim.h"

namespace ZQKorvex {

class ZQ_EXPORT ZQLingoSimFunc : public ZQSimFuncBase {
 public:
  /// 0.0 whatever the fingerprints are: these objects serve the prepared form alone.
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  virtual float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const = 0;
};

class ZQ_EXPORT ZQTanimotoLingoSim : public ZQLingoSimFunc {
 public:
  using ZQLingoSimFunc::operator();
  float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const override;
  ZQTanimotoLingoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQCosineLingoSim : public ZQLingoSimFunc {
 public:
  using ZQLingoSimFunc::operator();
  float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const override;
  ZQCosineLingoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQDiceLingoSim : public ZQLingoSimFunc {
 public:
  using ZQLingoSimFunc::operator();
  float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const override;
  ZQDiceLingoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQEuclidLingoSim : public ZQLingoSimFunc {
 public:
  using ZQLingoSimFunc::operator();
  float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const override;
  ZQEuclidLingoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQManhattanLingoSim : public ZQLingoSimFunc {
 public:
  using ZQLingoSimFunc::operator();
  float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const override;
  ZQManhattanLingoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;
};

class ZQ_EXPORT ZQTverskyLingoSim : public ZQLingoSimFunc {
 public:
  /// `alpha` weighs what only the query has.
  ZQTverskyLingoSim(float alpha, float beta) : alpha_(alpha), beta_(beta) {}
  using ZQLingoSimFunc::operator();
  float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const override;
  ZQTverskyLingoSim* CreateCopy() const override;
  std::string GetSimTypeString() const override;

 private:
  float alpha_;
  float beta_;
};

}  // namespace ZQKorvex
