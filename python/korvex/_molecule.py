"""What is a molecule."""

from __future__ import annotations

import operator
import os
import sys
from typing import Any, Union

from ._core import Molecule

Path = Union[str, "os.PathLike[str]"]
Mol = Any  # a SMILES string, a Molecule or an RDKit molecule


def count_of(name: str, value: int, least: int = 0) -> int:
    """An argument that counts something, or is a size."""
    number = operator.index(value)
    if not least <= number < 2**32:
        raise ValueError(f"{name} is {number}; it is within {least} and {2**32 - 1}")
    return number


def name_of(path: Path) -> bytes:
    """The name of a file, as the system has it."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError(f"the name of a file has no NUL: {name!r}")
    return name


def is_one(mols: Any) -> bool:
    """Whether this is one molecule, not an iterable of them."""
    if isinstance(mols, (str, Molecule)):
        return True
    rdchem = sys.modules.get("rdkit.Chem.rdchem")  # imported by whoever has a molecule of it
    return rdchem is not None and isinstance(mols, rdchem.Mol)
