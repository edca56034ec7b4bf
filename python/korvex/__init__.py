"""Molecular fingerprints: made, searched and compared.

A molecule is a SMILES string, or a molecule of RDKit. A type is the name of a kind ("path",
"circular", "tree", "maccs166", "lingo", "uhpath", ...), which stands for its default parameters, or
a type string such as "Circular,ver=2.0.0,size=2048,radius=0-2,...".

What the library refuses raises `korvex.Error` with its message; what it warns about is a Python
warning, `korvex.KorvexWarning`. Nothing is printed. Long calls release the GIL.
"""

import os as _os
import sys as _sys
import warnings as _warnings

from ._core import Error, Fingerprint, KorvexWarning, Type, type
from . import _core

__all__ = ["Database", "Error", "Fingerprint", "KorvexWarning", "Type", "cosine", "create", "dice",
           "euclid", "fingerprint", "manhattan", "open", "tanimoto", "tversky", "type"]


def _smiles(mol):
    """The SMILES of a molecule."""
    if isinstance(mol, str):
        return mol
    if mol.__class__.__module__.startswith("rdkit."):
        from rdkit import Chem
        return Chem.MolToSmiles(mol)
    raise TypeError(f"a molecule is a SMILES string or an RDKit molecule, not {mol.__class__!r}")


def _type(kind_or_type):
    return kind_or_type if isinstance(kind_or_type, Type) else type(kind_or_type)


def _is_one(mols):
    return isinstance(mols, str) or mols.__class__.__module__.startswith("rdkit.Chem.rdchem")


def fingerprint(mols, type="path", threads=0, return_mask=False):
    """Makes fingerprints.

    mols: one molecule, or an iterable of n molecules.
    type: a kind, a type string or a Type.
    threads: 0 for one on each processor.

    Returns a Fingerprint for one molecule. For n molecules an array of shape (n, words), uint64, or
    for a text kind a list of n strings. A molecule that can't be read has a row of zeros, or an
    empty string, and one warning has the number of such molecules; `return_mask=True` returns
    (result, mask) with the mask False for them. One molecule that can't be read raises Error.
    """
    chosen = _type(type)
    if _is_one(mols):
        return _core.make_one(_smiles(mols), chosen)
    made, mask = _core.make_many([_smiles(mol) for mol in mols], chosen, threads)
    return (made, mask) if return_mask else made


def _measure(name, brief):
    def compare(a, b):
        return _core.compare(a, b, name, 0.0, 0.0)
    compare.__name__ = compare.__qualname__ = name
    compare.__doc__ = f"{brief} of two fingerprints of the same type: a float, 0.0 to 1.0."
    return compare


tanimoto = _measure("tanimoto", "The Tanimoto similarity")
cosine = _measure("cosine", "The cosine similarity")
dice = _measure("dice", "The Dice similarity")
euclid = _measure("euclid", "The Euclid similarity")
manhattan = _measure("manhattan", "The Manhattan distance, over the number of bits,")


def tversky(a, b, alpha=0.95, beta=0.05):
    """The Tversky similarity of two fingerprints; alpha weighs the bits that only `a` has."""
    return _core.compare(a, b, "tversky", alpha, beta)


class Hits:
    """Hits of searches, or neighbours of records: `array` is a structured NumPy array, ordered by
    query and rank. `len`, indexing and iteration are the array's."""

    def __init__(self, array, database):
        self.array = array
        self._database = database

    def __len__(self):
        return len(self.array)

    def __getitem__(self, item):
        return self.array[item]

    def __iter__(self):
        return iter(self.array)

    def __array__(self, dtype=None):
        return self.array if dtype is None else self.array.astype(dtype)

    def __repr__(self):
        return f"<korvex.Hits, {self.array!r}>"

    def to_pandas(self):
        """A pandas DataFrame of the same columns, with title and SMILES of each hit."""
        import pandas
        frame = pandas.DataFrame(self.array)
        frame["title"] = [self._database.title(int(i)) for i in self.array["index"]]
        frame["smiles"] = [self._database.smiles(int(i)) for i in self.array["index"]]
        return frame


