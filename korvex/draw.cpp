#include "korvex/draw.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "contract/bostrel/strings.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "korvex/draw_label_local.h"
#include "korvex/draw_local.h"

namespace ZQKorvex {
namespace {

constexpr double naturalBond = 30;  // pixels
constexpr double leastBond = 3;
constexpr double lineWidth = 1.4;
constexpr double margin = 12;  // room for halos
constexpr const char* haloColor = "#e08a00";
constexpr const char* positiveColor = "#1a9e77";
constexpr const char* negativeColor = "#c2379a";

// ---- Plane geometry in pixels, y downwards

struct Vec {
  double x = 0;
  double y = 0;
};

Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y}; }
Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y}; }
Vec operator*(Vec a, double factor) { return {a.x * factor, a.y * factor}; }
double Dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y; }
double Cross(Vec a, Vec b) { return a.x * b.y - a.y * b.x; }
double Length(Vec a) { return std::hypot(a.x, a.y); }
Vec Normalized(Vec a) {
  const double length = Length(a);
  return length > 0 ? a * (1 / length) : Vec{1, 0};
}
Vec Across(Vec a) { return {-a.y, a.x}; }

struct Segment {
  Vec from;
  Vec to;
};

// ---- Text

// With one decimal at most.
void AppendNumber(std::string& text, double value) {
  long long tenths = std::llround(value * 10);
  if (tenths < 0) {
    text += '-';
    tenths = -tenths;
  }
  text += std::to_string(tenths / 10);
  if (tenths % 10 != 0) {
    text += '.';
    text += static_cast<char>('0' + tenths % 10);
  }
}

std::string Number(double value) {
  std::string text;
  AppendNumber(text, value);
  return text;
}

void AppendPoint(std::string& text, char command, Vec at) {
  text += command;
  AppendNumber(text, at.x);
  text += ' ';
  AppendNumber(text, at.y);
}

// ---- The drawing

class Drawing {
 public:
  Drawing(const ZQMolBase& mol, const ZQLayout& layout, const ZQDrawStyle& style);
  std::string ToSVG();

 private:
  struct Neighbour {
    unsigned int atom;
    unsigned int bond;
  };
  struct Atom {
    const ZQAtomBase* atom = nullptr;  // null if not drawn
    ZQPoint place;                     // of the layout
    Vec at;
    std::optional<ZQLabel> label;
    bool isOn = false;
    double shade = 0;  // from -1 to 1
    std::vector<Neighbour> neighbours;
  };
  struct Bond {
    const ZQBondBase* bond = nullptr;
    unsigned int bgn = 0;
    unsigned int end = 0;
    double side = 0;  // of the second line of a double bond: 1 along Across, -1, 0 for both
    bool isOn = false;
  };

  void ReadStyle();
  void Fit();
  void Place(double bondLength);
  ZQFreeSide FreeSideOf(const Atom& atom) const;
  void ChooseSides();
  double SideOf(const Bond& bond) const;
  double RingScore(const Bond& bond, double side) const;
  unsigned int NumOnSide(const Bond& bond, unsigned int atom, double side) const;
  double SideOfAtom(const Bond& bond, unsigned int atom) const {
    return Cross(Vec{atoms_[bond.end].place.x - atoms_[bond.bgn].place.x,
                     atoms_[bond.bgn].place.y - atoms_[bond.end].place.y},
                 Vec{atoms_[atom].place.x - atoms_[bond.bgn].place.x,
                     atoms_[bond.bgn].place.y - atoms_[atom].place.y});
  }
  double TrimAt(const Bond& bond, unsigned int near, double offset, bool extends) const;
  Segment Clipped(const Bond& bond, Segment line) const;
  Segment Shifted(const Bond& bond, double offset, bool extends) const;

  void AppendHalos(std::string& svg) const;
  void AppendShades(std::string& svg) const;
  void AppendBond(std::string& svg, unsigned int idx) const;
  void AppendWedge(std::string& svg, const Bond& bond, const ZQWedge& wedge) const;
  void AppendAtom(std::string& svg, unsigned int idx) const;

  const ZQDrawStyle& style_;
  ZQGraphMol mol_;  // a copy, whose rings are perceived
  std::vector<Atom> atoms_;
  std::vector<Bond> bonds_;
  std::vector<ZQWedge> wedges_;
  double bondLength_ = naturalBond;
  double fontSize_ = 0;
  Vec size_;
};

