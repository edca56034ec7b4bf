"""Molecules as users have them."""

from __future__ import annotations

from typing import Any, Iterable, Sequence

Mol = Any  # a SMILES string or an RDKit molecule


def is_one(mols: Any) -> bool:
    """Whether this is one molecule, not an iterable of them."""
    return isinstance(mols, str) or mols.__class__.__module__.startswith("rdkit.Chem.")


def smiles_of(mol: Mol) -> str:
    """The SMILES of a molecule. RDKit is only imported by who has a molecule of it."""
    if isinstance(mol, str):
        return mol
    if is_one(mol):
        from rdkit import Chem
        return Chem.MolToSmiles(mol)  # type: ignore[no-any-return]
    raise TypeError(f"a molecule is a SMILES string or an RDKit molecule, not {mol.__class__!r}")


class Molecule:
    """A molecule's SMILES, and the ways between its atoms and bonds and the caller's."""

    def __init__(self, mol: Mol) -> None:
        self.smiles = smiles_of(mol)
        self._mol = None if isinstance(mol, str) else mol
        if self._mol is not None:
            # The order in which RDKit wrote the atoms.
            order = mol.GetPropsAsDict(True, True).get("_smilesAtomOutputOrder", ())
            self._order: list[int] = list(order)
            self._back = {atom: i for i, atom in enumerate(self._order)}

    def atoms(self, indices: Iterable[int]) -> list[int]:
        """The caller's indices of atoms of the SMILES."""
        return list(indices) if self._mol is None else [self._order[i] for i in indices]

    def bonds(self, indices: Iterable[int], ends: Sequence[tuple[int, int]]) -> list[int]:
        """The same of bonds; `ends` are the atoms of each bond of the SMILES."""
        if self._mol is None:
            return list(indices)
        order = self._order
        return [self._mol.GetBondBetweenAtoms(order[ends[i][0]], order[ends[i][1]]).GetIdx()
                for i in indices]

    def by_atom(self, values: Sequence[float]) -> list[float]:
        """Values by atom of the SMILES, by the caller's atoms."""
        if self._mol is None or not values:
            return list(values)
        result = [0.0] * len(values)
        for i, value in enumerate(values):
            result[self._order[i]] = value
        return result

    def own_atoms(self, indices: Iterable[int]) -> list[int]:
        """The atoms of the SMILES for the caller's."""
        return list(indices) if self._mol is None else [self._back[i] for i in indices]

    def own_values(self, values: Sequence[float]) -> list[float]:
        """Values by atom of the caller, by atoms of the SMILES; missing ones are 0."""
        if self._mol is None or not values:
            return list(values)
        return [values[i] if i < len(values) else 0.0 for i in self._order]
