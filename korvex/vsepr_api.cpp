#include "korvex/vsepr_api.h"

namespace ZQKorvex {

namespace {

unsigned int Tag() {
  static const unsigned int tag = ZQGetTag("ZQVseprFingerprint");
  return tag;
}

template <class T>
void Prep(T& object, ZQVseprOptions options) {
  object.SetData(Tag(), ZQVseprFingerprint(object, options));
}

double GetTanimoto(const ZQBase& a, const ZQBase& b, double defaultValue) {
  const auto* fpA = a.FindDataOf<ZQVseprFingerprint>(Tag());
  const auto* fpB = b.FindDataOf<ZQVseprFingerprint>(Tag());
  if (!fpA || !fpB || fpA->GetOptions() != fpB->GetOptions()) return defaultValue;
  return fpA->GetTanimoto(*fpB);
}

}  // namespace

void ZQPrepVsepr(ZQMolBase& mol, ZQVseprOptions options) { Prep(mol, options); }
void ZQPrepVsepr(ZQAtomBase& atom, ZQVseprOptions options) { Prep(atom, options); }
void ZQPrepVsepr(ZQBondBase& bond, ZQVseprOptions options) { Prep(bond, options); }

double ZQGetVseprTanimoto(const ZQMolBase& a, const ZQMolBase& b, double defaultValue) {
  return GetTanimoto(a, b, defaultValue);
}
double ZQGetVseprTanimoto(const ZQAtomBase& a, const ZQAtomBase& b, double defaultValue) {
  return GetTanimoto(a, b, defaultValue);
}
double ZQGetVseprTanimoto(const ZQBondBase& a, const ZQBondBase& b, double defaultValue) {
  return GetTanimoto(a, b, defaultValue);
}

}  // namespace ZQKorvex