Drawing::Drawing(const ZQMolBase& mol, const ZQLayout& layout, const ZQDrawStyle& style)
    : style_(style), mol_(mol) {
  if (!mol_.IsPerceived(ZQPerceived::Rings)) ZQFindRingAtomsAndBonds(mol_);
  atoms_.resize(mol_.GetMaxAtomIdx());
  for (auto atom = mol_.GetAtoms(); atom; ++atom) {
    const unsigned int idx = atom->GetIdx();
    if (idx >= layout.size() || !std::isfinite(layout[idx].x) || !std::isfinite(layout[idx].y)) {
      continue;
    }
    atoms_[idx].atom = &*atom;
    atoms_[idx].place = layout[idx];
  }
  bonds_.resize(mol_.GetMaxBondIdx());
  for (auto bond = mol_.GetBonds(); bond; ++bond) {
    const unsigned int bgn = bond->GetBgn()->GetIdx();
    const unsigned int end = bond->GetEnd()->GetIdx();
    if (!atoms_[bgn].atom || !atoms_[end].atom) continue;
    bonds_[bond->GetIdx()] = {&*bond, bgn, end};
    atoms_[bgn].neighbours.push_back({end, bond->GetIdx()});
    atoms_[end].neighbours.push_back({bgn, bond->GetIdx()});
  }
  wedges_ = ZQChooseWedges(mol_, layout);
  ReadStyle();
  ChooseSides();
  Fit();
}

void Drawing::ReadStyle() {
  for (const unsigned int idx : style_.atoms) {
    if (idx < atoms_.size()) atoms_[idx].isOn = true;
  }
  for (const unsigned int idx : style_.bonds) {
    if (idx < bonds_.size()) bonds_[idx].isOn = true;
  }
  const auto weightOf = [this](std::size_t i) {
    return i < style_.weights.size() && std::isfinite(style_.weights[i]) ? style_.weights[i] : 0;
  };
  double largest = 0;
  for (std::size_t i = 0; i < atoms_.size(); ++i) {
    if (atoms_[i].atom) largest = std::max(largest, std::abs(weightOf(i)));
  }
  for (std::size_t i = 0; i < atoms_.size() && largest > 0; ++i) {
    atoms_[i].shade = weightOf(i) / largest;
  }
}

// ---- Size

// Shrinks the bonds until atoms and labels fit. Labels shrink less, so that this takes some rounds;
// what is still too large then is scaled as a whole.
void Drawing::Fit() {
  constexpr int maxRounds = 6;
  Place(naturalBond);
  for (int round = 0; round < maxRounds; ++round) {
    double ratio = 1;
    if (style_.width != 0) ratio = std::min(ratio, style_.width / size_.x);
    if (style_.height != 0) ratio = std::min(ratio, style_.height / size_.y);
    if (ratio >= 1 || bondLength_ <= leastBond) return;
    constexpr double haste = 0.995;  // to come below the limit
    Place(std::max(bondLength_ * ratio * haste, leastBond));
  }
}

void Drawing::Place(double bondLength) {
  constexpr double leastFont = 7;
  constexpr double font = 0.44;  // of a bond
  bondLength_ = bondLength;
  fontSize_ = std::max(font * bondLength, leastFont);
  ZQBox box{0, 0, 0, 0};
  bool isFirst = true;
  const auto cover = [&](double left, double top, double right, double bottom) {
    box = isFirst ? ZQBox{left, top, right, bottom}
                  : ZQBox{std::min(box.left, left), std::min(box.top, top),
                          std::max(box.right, right), std::max(box.bottom, bottom)};
    isFirst = false;
  };
  for (Atom& atom : atoms_) {
    if (!atom.atom) continue;
    atom.at = {atom.place.x * bondLength, -atom.place.y * bondLength};
    cover(atom.at.x, atom.at.y, atom.at.x, atom.at.y);
    if (!ZQNeedsLabel(*atom.atom)) continue;
    atom.label = ZQMakeLabel(*atom.atom, FreeSideOf(atom), fontSize_);
    for (const ZQBox& part : atom.label->boxes) {
      // A letter may come nearer to the border than a halo.
      constexpr double nearer = 6;
      cover(atom.at.x + part.left + nearer, atom.at.y + part.top + nearer,
            atom.at.x + part.right - nearer, atom.at.y + part.bottom - nearer);
    }
  }
  for (Atom& atom : atoms_) atom.at = atom.at + Vec{margin - box.left, margin - box.top};
  size_ = {std::ceil(box.right - box.left + 2 * margin),
           std::ceil(box.bottom - box.top + 2 * margin)};
}

