#pragma once

/// Molecules of RDKit: their atoms and bonds, from the binary record that RDKit makes of a molecule
/// (`Mol.ToBinary`). One call for each atom takes several times as long.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/korvex.h"

namespace KorvexPython {

using namespace ZQKorvex;

/// The atoms and bonds of an RDKit molecule, with the numbers of RDKit's enumerations.
struct RdkitGraph {
  struct Atom {
    std::uint32_t isotope = 0;
    std::uint32_t mapIdx = 0;
    std::int8_t charge = 0;
    std::uint8_t atomicNum = 0;
    std::uint8_t hCount = 0;  ///< of hydrogens that aren't atoms
    std::uint8_t chiralTag = 0;
    bool aromatic = false;
  };
  struct Bond {
    std::uint32_t bgn = 0;
    std::uint32_t end = 0;
    std::array<std::uint32_t, 2> stereoAtoms{};  ///< a neighbour of each end, if there is a stereo
    std::uint8_t type = 1;
    std::uint8_t stereo = 0;
    bool aromatic = false;
  };
  std::vector<Atom> atoms;
  std::vector<Bond> bonds;
  bool hasStereo = false;     ///< any, or a direction of a bond
  std::uint32_t version = 0;  ///< of the record
};

/// The version of the records of RDKit 2022.09, from which the format was learned. Other versions
/// that look alike are taken if they give the right atoms and bonds for some molecules
/// (korvex/_rdkit.py).
inline constexpr std::uint32_t rdkitVersion = 13;

/// Reads a binary record of version 13, which RDKit 2022.09 writes. False for another version, for
/// query atoms and residues, for a record that is damaged, and for hydrogen counts that don't
/// follow from the bonds, as in a molecule that was edited.
bool ReadRdkitRecord(RdkitGraph& graph, std::string_view record);

/// Makes the molecule that the graph's SMILES would be read as, with the graph's indices. False,
/// with the cause in `fault`, for bonds of unknown types, or aromatic atoms without alternating
/// bonds.
bool MakeMolecule(ZQMol& mol, const RdkitGraph& graph, std::string& fault);

}  // namespace KorvexPython
