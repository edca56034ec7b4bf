"""Fingerprints and their measures."""

from __future__ import annotations

from typing import Any, Callable

import numpy as np

from . import _core
from ._core import Fingerprint, MoleculeFile, Type
from ._molecule import count_of, is_one


def type_of(kind_or_type: str | Type) -> Type:
    """The type of an argument."""
    return kind_or_type if isinstance(kind_or_type, Type) else _core.type(kind_or_type)


def fingerprint(mols: Any, type: str | Type = "path", threads: int = 0,
                return_mask: bool = False) -> Any:
    """Makes fingerprints.

    mols: one molecule (a SMILES string, a Molecule or an RDKit molecule), or an iterable of n
        of them, such as a MoleculeFile.
    type: a kind, a type string or a Type.
    threads: 0 for one on each processor.

    Returns a Fingerprint for one molecule. For n molecules an array of shape (n, words), uint64, or
    for a text kind a list of n strings. A molecule that can't be read has a row of zeros, or an
    empty string, and one warning has the number of such molecules; `return_mask=True` returns
    (result, mask) with the mask False for them. One molecule that can't be read raises Error.
    """
    chosen = type_of(type)
    if is_one(mols):
        return _core.make_one(mols, chosen)
    if not isinstance(mols, MoleculeFile):
        mols = list(mols)
    made, mask = _core.make_many(mols, chosen, count_of("threads", threads))
    return (made, mask) if return_mask else made


def _measure(name: str, brief: str) -> Callable[[Fingerprint, Fingerprint], float]:
    def compare(a: Fingerprint, b: Fingerprint) -> float:
        return _core.compare(a, b, name, 0.0, 0.0)
    compare.__name__ = compare.__qualname__ = name
    compare.__doc__ = f"{brief} of two fingerprints of the same type: a float, 0.0 to 1.0."
    return compare


tanimoto = _measure("tanimoto", "The Tanimoto similarity")
cosine = _measure("cosine", "The cosine similarity")
dice = _measure("dice", "The Dice similarity")
euclid = _measure("euclid", "The Euclid similarity")
manhattan = _measure("manhattan", "The Manhattan distance, over the number of bits,")


def tversky(a: Fingerprint, b: Fingerprint, alpha: float = 0.95, beta: float = 0.05) -> float:
    """The Tversky similarity of two fingerprints; alpha weighs the bits that only `a` has."""
    return _core.compare(a, b, "tversky", alpha, beta)


def to_rdkit(fp: Fingerprint) -> Any:
    """The bits as an ExplicitBitVect of RDKit. Raises ValueError for a text."""
    from rdkit import DataStructs
    if fp.type.is_text:
        raise ValueError("a text has no bits")
    bits = DataStructs.ExplicitBitVect(fp.num_bits)
    bits.SetBitsFromList(fp.bits().tolist())
    return bits


def from_rdkit(bits: Any, type: str | Type) -> Fingerprint:
    """The fingerprint of a type with the bits of an ExplicitBitVect of RDKit, which has as many."""
    chosen = type_of(type)
    if len(bits) != chosen.num_bits:
        raise ValueError(f"{len(bits)} bits; a fingerprint of this type has {chosen.num_bits}")
    words = np.zeros((chosen.num_bits + 63) // 64, np.uint64)
    for bit in bits.GetOnBits():
        words[bit // 64] |= np.uint64(1 << (bit % 64))
    return Fingerprint.from_numpy(words, chosen)