// The side with the widest angle between bonds: right or left if either is wide, for these read
// best.
ZQFreeSide Drawing::FreeSideOf(const Atom& atom) const {
  struct Option {
    ZQFreeSide side;
    Vec direction;
    double bonus;
  };
  constexpr std::array<Option, 4> options{{{ZQFreeSide::Right, {1, 0}, 0.5},
                                           {ZQFreeSide::Left, {-1, 0}, 0.45},
                                           {ZQFreeSide::Below, {0, 1}, 0.05},
                                           {ZQFreeSide::Above, {0, -1}, 0}}};
  ZQFreeSide best = ZQFreeSide::Right;
  double bestScore = -10;
  for (const Option& option : options) {
    double nearest = -1;  // cosine of the angle to the nearest bond
    for (const Neighbour& neighbour : atom.neighbours) {
      const ZQPoint& place = atoms_[neighbour.atom].place;
      const Vec bond = Normalized({place.x - atom.place.x, atom.place.y - place.y});
      nearest = std::max(nearest, Dot(bond, option.direction));
    }
    // Beyond 75 degrees it makes no difference.
    constexpr double wide = 0.26;
    const double score = option.bonus - std::max(nearest, wide);
    if (score > bestScore) {
      bestScore = score;
      best = option.side;
    }
  }
  return best;
}

// ---- Multiple bonds

void Drawing::ChooseSides() {
  for (Bond& bond : bonds_) {
    if (bond.bond && bond.bond->GetOrder() == 2) bond.side = SideOf(bond);
  }
}

unsigned int Drawing::NumOnSide(const Bond& bond, unsigned int atom, double side) const {
  unsigned int count = 0;
  for (const Neighbour& neighbour : atoms_[atom].neighbours) {
    if (neighbour.atom == bond.bgn || neighbour.atom == bond.end) continue;
    count += SideOfAtom(bond, neighbour.atom) * side > 0;
  }
  return count;
}

// How much the smallest ring on a side wants the second line of a double bond in it: rings of many
// double bonds first, then those of six, then small ones. 0 without a ring.
double Drawing::RingScore(const Bond& bond, double side) const {
  constexpr unsigned int largestRing = 20;
  std::vector<unsigned int> parents(atoms_.size(), ~0U);
  std::vector<std::pair<unsigned int, unsigned int>> queue{{bond.bgn, 1}};  // atom, ring size
  parents[bond.bgn] = bond.bgn;
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const auto [atom, size] = queue[i];
    if (size >= largestRing) break;
    for (const Neighbour& neighbour : atoms_[atom].neighbours) {
      const unsigned int next = neighbour.atom;
      if (parents[next] != ~0U || !bonds_[neighbour.bond].bond->IsInRing()) continue;
      if (&bonds_[neighbour.bond] == &bond) continue;
      // The ring leaves both ends of the bond to the wanted side.
      if (atom == bond.bgn && !(SideOfAtom(bond, next) * side > 0)) continue;
      if (next == bond.end && !(SideOfAtom(bond, atom) * side > 0)) continue;
      parents[next] = atom;
      if (next != bond.end) {
        queue.emplace_back(next, size + 1);
        continue;
      }
      double doubles = 0;
      for (unsigned int at = next; at != bond.bgn; at = parents[at]) {
        for (const Neighbour& back : atoms_[at].neighbours) {
          doubles += back.atom == parents[at] && bonds_[back.bond].bond->GetOrder() == 2;
        }
      }
      return 1 + 10 * doubles + (size + 1 == 6 ? 1 : 0) + 1.0 / (size + 1);
    }
  }
  return 0;
}

