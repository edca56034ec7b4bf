"""What is done with single molecules and pairs."""

from __future__ import annotations

from typing import Any, Sequence

from . import _core
from ._core import Type, Vsepr
from ._fingerprint import type_of
from ._molecule import Mol, Molecule, smiles_of


class Drawing(str):
    """A drawing: the text of an SVG element, which notebooks show."""

    def _repr_svg_(self) -> str:
        return str(self)


def draw(mol: Mol, atoms: Sequence[int] = (), weights: Sequence[float] = (), width: int = 0,
         height: int = 0, title: str = "") -> Drawing:
    """Draws a molecule as SVG.

    atoms: indices of highlighted atoms. weights: a number for each atom, which shades it: positive
    ones green, negative ones purple. width, height: pixels, 0 for the natural size.
    """
    molecule = Molecule(mol)
    return Drawing(_core.draw(molecule.smiles, molecule.own_atoms(atoms), [],
                              molecule.own_values(weights), width, height, title))


class Explanation:
    """What two molecules share, made by `explain`.

    score: by the measure. counts: the bits, or other items, of the two, and those of both.
    fragments: (text, atoms of a, bonds of a, atoms of b, bonds of b), the largest first.
    shared_atoms, shared_bonds: for each of the two molecules, the indices in shared fragments.
    weights: for each of the two, by atom, how much it adds to the score.
    covered_atoms, covered_bonds: for each of the two, their share of heavy atoms and bonds.
    Indices are those of the molecules that were given.
    """

    def __init__(self, a: Mol, b: Mol, found: dict[str, Any]) -> None:
        self._mols = mols = (Molecule(a), Molecule(b))
        self._sides = sides = found["sides"]
        self._ends = [side["bonds"] for side in sides]
        self.score = found["score"]
        self.counts = (sides[0]["count"], sides[1]["count"], found["both"])
        self.fingerprints = tuple(side["fingerprint"] for side in sides)
        self.shared_atoms = tuple(m.atoms(s["shared_atoms"]) for m, s in zip(mols, sides))
        self.shared_bonds = tuple(m.bonds(s["shared_bonds"], s["bonds"])
                                  for m, s in zip(mols, sides))
        self.weights = tuple(m.by_atom(s["weights"]) for m, s in zip(mols, sides))
        self.covered_atoms = tuple(s["covered_atoms"] for s in sides)
        self.covered_bonds = tuple(s["covered_bonds"] for s in sides)
        self.fragments = [
            (text, mols[0].atoms(atoms_a), mols[0].bonds(bonds_a, self._ends[0]),
             mols[1].atoms(atoms_b), mols[1].bonds(bonds_b, self._ends[1]))
            for text, atoms_a, bonds_a, atoms_b, bonds_b in found["fragments"]]

    def __repr__(self) -> str:
        return f"<korvex.Explanation, score {self.score:.4f}, {len(self.fragments)} fragments>"

    def draw(self, which: int, width: int = 0, height: int = 0) -> Drawing:
        """Draws molecule 0 or 1 with its atoms shaded by weight."""
        return Drawing(_core.draw(self._mols[which].smiles, [], [], self._sides[which]["weights"],
                                  width, height, ""))


def explain(a: Mol, b: Mol, type: str | Type = "path", measure: str = "tanimoto",
            alpha: float = 0.95, beta: float = 0.05) -> Explanation:
    """Explains the similarity of two molecules: an Explanation."""
    return Explanation(a, b, _core.explain(smiles_of(a), smiles_of(b), type_of(type), measure,
                                           alpha, beta))


def canonical_smiles(mol: Mol) -> str:
    """The canonical SMILES of a molecule, stereo included."""
    return _core.canonical_smiles(smiles_of(mol))


def vsepr(mol: Mol, max_length: int = 8, min_length: int = 0, force_paths_out: bool = True,
          weight_by_length: bool = True, stereo_aware: bool = True) -> Vsepr:
    """The VSEPR fingerprint of a molecule: a Vsepr, with `.tanimoto(other)` and `.paths()`."""
    return _core.vsepr(smiles_of(mol), max_length, min_length, force_paths_out, weight_by_length,
                       stereo_aware)


class Smarts:
    """A SMARTS pattern, compiled once."""

    def __init__(self, text: str) -> None:
        self._pattern = _core.CompiledSmarts(text)

    def __reduce__(self) -> tuple[Any, ...]:
        return Smarts, (self.text,)

    def __repr__(self) -> str:
        return f"korvex.Smarts({self.text!r})"

    @property
    def text(self) -> str:
        return self._pattern.text

    def is_in(self, mol: Mol) -> bool:
        """Whether the molecule has the pattern."""
        return self._pattern.is_in(smiles_of(mol))

    def matches(self, mol: Mol, unique: bool = True,
                limit: int = 1000000) -> list[tuple[int, ...]]:
        """The atoms of each match, in the pattern's order: a list of tuples of indices."""
        molecule = Molecule(mol)
        return [tuple(molecule.atoms(atoms))
                for atoms in self._pattern.match(molecule.smiles, unique, limit)]
