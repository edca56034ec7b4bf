#include "korvex/draw_label_local.h"

#include <algorithm>

#include "contract/quarnel/perception.h"

namespace ZQKorvex {
namespace {

constexpr double capHeight = 0.72;  // of the font size
constexpr double padding = 1.5;     // pixels between a letter and the end of a bond
constexpr const char* minusSign = "\xE2\x88\x92";

// Widths in thousandths of the font size: those of Helvetica, which the usual sans-serif fonts
// share or come close to.
double WidthOf(char c) {
  switch (c) {
    case 'I':
    case 'i':
    case 'l':
    case 'f':
    case 't':
    case 'r':
    case ':':
      return 0.29;
    case 'M':
    case 'm':
      return 0.84;
    case 'W':
      return 0.94;
    case 'O':
    case 'G':
    case 'Q':
      return 0.78;
    case 'F':
    case 'T':
    case 'Z':
    case 'L':
      return 0.61;
    case '*':
      return 0.39;
    default:
      return c >= 'A' && c <= 'Z' ? 0.7 : 0.556;
  }
}

double WidthOf(const ZQLabelLine::Run& run) {
  double width = 0;
  for (const char c : run.text) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) width += WidthOf(c);  // not a UTF-8 tail
  }
  return run.script == ZQLabelLine::Normal ? width : width * ZQScriptSize;
}

std::string ChargeText(int charge) {
  if (charge == 0) return {};
  const unsigned int size =
      charge < 0 ? 0U - static_cast<unsigned int>(charge) : static_cast<unsigned int>(charge);
  return (size == 1 ? std::string() : std::to_string(size)) + (charge > 0 ? "+" : minusSign);
}

class LabelMaker {
 public:
  LabelMaker(ZQLabel& label, double fontSize) : label_(label), fontSize_(fontSize) {}

  /// Adds a line; empty runs are left out.
  void Add(double x, double y, bool endsAtX, std::vector<ZQLabelLine::Run> runs) {
    std::erase_if(runs, [](const ZQLabelLine::Run& run) { return run.text.empty(); });
    if (runs.empty()) return;
    double at = x;
    if (endsAtX) {
      for (const auto& run : runs) at -= WidthOf(run) * fontSize_;
    }
    for (const auto& run : runs) {
      const double width = WidthOf(run) * fontSize_;
      const double shift = run.script == ZQLabelLine::Sub     ? ZQSubDrop
                           : run.script == ZQLabelLine::Super ? -ZQSuperRise
                                                              : 0;
      const double base = y + shift * fontSize_;
      const double height =
          capHeight * fontSize_ * (run.script == ZQLabelLine::Normal ? 1 : ZQScriptSize);
      label_.boxes.push_back(
          {at - padding, base - height - padding, at + width + padding, base + padding});
      at += width;
    }
    label_.lines.push_back({x, y, endsAtX, std::move(runs)});
  }

 private:
  ZQLabel& label_;
  double fontSize_;
};

}  // namespace

bool ZQNeedsLabel(const ZQAtomBase& atom) {
  if (!atom.IsCarbon() || atom.GetFormalCharge() != 0 || atom.GetIsotope() != 0 ||
      atom.GetMapIdx() != 0) {
    return true;
  }
  unsigned int orders = 0;
  unsigned int doubles = 0;
  bool isAlone = true;
  for (const ZQBondBase* bond = nullptr; (bond = atom.NextBond(bond)) != nullptr;) {
    orders += bond->GetOrder();
    doubles += bond->GetOrder() == 2;
    isAlone = false;
  }
  // Between cumulated double bonds, which are in one line, nothing else would show the atom.
  return isAlone || doubles > 1 || atom.GetImplicitHCount() != ZQDefaultHCount(6, 0, orders);
}

ZQLabel ZQMakeLabel(const ZQAtomBase& atom, ZQFreeSide side, double fontSize) {
  using Run = ZQLabelLine::Run;
  std::string isotope = atom.GetIsotope() == 0 ? "" : std::to_string(atom.GetIsotope());
  std::string element = ZQGetAtomicSymbol(atom.GetAtomicNum());
  if (atom.IsHydrogen() && (isotope == "2" || isotope == "3")) {
    element = isotope == "2" ? "D" : "T";
    isotope.clear();
  }
  const Run symbol{element, ZQLabelLine::Normal};
  const Run mass{isotope, ZQLabelLine::Super};
  const Run charge{ChargeText(atom.GetFormalCharge()), ZQLabelLine::Super};
  const Run map{atom.GetMapIdx() == 0 ? "" : ":" + std::to_string(atom.GetMapIdx()),
                ZQLabelLine::Super};
  const unsigned int count = atom.GetImplicitHCount();
  const Run hydrogen{count == 0 ? "" : "H", ZQLabelLine::Normal};
  const Run number{count < 2 ? "" : std::to_string(count), ZQLabelLine::Sub};

  ZQLabel label;
  LabelMaker maker(label, fontSize);
  if (!atom.NextBond(nullptr)) {
    // Alone, as formulas are written: H2O and HCl, but CH4 and NH3.
    const bool isHydrogenFirst = atom.GetAtomicNum() == 8 || atom.GetAtomicNum() == 16 ||
                                 atom.GetAtomicNum() == 34 || atom.IsHalogen();
    const double base = capHeight * fontSize / 2;
    // The symbol is at the atom, where its halo is.
    double left = -WidthOf(symbol) / 2 - WidthOf(mass);
    if (isHydrogenFirst) {
      left -= WidthOf(hydrogen) + WidthOf(number);
      maker.Add(left * fontSize, base, false, {hydrogen, number, mass, symbol, charge, map});
    } else {
      maker.Add(left * fontSize, base, false, {mass, symbol, hydrogen, number, charge, map});
    }
    return label;
  }
  const double half = WidthOf(symbol) * fontSize / 2;
  const double base = capHeight * fontSize / 2;
  const double start = -half - WidthOf(mass) * fontSize;
  switch (side) {
    case ZQFreeSide::Right:
      maker.Add(start, base, false, {mass, symbol, hydrogen, number, charge, map});
      break;
    case ZQFreeSide::Left:
      maker.Add(half, base, true, {charge, hydrogen, number, mass, symbol});
      maker.Add(half, base, false, {map});
      break;
    default: {
      constexpr double lineHeight = 0.92;
      maker.Add(start, base, false, {mass, symbol, charge, map});
      const double y = base + (side == ZQFreeSide::Above ? -lineHeight : lineHeight) * fontSize;
      maker.Add(-WidthOf(hydrogen) * fontSize / 2, y, false, {hydrogen, number});
    }
  }
  return label;
}

const char* ZQGetElementColor(unsigned int atomicNum) {
  switch (atomicNum) {
    case 5:
      return "#b5605a";
    case 7:
      return "#3b75f0";
    case 8:
      return "#e5322d";
    case 9:
    case 17:
      return "#1a8a3a";
    case 14:
      return "#8a7a5a";
    case 15:
      return "#c06000";
    case 16:
      return "#9a7500";
    case 34:
    case 52:
      return "#a86c00";
    case 35:
      return "#bd5a3e";
    case 53:
      return "#a04be0";
    default:
      return "";
  }
}

}  // namespace ZQKorvex