double Drawing::SideOf(const Bond& bond) const {
  const auto degree = [this](unsigned int atom) { return atoms_[atom].neighbours.size(); };
  if (bond.bond->IsInRing()) {
    const double left = RingScore(bond, 1);
    const double right = RingScore(bond, -1);
    if (left != right) return left > right ? 1 : -1;
    if (left > 0) return 1;
  }
  for (const unsigned int atom : {bond.bgn, bond.end}) {
    const unsigned int other = atom == bond.bgn ? bond.end : bond.bgn;
    unsigned int doubles = 0;
    for (const Neighbour& neighbour : atoms_[atom].neighbours) {
      doubles += bonds_[neighbour.bond].bond->GetOrder() == 2;
    }
    if (doubles > 1) return 0;  // cumulated
    if (degree(atom) == 1 && (degree(other) != 2 || ZQNeedsLabel(*atoms_[atom].atom))) return 0;
  }
  const int balance = static_cast<int>(NumOnSide(bond, bond.bgn, 1)) +
                      static_cast<int>(NumOnSide(bond, bond.end, 1)) -
                      static_cast<int>(NumOnSide(bond, bond.bgn, -1)) -
                      static_cast<int>(NumOnSide(bond, bond.end, -1));
  if (balance != 0) return balance > 0 ? 1 : -1;
  // Where most of the molecule is.
  double sum = 0;
  for (unsigned int i = 0; i < atoms_.size(); ++i) {
    if (atoms_[i].atom) sum += SideOfAtom(bond, i);
  }
  return sum < 0 ? -1 : 1;
}

// ---- Lines

// How much shorter a parallel line at the offset is at an end of the bond, so that it meets the
// neighbour on its side, or the line inside of that one's.
double Drawing::TrimAt(const Bond& bond, unsigned int near, double offset, bool extends) const {
  const unsigned int far = near == bond.bgn ? bond.end : bond.bgn;
  const Vec axis = Normalized(atoms_[far].at - atoms_[near].at);
  const double side = (near == bond.bgn ? 1 : -1) * offset;
  double trim = 0;
  bool isFirst = true;
  for (const Neighbour& neighbour : atoms_[near].neighbours) {
    if (neighbour.atom == far) continue;
    const Vec arm = Normalized(atoms_[neighbour.atom].at - atoms_[near].at);
    const double sine = Cross(axis, arm) * (side > 0 ? 1 : -1);
    constexpr double leastSine = 0.2;
    if (sine < leastSine) continue;
    const double cosine = Dot(axis, arm);
    // Where the offset line meets the neighbour itself, or the bisector.
    const double meets = std::abs(offset) * (extends ? cosine / sine : (1 + cosine) / sine);
    trim = isFirst ? meets : std::max(trim, meets);
    isFirst = false;
  }
  return trim;
}

// How far from its start the ray leaves the boxes.
double ExitOf(const std::vector<ZQBox>& boxes, Vec centre, Vec start, Vec direction,
              double length) {
  double exit = 0;
  for (const ZQBox& box : boxes) {
    double enters = 0;
    double leaves = length;
    const auto slab = [&](double at, double step, double low, double high) {
      if (std::abs(step) < 1e-9) {
        if (at < low || at > high) leaves = -1;
        return;
      }
      const double one = (low - at) / step;
      const double other = (high - at) / step;
      enters = std::max(enters, std::min(one, other));
      leaves = std::min(leaves, std::max(one, other));
    };
    slab(start.x, direction.x, centre.x + box.left, centre.x + box.right);
    slab(start.y, direction.y, centre.y + box.top, centre.y + box.bottom);
    if (leaves >= enters) exit = std::max(exit, leaves);
  }
  return exit;
}

// The line without what the labels at its ends cover.
Segment Drawing::Clipped(const Bond& bond, Segment line) const {
  const double length = Length(line.to - line.from);
  const Vec axis = Normalized(line.to - line.from);
  const Atom& bgn = atoms_[bond.bgn];
  const Atom& end = atoms_[bond.end];
  double start = bgn.label ? ExitOf(bgn.label->boxes, bgn.at, line.from, axis, length) : 0;
  double stop = end.label ? ExitOf(end.label->boxes, end.at, line.to, axis * -1, length) : 0;
  // Something of the bond remains between labels that touch.
  const double most = 0.8 * length;
  if (start + stop > most) {
    const double ratio = most / (start + stop);
    start *= ratio;
    stop *= ratio;
  }
  return {line.from + axis * start, line.to - axis * stop};
}

// The line parallel to the bond, on the side of Across for a positive offset.
Segment Drawing::Shifted(const Bond& bond, double offset, bool extends) const {
  const Vec from = atoms_[bond.bgn].at;
  const Vec to = atoms_[bond.end].at;
  const Vec axis = Normalized(to - from);
  const double most = 0.3 * Length(to - from);
  const auto trim = [&](unsigned int atom) {
    return std::clamp(TrimAt(bond, atom, offset, extends), -most / 2, most);
  };
  const Vec shift = Across(axis) * offset;
  return Clipped(bond, {from + shift + axis * trim(bond.bgn), to + shift - axis * trim(bond.end)});
}

// ---- Output

