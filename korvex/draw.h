#pragma once

/// Drawings of molecules as SVG. Any number of threads may draw concurrently; layouts are made by
/// one thread at a time. Lack of memory throws `std::bad_alloc`.

#include <string>
#include <vector>

#include "contract/quarnel/coordinates.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// Where the atoms of a drawing are: one point for each atom index, bonds of about length 1, y
/// upwards, z 0.
using ZQLayout = std::vector<ZQPoint>;

/// Makes the layout of a molecule: its own coordinates if it was read with flat ones that can be
/// drawn (`ZQCoordinatesTag`), otherwise new ones (`ZQGenerateLayout`). Own coordinates can be
/// drawn if there is one for each atom, no two atoms are closer than a third of a bond length, no
/// bond is longer than three median ones, and the double bonds have their present configuration.
/// They are scaled and moved, not turned. False after a warning for a molecule without such
/// coordinates and with more than `ZQMostLayoutAtoms` atoms.
ZQ_EXPORT bool ZQMakeLayout(ZQLayout& layout, const ZQMolBase& mol);

/// Turns, and mirrors if needed, a layout so that it best covers the reference on a large connected
/// fragment that the two molecules share, by least squares; it keeps its shape and size. The
/// fragment is found greedily: atoms match in element, bonds in order, or both aromatic, and in
/// ring membership. Returns false, and changes nothing, if it has fewer than six heavy atoms or
/// than a third of the smaller molecule's. A few milliseconds for molecules of 100 atoms.
ZQ_EXPORT bool ZQOrientLayout(ZQLayout& layout, const ZQMolBase& mol, const ZQLayout& reference,
                              const ZQMolBase& referenceMol);

struct ZQDrawStyle {
  /// Size in pixels; 0 for the natural one, with bonds of 30 pixels. A larger molecule is made
  /// smaller, a smaller one stands in the middle. Lines have one width at any size.
  unsigned int width = 0;
  unsigned int height = 0;
  /// Indices of highlighted atoms and bonds. Indices without atom or bond are ignored.
  std::vector<unsigned int> atoms;
  std::vector<unsigned int> bonds;
  /// Shades atoms by value, positive ones green and negative ones purple, the largest magnitude
  /// most strongly. By atom index; empty for no shades. Missing and infinite values count as 0.
  std::vector<double> weights;
  /// Adds a hidden halo behind each atom and bond, which a page can show.
  bool isInteractive = false;
  /// The accessible name. Bytes that aren't UTF-8 become U+FFFD, control characters blanks. Empty
  /// for none.
  std::string title;
};

/// Draws a molecule as one SVG element without outside references, well-formed for any input. Each
/// atom is one element `<g class="atom" data-atom="I">`, empty if the atom has no label; each bond
/// one `<path class="bond" data-bond="I">`. Behind them, in a group of class "halos", are `<circle
/// class="halo" data-atom="I">` and `<path class="halo" data-bond="I">`, with the class "halo on"
/// if highlighted; others are there, with opacity 0, if the drawing is interactive. Shades are
/// `<circle class="shade" data-atom="I">`.
///
/// Lines and letters have the colour of the text around (currentColor), which is black in a file of
/// its own, or that of their element; there is no background. Element colours are readable on white
/// and on black.
///
/// Atoms and bonds beyond the layout's size aren't drawn. A double bond without configuration is
/// drawn as its layout is. A wedge has its narrow end at the atom whose configuration it shows.
ZQ_EXPORT std::string ZQDrawSVG(const ZQMolBase& mol, const ZQLayout& layout,
                                const ZQDrawStyle& style = ZQDrawStyle());

}  // namespace ZQKorvex