class Database:
    """A database file (.fpbin); made by `korvex.open`. Immutable, and any thread may query it.

    `len(database)` is its number of records, `database[i]` the Fingerprint of one, `database.type`
    their Type. A copy, also one of another process, opens the file again.
    """

    def __init__(self, path, memory="mapped"):
        numbers = {"mapped": 1, "memory": 2, "cuda": 3}
        if memory not in numbers:
            raise ValueError(f"memory is one of {', '.join(numbers)}, not {memory!r}")
        self._arguments = (_os.fspath(path), memory)
        self._core = _core.Database(self._arguments[0], numbers[memory])
        self._molecules = None

    def __reduce__(self):
        return Database, self._arguments

    def __len__(self):
        return len(self._core)

    def __getitem__(self, index):
        return self._core[index]

    def __repr__(self):
        return f"<korvex.Database {self.path!r}, {len(self)} records, {self.memory}>"

    @property
    def path(self):
        return self._core.path

    @property
    def memory(self):
        """"memory-mapped", "in-memory" or "cuda"; without a GPU "memory-mapped" for the last."""
        return self._core.memory_name

    @property
    def type(self):
        return self._core.type

    def _queries(self, query):
        if isinstance(query, Fingerprint) or _is_one(query):
            query = [query]
        return [q if isinstance(q, Fingerprint) else fingerprint(q, self.type) for q in query]

    def search(self, query, k=10, cutoff=None, measure="tanimoto", alpha=0.95, beta=0.05,
               descending=True, threads=0):
        """The k best records for each query, 0 for all that score more than 0.

        query: a molecule or a Fingerprint of this type, or an iterable of these.
        cutoff: only scores above it, or below it if not `descending`.
        Returns Hits with the fields query (its number), index (of the record) and score.
        """
        return Hits(self._core.search(self._queries(query), k, cutoff, measure, alpha, beta,
                                      descending, threads), self)

    def scores(self, query, measure="tanimoto", alpha=0.95, beta=0.05):
        """The scores of all records for one query, in their order: an array of float64."""
        return self._core.scores(self._queries(query)[0], measure, alpha, beta)

    def neighbors(self, k=10, cutoff=None, measure="tanimoto", alpha=0.95, beta=0.05):
        """The k nearest other records of each record, with scores not below the cutoff.

        Returns Hits with the fields record, index and score. The time grows with the square of the
        number of records.
        """
        return Hits(self._core.neighbors(k, cutoff, measure, alpha, beta), self)

    def histogram(self, bins=20, measure="tanimoto", alpha=0.95, beta=0.05):
        """How the scores of all pairs of records are distributed: (counts, edges), as of
        numpy.histogram."""
        return self._core.histogram(bins, measure, alpha, beta)

    def variogram(self, values, bins=20, measure="tanimoto"):
        """The semivariance of `values`, one for each record, by the distance of the records, 1 less
        their score: (semivariances, counts, edges)."""
        return self._core.variogram([float(v) for v in values], bins, measure)

    def _open_molecules(self):
        if self._molecules is None:
            name = self._core.molecule_file
            folder = _os.path.dirname(self.path)
            for path in (name, _os.path.join(folder, name),
                         _os.path.join(folder, _os.path.basename(name))):
                if _os.path.isfile(path):
                    molecules = _core.Molecules(path)
                    if len(molecules) == len(self):
                        self._molecules = molecules
                        return molecules
            self._molecules = False
            _warnings.warn(f"the molecule file {name!r} isn't there, or has changed; titles and "
                           "SMILES are empty", KorvexWarning, stacklevel=3)
        return self._molecules

    def title(self, index):
        """The title of a record, from the molecule file; empty if that isn't there."""
        molecules = self._open_molecules()
        return molecules.title(index) if molecules else ""

    def smiles(self, index):
        """The SMILES of a record, likewise."""
        molecules = self._open_molecules()
        return molecules.smiles(index) if molecules else ""


def open(path, memory="mapped"):
    """Opens a database file.

    memory: "mapped" reads it through the page cache, "memory" loads and checks all of it, "cuda"
    copies it to a GPU (and is "mapped", with a warning, where there is none).
    """
    return Database(path, memory)


def create(molecules, out, type="path", threads=0, progress=None):
    """Makes a database file of a molecule file (.smi, .sdf, .mol, also .gz), and opens it.

    progress: draws a bar on standard error; by default if that is a terminal.
    """
    if progress is None:
        progress = _sys.stderr is not None and _sys.stderr.isatty()
    _core.create(_os.fspath(out), _os.fspath(molecules), _type(type), threads, progress)
    return open(out)