std::string Drawing::ToSVG() {
  std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" ";
  double scale = 1;
  if (style_.width != 0) scale = std::min(scale, style_.width / size_.x);
  if (style_.height != 0) scale = std::min(scale, style_.height / size_.y);
  const Vec canvas{style_.width != 0 ? style_.width : size_.x * scale,
                   style_.height != 0 ? style_.height : size_.y * scale};
  const Vec view = canvas * (1 / scale);
  svg += "width=\"" + Number(canvas.x) + "\" height=\"" + Number(canvas.y) + "\" viewBox=\"" +
         Number((size_.x - view.x) / 2) + " " + Number((size_.y - view.y) / 2) + " " +
         Number(view.x) + " " + Number(view.y) + "\"";
  if (style_.title.empty()) {
    svg += ">\n";
  } else {
    svg += " role=\"img\">\n<title>" + ZQToXmlText(style_.title) + "</title>\n";
  }
  AppendHalos(svg);
  AppendShades(svg);
  svg += "<g fill=\"none\" stroke=\"currentColor\" stroke-width=\"" + Number(lineWidth) +
         "\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
  for (unsigned int i = 0; i < bonds_.size(); ++i) AppendBond(svg, i);
  svg += "</g>\n<g fill=\"currentColor\" font-family=\"Helvetica,Arial,sans-serif\" font-size=\"" +
         Number(fontSize_) + "\">\n";
  for (unsigned int i = 0; i < atoms_.size(); ++i) AppendAtom(svg, i);
  return svg + "</g>\n</svg>\n";
}

// Lines and circles have the same stroke, so that circles are larger than their radius.
void Drawing::AppendHalos(std::string& svg) const {
  const double width = 0.4 * bondLength_;
  const double radius = 0.37 * bondLength_ - width / 2;
  std::string halos;
  const auto append = [&](bool isDrawn, bool isOn, const char* element, const char* data,
                          unsigned int idx, const std::string& shape) {
    if (!isDrawn || !(isOn || style_.isInteractive)) return;
    halos += std::string("<") + element + " class=\"halo" + (isOn ? " on" : "") + "\" " + data +
             "=\"" + std::to_string(idx) + "\" " + shape + (isOn ? "" : " opacity=\"0\"") + "/>\n";
  };
  for (unsigned int i = 0; i < bonds_.size(); ++i) {
    const Bond& bond = bonds_[i];
    std::string line = "d=\"";
    AppendPoint(line, 'M', atoms_.empty() ? Vec() : atoms_[bond.bgn].at);
    AppendPoint(line, 'L', atoms_.empty() ? Vec() : atoms_[bond.end].at);
    append(bond.bond != nullptr, bond.isOn, "path", "data-bond", i, line + "\"");
  }
  for (unsigned int i = 0; i < atoms_.size(); ++i) {
    const Atom& atom = atoms_[i];
    append(atom.atom != nullptr, atom.isOn, "circle", "data-atom", i,
           "cx=\"" + Number(atom.at.x) + "\" cy=\"" + Number(atom.at.y) + "\" r=\"" +
               Number(radius) + "\"");
  }
  if (halos.empty()) return;
  svg += std::string("<g class=\"halos\" fill=\"") + haloColor + "\" stroke=\"" + haloColor +
         "\" stroke-width=\"" + Number(width) + "\" stroke-linecap=\"round\" opacity=\".3\">\n" +
         halos + "</g>\n";
}

void Drawing::AppendShades(std::string& svg) const {
  constexpr double strongest = 0.6;
  for (unsigned int i = 0; i < atoms_.size(); ++i) {
    const Atom& atom = atoms_[i];
    const long hundredths = std::lround(std::abs(atom.shade) * strongest * 100);
    if (!atom.atom || hundredths == 0) continue;
    svg += "<circle class=\"shade\" data-atom=\"" + std::to_string(i) + "\" cx=\"" +
           Number(atom.at.x) + "\" cy=\"" + Number(atom.at.y) + "\" r=\"" +
           Number(0.45 * bondLength_) + "\" fill=\"" +
           (atom.shade > 0 ? positiveColor : negativeColor) + "\" opacity=\"." +
           (hundredths < 10 ? "0" : "") + std::to_string(hundredths) + "\"/>\n";
  }
}

