#include "korvex/lingo.h"

#include <climits>
#include <cstring>
#include <string>
#include <string_view>

#include "korvex/checked_local.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fpkinds_local.h"

namespace ZQKorvex {

namespace {

constexpr std::size_t shortestText = 4;

// The text of a fingerprint, always NUL-terminated: a vector that wasn't made by `ZQMakeLingoFP`
// may lack the NUL.
class LingoText {
 public:
  explicit LingoText(const ZQFingerPrint& fp) : text_(reinterpret_cast<const char*>(fp.Words())) {
    const std::size_t bytes = std::size_t{fp.NumWords()} * sizeof(std::uint64_t);
    if (bytes == 0) {
      text_ = "";
    } else if (text_[bytes - 1] != 0) {
      copy_.assign(text_, bytes);
      text_ = copy_.c_str();
    }
  }
  const char* Get() const { return text_; }

 private:
  const char* text_;
  std::string copy_;
};

void StoreText(ZQFingerPrint& fp, const ZQMolBase& mol) {
  static const ZQLingoMap map;
  std::string text;
  map.CreateString(text, mol);
  const std::size_t bytes = text.size() + 1;
  if (bytes > INT_MAX / 8) {
    ZQThrow.Error("Max size for an ZQBitVector is INT_MAX");
    return;
  }
  fp.SetSize(static_cast<unsigned int>(8 * bytes));
  fp.ClearBits();
  std::memcpy(fp.Words(), text.c_str(), bytes);
}

bool Fill(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
          const ZQFPTypeValues& values) {
  if (ZQIsPreparedForFingerprinting(mol, kind.number)) {
    StoreText(fp, mol);
    return true;
  }
  const ZQGraphMol copy = ZQPreparedCopy(mol, kind, values);
  if (copy.NumAtoms() != 0) {
    StoreText(fp, copy);
  } else {
    fp.SetSize(1);
    fp.ClearBits();
  }
  return true;
}

}  // namespace

bool ZQMakeLingoFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  const ZQFPKind& kind = ZQGetFPKind(ZQFPType::Lingo);
  return ZQMakeFP(fp, mol, kind, kind.defaults, Fill);
}

bool ZQGetLingoSimTerms(const ZQFingerPrint& a, const ZQFingerPrint& b, unsigned int* onlyA,
                        unsigned int* onlyB, unsigned int* both) {
  const LingoText textA(a);
  const LingoText textB(b);
  const std::string_view wholeA(textA.Get());
  const std::string_view wholeB(textB.Get());
  if (wholeA.size() >= shortestText && wholeB.size() >= shortestText) {
    const ZQLingoSim sim(textA.Get(), 1);
    if (!sim.IsValid()) {
      ZQThrow.Warning("Cannot initialize lingo similarity");
      return false;
    }
    sim.GetImpl()->Compare(textB.Get(), onlyA, onlyB, both);
    return true;
  }
  const bool equal = wholeA == wholeB;
  *onlyA = equal ? 0 : ZQCheckedUnsigned(wholeA.size());
  *onlyB = equal ? 0 : ZQCheckedUnsigned(wholeB.size());
  *both = equal ? ZQCheckedUnsigned(wholeA.size()) : 0;
  return equal;
}

bool ZQGetLingoSimTerms(const ZQLingoSim& sim, const ZQFingerPrint& b, unsigned int* onlyA,
                        unsigned int* onlyB, unsigned int* both) {
  if (!sim.IsValid()) {
    ZQThrow.Warning("lingo is not initialized");
    return false;
  }
  sim.GetImpl()->Compare(LingoText(b).Get(), onlyA, onlyB, both);
  return true;
}

}  // namespace ZQKorvex
