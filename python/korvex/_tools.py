"""What is done with single molecules and pairs."""

from __future__ import annotations

from typing import Any, Sequence

from . import _core
from ._core import Type, Vsepr
from ._fingerprint import type_of
from ._molecule import Mol, count_of


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
    return Drawing(_core.draw(mol, [count_of("an atom", a) for a in atoms],
                              [float(w) for w in weights], count_of("width", width),
                              count_of("height", height), title))


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
        self._mols = (a, b)
        sides = found["sides"]
        self.score: float = found["score"]
        self.counts = (sides[0]["count"], sides[1]["count"], found["both"])
        self.fragments: list[tuple[Any, ...]] = found["fragments"]

        def of_both(name: str) -> tuple[Any, Any]:
            return sides[0][name], sides[1][name]

        self.fingerprints = of_both("fingerprint")
        self.shared_atoms = of_both("shared_atoms")
        self.shared_bonds = of_both("shared_bonds")
        self.weights = of_both("weights")
        self.covered_atoms = of_both("covered_atoms")
        self.covered_bonds = of_both("covered_bonds")

    def __repr__(self) -> str:
        return f"<korvex.Explanation, score {self.score:.4f}, {len(self.fragments)} fragments>"

    def draw(self, which: int, width: int = 0, height: int = 0) -> Drawing:
        """Draws molecule 0 or 1 with its atoms shaded by weight."""
        return draw(self._mols[which], weights=self.weights[which], width=width, height=height)


def explain(a: Mol, b: Mol, type: str | Type = "path", measure: str = "tanimoto",
            alpha: float = 0.95, beta: float = 0.05) -> Explanation:
    """Explains the similarity of two molecules: an Explanation."""
    return Explanation(a, b, _core.explain(a, b, type_of(type), measure, alpha, beta))


def canonical_smiles(mol: Mol) -> str:
    """The canonical SMILES of a molecule, stereo included."""
    return _core.canonical_smiles(mol)


def vsepr(mol: Mol, max_length: int = 8, min_length: int = 0, force_paths_out: bool = True,
          weight_by_length: bool = True, stereo_aware: bool = True) -> Vsepr:
    """The VSEPR fingerprint of a molecule: a Vsepr, with `.tanimoto(other)` and `.paths()`."""
    return _core.vsepr(mol, count_of("max_length", max_length),
                       count_of("min_length", min_length), force_paths_out,
                       weight_by_length, stereo_aware)


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
        return self._pattern.is_in(mol)

    def matches(self, mol: Mol, unique: bool = True,
                limit: int = 1000000) -> list[tuple[int, ...]]:
        """The atoms of each match, in the pattern's order: a list of tuples of indices."""
        return [tuple(atoms) for atoms in self._pattern.match(
            mol, unique, count_of("limit", limit))]