void Drawing::AppendBond(std::string& svg, unsigned int idx) const {
  const Bond& bond = bonds_[idx];
  if (!bond.bond) return;
  svg += "<path class=\"bond\" data-bond=\"" + std::to_string(idx) + "\"";
  if (wedges_[idx].narrow) {
    AppendWedge(svg, bond, wedges_[idx]);
    return;
  }
  const unsigned int order = bond.bond->GetOrder();
  const double gap = std::max(0.18 * bondLength_, 2 * lineWidth);
  std::vector<Segment> lines;
  if (order == 2 && bond.side != 0) {
    lines = {Clipped(bond, {atoms_[bond.bgn].at, atoms_[bond.end].at}),
             Shifted(bond, bond.side * gap, false)};
  } else if (order == 2) {
    lines = {Shifted(bond, gap / 2, true), Shifted(bond, -gap / 2, true)};
  } else {
    const unsigned int count = std::max(order, 1U);
    for (unsigned int i = 0; i < count; ++i) {
      const double offset = (i - (count - 1) / 2.0) * gap;
      const Vec shift = Across(Normalized(atoms_[bond.end].at - atoms_[bond.bgn].at)) * offset;
      lines.push_back(Clipped(bond, {atoms_[bond.bgn].at + shift, atoms_[bond.end].at + shift}));
    }
  }
  svg += " d=\"";
  for (const Segment& line : lines) {
    AppendPoint(svg, 'M', line.from);
    AppendPoint(svg, 'L', line.to);
  }
  svg += order == 0 ? "\" stroke-dasharray=\"3 3\"/>\n" : "\"/>\n";
}

void Drawing::AppendWedge(std::string& svg, const Bond& bond, const ZQWedge& wedge) const {
  Segment line = Clipped(bond, {atoms_[bond.bgn].at, atoms_[bond.end].at});
  if (wedge.narrow->GetIdx() == bond.end) std::swap(line.from, line.to);
  const Vec half = Across(Normalized(line.to - line.from)) * std::max(0.1 * bondLength_, 2.0);
  svg += " d=\"";
  if (wedge.isUp) {
    AppendPoint(svg, 'M', line.from);
    AppendPoint(svg, 'L', line.to + half);
    AppendPoint(svg, 'L', line.to - half);
    svg += "Z\" fill=\"currentColor\" stroke=\"none\"/>\n";
    return;
  }
  const auto count = std::max(4, static_cast<int>(Length(line.to - line.from) / (2 * lineWidth)));
  for (int i = 1; i <= count; ++i) {
    const double part = static_cast<double>(i) / count;
    const Vec at = line.from + (line.to - line.from) * part;
    AppendPoint(svg, 'M', at + half * part);
    AppendPoint(svg, 'L', at - half * part);
  }
  svg += "\" stroke-linecap=\"butt\"/>\n";
}

void Drawing::AppendAtom(std::string& svg, unsigned int idx) const {
  const Atom& atom = atoms_[idx];
  if (!atom.atom) return;
  svg += "<g class=\"atom\" data-atom=\"" + std::to_string(idx) + "\"";
  if (!atom.label) {
    svg += "/>\n";
    return;
  }
  const std::string color = ZQGetElementColor(atom.atom->GetAtomicNum());
  if (!color.empty()) svg += " fill=\"" + color + "\"";
  svg += '>';
  for (const ZQLabelLine& line : atom.label->lines) {
    svg += "<text x=\"" + Number(atom.at.x + line.x) + "\" y=\"" + Number(atom.at.y + line.y) +
           (line.endsAtX ? "\" text-anchor=\"end\">" : "\">");
    double shift = 0;  // of the base line
    for (const ZQLabelLine::Run& run : line.runs) {
      const double wanted = run.script == ZQLabelLine::Sub     ? ZQSubDrop * fontSize_
                            : run.script == ZQLabelLine::Super ? -ZQSuperRise * fontSize_
                                                               : 0;
      if (wanted == 0 && shift == 0) {
        svg += run.text;
        continue;
      }
      svg += "<tspan";
      if (wanted != shift) svg += " dy=\"" + Number(wanted - shift) + "\"";
      if (wanted != 0) svg += " font-size=\"" + Number(ZQScriptSize * fontSize_) + "\"";
      svg += ">" + run.text + "</tspan>";
      shift = wanted;
    }
    svg += "</text>";
  }
  svg += "</g>\n";
}

}  // namespace

std::string ZQDrawSVG(const ZQMolBase& mol, const ZQLayout& layout, const ZQDrawStyle& style) {
  return Drawing(mol, layout, style).ToSVG();
}

}  // namespace ZQKorvex
