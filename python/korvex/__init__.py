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

from ._core import Vsepr

__all__ = ["Database", "Drawing", "Error", "Explanation", "Fingerprint", "Hits", "KorvexWarning",
           "Smarts", "Type", "Vsepr", "canonical_smiles", "cosine", "create", "dice", "draw",
           "euclid", "explain", "fingerprint", "manhattan", "open", "tanimoto", "tversky", "type",
           "vsepr"]


class _Molecule:
    """The SMILES of a molecule, and the way back from its atoms and bonds to the caller's."""

    def __init__(self, mol):
        self._mol = None
        if isinstance(mol, str):
            self.smiles = mol
        elif mol.__class__.__module__.startswith("rdkit."):
            from rdkit import Chem
            self.smiles = Chem.MolToSmiles(mol)
            self._mol = mol
            # The order in which RDKit wrote the atoms.
            self._order = list(mol.GetPropsAsDict(True, True).get("_smilesAtomOutputOrder", ()))
            self._back = {atom: i for i, atom in enumerate(self._order)}
        else:
            raise TypeError(
                f"a molecule is a SMILES string or an RDKit molecule, not {mol.__class__!r}")

    def atoms(self, indices):
        """The caller's indices of atoms of the SMILES."""
        return list(indices) if self._mol is None else [self._order[i] for i in indices]

    def bonds(self, indices, ends):
        """The same of bonds; `ends` are the atoms of each bond of the SMILES."""
        if self._mol is None:
            return list(indices)
        order = self._order
        return [self._mol.GetBondBetweenAtoms(order[ends[i][0]], order[ends[i][1]]).GetIdx()
                for i in indices]

    def by_atom(self, values):
        """Values by atom of the SMILES, by the caller's atoms."""
        if self._mol is None or not values:
            return list(values)
        result = [0.0] * len(values)
        for i, value in enumerate(values):
            result[self._order[i]] = value
        return result

    def own_atoms(self, indices):
        """The atoms of the SMILES for the caller's."""
        return list(indices) if self._mol is None else [self._back[i] for i in indices]

    def own_values(self, values):
        if self._mol is None:
            return list(values)
        return [values[i] if i < len(values) else 0.0 for i in self._order]


def _smiles(mol):
    return mol if isinstance(mol, str) else _Molecule(mol).smiles


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


class Drawing(str):
    """A drawing: the text of an SVG element, which notebooks show."""

    def _repr_svg_(self):
        return str(self)


def draw(mol, atoms=(), weights=(), width=0, height=0, title=""):
    """Draws a molecule as SVG.

    atoms: indices of highlighted atoms. weights: a number for each atom, which shades it: positive
    ones green, negative ones purple. width, height: pixels, 0 for the natural size.
    """
    molecule = _Molecule(mol)
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

    def __init__(self, a, b, found):
        self._mols = mols = (_Molecule(a), _Molecule(b))
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

    def __repr__(self):
        return f"<korvex.Explanation, score {self.score:.4f}, {len(self.fragments)} fragments>"

    def draw(self, which, width=0, height=0):
        """Draws molecule 0 or 1 with its atoms shaded by weight."""
        return Drawing(_core.draw(self._mols[which].smiles, [], [], self._sides[which]["weights"],
                                  width, height, ""))


def explain(a, b, type="path", measure="tanimoto", alpha=0.95, beta=0.05):
    """Explains the similarity of two molecules: an Explanation."""
    return Explanation(a, b, _core.explain(_smiles(a), _smiles(b), _type(type), measure, alpha, beta))


def canonical_smiles(mol):
    """The canonical SMILES of a molecule, stereo included."""
    return _core.canonical_smiles(_smiles(mol))


def vsepr(mol, max_length=8, min_length=0, force_paths_out=True, weight_by_length=True,
          stereo_aware=True):
    """The VSEPR fingerprint of a molecule: a Vsepr, with `.tanimoto(other)` and `.paths()`."""
    return _core.vsepr(_smiles(mol), max_length, min_length, force_paths_out, weight_by_length,
                       stereo_aware)


class Smarts:
    """A SMARTS pattern, compiled once."""

    def __init__(self, text):
        self._pattern = _core.CompiledSmarts(text)

    def __reduce__(self):
        return Smarts, (self.text,)

    def __repr__(self):
        return f"korvex.Smarts({self.text!r})"

    @property
    def text(self):
        return self._pattern.text

    def is_in(self, mol):
        """Whether the molecule has the pattern."""
        return self._pattern.is_in(_smiles(mol))

    def matches(self, mol, unique=True, limit=1000000):
        """The atoms of each match, in the pattern's order: a list of tuples of indices."""
        molecule = _Molecule(mol)
        return [tuple(molecule.atoms(atoms))
                for atoms in self._pattern.match(molecule.smiles, unique, limit)]


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
