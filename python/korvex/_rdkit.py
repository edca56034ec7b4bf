"""Molecules of RDKit whose binary record the compiled part can't take."""

from __future__ import annotations

from typing import Any

from rdkit import Chem

Graph = tuple[list[tuple[int, int, int, int, int, int, bool]],
              list[tuple[int, int, tuple[int, ...], int, int, bool]]]


def graph_of(mol: Any) -> Graph:
    """The atoms and bonds, with the hydrogen counts and the stereo that the SMILES has."""
    mol = Chem.Mol(mol)
    mol.UpdatePropertyCache(False)
    if not mol.HasProp("_StereochemDone"):
        Chem.FastFindRings(mol)
        Chem.AssignStereochemistry(mol, cleanIt=True)
    atoms = [(atom.GetAtomicNum(), atom.GetFormalCharge(), atom.GetIsotope(), atom.GetAtomMapNum(),
              atom.GetTotalNumHs(), int(atom.GetChiralTag()), atom.GetIsAromatic())
             for atom in mol.GetAtoms()]
    bonds = []
    for bond in mol.GetBonds():
        ends = tuple(bond.GetStereoAtoms())
        bonds.append((bond.GetBeginAtomIdx(), bond.GetEndAtomIdx(), ends or (0, 0),
                      int(bond.GetBondType()), int(bond.GetStereo()) if ends else 0,
                      bond.GetIsAromatic()))
    return atoms, bonds
