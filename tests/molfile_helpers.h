#pragma once

/// Molfiles to read.

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "contract/quarnel/perception.h"
#include "korvex/draw_local.h"

struct MolfileAtom {
  const char* symbol;
  double x = 0, y = 0, z = 0;
  int charge = 0, radical = 0, mass = 0, valence = 0, parity = 0;  // as V3000 writes them
};
struct MolfileBond {
  int bgn, end, type = 1;
  int cfg = 0;  // as V3000 writes it: 1 up, 2 either, 3 down
};

__attribute__((format(printf, 2, 3))) inline void Add(std::string& text, const char* format, ...) {
  char line[200];
  va_list values;
  va_start(values, format);
  std::vsnprintf(line, sizeof line, format, values);
  va_end(values);
  text += line;
}

/// One molecule in either version. Atoms are mapped by their number.
inline std::string WriteMolfile(const std::vector<MolfileAtom>& atoms,
                                const std::vector<MolfileBond>& bonds, bool v3000) {
  std::string text = "title\n  program\n\n";
  std::string properties;
  const int numAtoms = static_cast<int>(atoms.size());
  const int numBonds = static_cast<int>(bonds.size());
  if (v3000) {
    text += "  0  0  0     0  0            999 V3000\nM  V30 BEGIN CTAB\n";
    Add(text, "M  V30 COUNTS %d %d 0 0 0\nM  V30 BEGIN ATOM\n", numAtoms, numBonds);
  } else {
    Add(text, "%3d%3d  0  0  0  0  0  0  0  0999 V2000\n", numAtoms, numBonds);
  }
  for (int i = 0; i < numAtoms; ++i) {
    const MolfileAtom& a = atoms[static_cast<std::size_t>(i)];
    if (v3000) {
      // Continued in the middle of a number, as a writer may do.
      Add(text, "M  V30 1-\nM  V30 %d %s %g %g %g %d CHG=%d RAD=%d MASS=%d VAL=%d CFG=%d\n", i,
          a.symbol, a.x, a.y, a.z, i + 1, a.charge, a.radical, a.mass, a.valence, a.parity);
      continue;
    }
    Add(text, "%10.4f%10.4f%10.4f %-3s 0  0%3d  0  0%3d  0  0  0%3d  0  0\n", a.x, a.y, a.z,
        a.symbol, a.parity, a.valence == -1 ? 15 : a.valence, i + 1);
    if (a.charge != 0) Add(properties, "M  CHG  1 %3d %3d\n", i + 1, a.charge);
    if (a.radical != 0) Add(properties, "M  RAD  1 %3d %3d\n", i + 1, a.radical);
    if (a.mass != 0) Add(properties, "M  ISO  1 %3d %3d\n", i + 1, a.mass);
  }
  if (v3000) text += "M  V30 END ATOM\nM  V30 BEGIN BOND\n";
  for (int i = 0; i < numBonds; ++i) {
    const MolfileBond& b = bonds[static_cast<std::size_t>(i)];
    const int stereo = b.cfg == 3 ? 6 : b.cfg == 2 ? (b.type == 2 ? 3 : 4) : b.cfg;
    if (v3000) {
      Add(text, "M  V30 %d %d 1%d 1%d CFG=%d\n", i + 1, b.type, b.bgn - 1, b.end - 1, b.cfg);
    } else {
      Add(text, "%3d%3d%3d%3d\n", b.bgn, b.end, b.type, stereo);
    }
  }
  if (v3000) {
    text +=
        "M  V30 END BOND\nM  V30 BEGIN SGROUP\nM  V30 1 DAT 0 ATOMS=(1 10) -\nM  V30 "
        "FIELDNAME=\"END SGROUP\"\nM  V30 END SGROUP\nM  V30 BEGIN COLLECTION\nM  V30 "
        "MDLV30/STEABS ATOMS=(1 10)\nM  V30 END COLLECTION\nM  V30 END CTAB\n";
  } else {
    text += "A    1\nM  END of an alias\nS  SKP  1\nM  END skipped\n" + properties;
  }
  return text + "M  END\n";
}

/// A molecule without holes as a molfile, drawn if it has a layout, with wedges. The valence is
/// written only if the usual one is wrong.
inline std::string ToMolfile(const Quarnel::ZQMolBase& mol, bool v3000,
                             const ZQKorvex::ZQLayout& layout = {},
                             const std::vector<ZQKorvex::ZQWedge>& wedges = {}) {
  std::vector<MolfileAtom> atoms;
  std::vector<MolfileBond> bonds;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    MolfileAtom& told =
        atoms.emplace_back(MolfileAtom{Quarnel::ZQGetAtomicSymbol(atom->GetAtomicNum())});
    told.charge = atom->GetFormalCharge();
    told.mass = static_cast<int>(atom->GetIsotope());
    if (!layout.empty()) {
      told.x = layout[atom->GetIdx()].x;
      told.y = layout[atom->GetIdx()].y;
    }
    const auto valence = static_cast<int>(atom->GetValence());
    const unsigned int sum = atom->GetValence() - atom->GetImplicitHCount();
    if (Quarnel::ZQDefaultHCount(atom->GetAtomicNum(), told.charge, sum) !=
        atom->GetImplicitHCount()) {
      told.valence = valence == 0 ? -1 : valence;
    }
  }
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    const unsigned int order = bond->GetOrder();
    MolfileBond& told = bonds.emplace_back(MolfileBond{
        static_cast<int>(bond->GetBgn()->GetIdx()) + 1,
        static_cast<int>(bond->GetEnd()->GetIdx()) + 1, order == 0 ? 8 : static_cast<int>(order)});
    if (order == 2 && bond->GetStereo() == Quarnel::ZQBondStereo::None) told.cfg = 2;
    if (wedges.empty() || !wedges[bond->GetIdx()].narrow) continue;
    told.cfg = wedges[bond->GetIdx()].isUp ? 1 : 3;
    if (wedges[bond->GetIdx()].narrow == bond->GetEnd()) std::swap(told.bgn, told.end);
  }
  return WriteMolfile(atoms, bonds, v3000);
}
