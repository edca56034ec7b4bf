#pragma once

/// Drawings of molecules as SVG. Any number of threads may draw concurrently.

#include <string>
#include <vector>

#include "contract/quarnel/coordinates.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// Where the atoms of a drawing are: one point for each atom index, bonds of about length 1, y
/// upwards, z 0.
using ZQLayout = std::vector<ZQPoint>;

/// Makes the layout of a molecule: its own coordinates if it was read with flat ones that can be
/// drawn (`ZQCoordinatesTag`), otherwise new ones. False after a warning for a molecule of more
/// than `ZQMostLayoutAtoms` atoms.
ZQ_EXPORT bool ZQMakeLayout(ZQLayout& layout, const ZQMolBase& mol);

/// Turns, and mirrors if needed, a layout so that it best covers the reference on a large connected
/// fragment that the two molecules share. Returns false, and changes nothing, if there is none.
ZQ_EXPORT bool ZQOrientLayout(ZQLayout& layout, const ZQMolBase& mol, const ZQLayout& reference,
                              const ZQMolBase& referenceMol);

struct ZQDrawStyle {
  /// Size in pixels that the drawing must fit into; 0 for its natural size, with bonds of 30 pixels.
  /// A smaller molecule isn't enlarged.
  unsigned int width = 0;
  unsigned int height = 0;
  /// Indices of highlighted atoms and bonds.
  std::vector<unsigned int> atoms;
  std::vector<unsigned int> bonds;
  /// Shades atoms by value, positive and negative ones in two colours, the largest magnitude most
  /// strongly. By atom index; empty for no shades.
  std::vector<double> weights;
  /// Adds a hidden halo behind each atom and bond, which a page can show.
  bool isInteractive = false;
  /// The accessible name. Empty for none.
  std::string title;
};

/// Draws a molecule as one SVG element without outside references. Each atom is one element
/// `<g class="atom" data-atom="I">`, each bond one `<path class="bond" data-bond="I">`, each halo or
/// highlight one `<circle class="halo" data-atom="I">` or `<path class="halo" data-bond="I">`.
/// Lines and letters have the same colour as the text around (currentColor), or that of their
/// element.
ZQ_EXPORT std::string ZQDrawSVG(const ZQMolBase& mol, const ZQLayout& layout,
                                const ZQDrawStyle& style);

}  // namespace ZQKorvex
