#pragma once

/// Atom labels: their text, where it stands around its atom, and how much room it takes.

#include <string>
#include <vector>

#include "korvex/draw_local.h"

namespace ZQKorvex {

/// A rectangle in pixels, y downwards.
struct ZQBox {
  double left, top, right, bottom;
};

/// Text in one go: several runs of normal, subscript and superscript letters.
struct ZQLabelLine {
  enum Script { Normal, Sub, Super };
  struct Run {
    std::string text;
    Script script;
  };
  double x = 0;  ///< where the text begins or, if `endsAtX`, ends
  double y = 0;  ///< the base line
  bool endsAtX = false;
  std::vector<Run> runs;
};

/// All positions are relative to the atom.
struct ZQLabel {
  std::vector<ZQLabelLine> lines;
  std::vector<ZQBox> boxes;
};

enum class ZQFreeSide { Right, Left, Above, Below };

/// Whether the atom is drawn as text; a plain carbon is only the end of its bonds, except between
/// two double bonds.
bool ZQNeedsLabel(const ZQAtomBase& atom);
/// Element, isotope, hydrogens, charge and map number; hydrogens stand on the free side.
ZQLabel ZQMakeLabel(const ZQAtomBase& atom, ZQFreeSide side, double fontSize);
/// The colour of the element, readable on white and on black; empty for that of the text around.
const char* ZQGetElementColor(unsigned int atomicNum);

/// Size and position of sub- and superscripts, relative to the font size.
inline constexpr double ZQScriptSize = 0.72;
inline constexpr double ZQSubDrop = 0.25;
inline constexpr double ZQSuperRise = 0.38;

}  // namespace ZQKorvex
