"""Molecular fingerprints: made, searched and compared.

A molecule is a SMILES string, a `Molecule`, or a molecule of RDKit. A type is the name of a kind ("path",
"circular", "tree", "maccs166", "lingo", "uhpath", ...), which stands for its default parameters, or
a type string such as "Circular,ver=2.0.0,size=2048,radius=0-2,...".

What the library refuses raises `korvex.Error` with its message; what it warns about is a Python
warning, `korvex.KorvexWarning`. Nothing is printed. Long calls release the GIL.
"""

from ._core import (Error, Fingerprint, KorvexWarning, Molecule, MoleculeFile, Type, Vsepr,
                    type)
from ._database import Database, Hits, create, open, read
from ._fingerprint import (cosine, dice, euclid, fingerprint, from_rdkit, manhattan, tanimoto,
                           to_rdkit, tversky)
from ._tools import (Drawing, Explanation, Smarts, canonical_smiles, draw, explain, vsepr)

__all__ = ["Database", "Drawing", "Error", "Explanation", "Fingerprint", "Hits", "KorvexWarning",
           "Molecule", "MoleculeFile", "Smarts", "Type", "Vsepr", "canonical_smiles", "cosine",
           "create", "dice", "draw", "euclid", "explain", "fingerprint", "from_rdkit", "manhattan",
           "open", "read", "tanimoto", "to_rdkit", "tversky", "type", "vsepr"]
