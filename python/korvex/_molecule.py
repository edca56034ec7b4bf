"""What is a molecule."""

from __future__ import annotations

import sys
from typing import Any

from ._core import Molecule

Mol = Any  # a SMILES string, a Molecule or an RDKit molecule


def is_one(mols: Any) -> bool:
    """Whether this is one molecule, not an iterable of them."""
    if isinstance(mols, (str, Molecule)):
        return True
    rdchem = sys.modules.get("rdkit.Chem.rdchem")  # imported by whoever has a molecule of it
    return rdchem is not None and isinstance(mols, rdchem.Mol)
