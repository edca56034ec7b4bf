"""Molecules of RDKit whose binary record the compiled part can't take."""

from __future__ import annotations

from typing import Any

from rdkit import Chem

from ._core import rdkit_graph

# Molecules with all that a record has a field for.
PROBES = ("C[C@H](N)C(=O)[O-]", "C[S@@](=O)CC", "F/C=C\\C=C", "[13CH3:7]c1cc[nH]c1", "N#CC[2H]", "[CH2]C",
          "[NH4+].O->[Cu+2]", "*c1ccsc1", "[CH3:300]Br", "C" * 256 + "/C=C/C")

Graph = tuple[list[tuple[int, int, int, int, int, int, bool]],
              list[tuple[int, int, list[int], int, int, bool]]]


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
        bonds.append((bond.GetBeginAtomIdx(), bond.GetEndAtomIdx(), list(ends) or [0, 0],
                      int(bond.GetBondType()), int(bond.GetStereo()) if ends else 0,
                      bond.GetIsAromatic()))
    return atoms, bonds


def are_records_right() -> bool:
    """Whether the records of this RDKit, whose version isn't one that was tried, give the same
    atoms and bonds as its functions."""
    mols = [Chem.MolFromSmiles(smiles) for smiles in PROBES]
    return all(mol is not None and rdkit_graph(mol.ToBinary(0)) == graph_of(mol) for mol in mols)
