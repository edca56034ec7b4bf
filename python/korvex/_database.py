"""Databases and their queries."""

from __future__ import annotations

import itertools
import os
import shutil
import warnings
from typing import Any, Iterable, Iterator

import numpy as np
from numpy.typing import NDArray

from . import _core
from ._core import Error, Fingerprint, KorvexWarning, MoleculeFile, Type
from ._fingerprint import type_of
from ._molecule import Mol, Path, count_of, is_one, name_of
from ._progress import Progress, shown


class Hits:
    """Hits of searches, or neighbours of records: `array` is a structured NumPy array, ordered by
    query and rank. `len`, indexing and iteration are the array's."""

    def __init__(self, array: NDArray[Any], database: Database) -> None:
        self.array = array
        self._database = database

    def __len__(self) -> int:
        return len(self.array)

    def __getitem__(self, item: Any) -> Any:
        return self.array[item]

    def __iter__(self) -> Iterator[Any]:
        return iter(self.array)

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> NDArray[Any]:
        return np.array(self.array, dtype, copy=bool(copy))

    def __repr__(self) -> str:
        return f"<korvex.Hits, {self.array!r}>"

    def to_pandas(self) -> Any:
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

    def __init__(self, path: Path, memory: str = "mapped") -> None:
        numbers = {"mapped": 1, "memory": 2, "cuda": 3}
        if memory not in numbers:
            raise ValueError(f"memory is one of {', '.join(numbers)}, not {memory!r}")
        self._arguments = (os.fspath(path), memory)
        self._core = _core.Database(name_of(path), numbers[memory])
        self._molecules: MoleculeFile | None = None
        self._is_searched = False

    def __reduce__(self) -> tuple[Any, ...]:
        return Database, self._arguments

    def __len__(self) -> int:
        return len(self._core)

    def __getitem__(self, index: int) -> Fingerprint:
        return self._core[index]

    def __iter__(self) -> Iterator[Fingerprint]:
        return map(self._core.__getitem__, range(len(self)))

    def __repr__(self) -> str:
        return f"<korvex.Database {self.path!r}, {len(self)} records, {self.memory}>"

    @property
    def path(self) -> str:
        return os.fsdecode(self._core.path)

    @property
    def memory(self) -> str:
        """"memory-mapped", "in-memory" or "cuda"; without a GPU "memory-mapped" for the last."""
        return self._core.memory_name

    @property
    def type(self) -> Type:
        return self._core.type

    def _queries(self, query: Any) -> list[Fingerprint]:
        def made(one: Any) -> Fingerprint:
            return one if isinstance(one, Fingerprint) else _core.make_one(one, self.type)

        if isinstance(query, Fingerprint) or is_one(query):
            return [made(query)]
        queries = []
        for one in query:
            try:
                queries.append(made(one))
            except (Error, TypeError) as error:
                raise error.__class__(f"query {len(queries)}: {error}") from None
        return queries

    def search(self, query: Any, k: int = 10, cutoff: float | None = None,
               measure: str = "tanimoto", alpha: float = 0.95, beta: float = 0.05,
               descending: bool = True, threads: int = 0) -> Hits:
        """The k best records for each query, 0 for all that score more than 0.

        query: a molecule or a Fingerprint of this type, or an iterable of these.
        cutoff: only scores above it, or below it if not `descending`.
        Returns Hits with the fields query (its number), index (of the record) and score.
        """
        return Hits(self._core.search(self._queries(query), count_of("k", k), cutoff, measure,
                                      alpha, beta, descending, count_of("threads", threads)), self)

    def scores(self, query: Any, measure: str = "tanimoto", alpha: float = 0.95,
               beta: float = 0.05) -> NDArray[np.float64]:
        """The scores of all records for one query, in their order: an array of float64."""
        queries = self._queries(query)
        if len(queries) != 1:
            raise ValueError(f"{len(queries)} queries; scores() takes one")
        return self._core.scores(queries[0], measure, alpha, beta)

    def neighbors(self, k: int = 10, cutoff: float | None = None, measure: str = "tanimoto",
                  alpha: float = 0.95, beta: float = 0.05, progress: Progress = None) -> Hits:
        """The k nearest other records of each record, 0 for all, with scores not below the cutoff.

        progress: a function of count and total, or whether a bar is drawn on standard error; by
        default if that is a terminal or a notebook.
        Returns Hits with the fields record, index and score. The time grows with the square of the
        number of records. Ctrl-C ends it.
        """
        with shown(progress, "pairs") as show:
            return Hits(self._core.neighbors(count_of("k", k), cutoff, measure, alpha, beta,
                                             show), self)

    def histogram(self, bins: int = 20, measure: str = "tanimoto", alpha: float = 0.95,
                  beta: float = 0.05, threads: int = 0, progress: Progress = None
                  ) -> tuple[NDArray[np.uint64], NDArray[np.float64]]:
        """How the scores of all pairs of records are distributed: (counts, edges), as of
        numpy.histogram. Time and progress are as of neighbors()."""
        with shown(progress, "pairs") as show:
            return self._core.histogram(count_of("bins", bins, 1), measure, alpha, beta,
                                        count_of("threads", threads), show)

    def variogram(
            self, values: Iterable[float], bins: int = 20, measure: str = "tanimoto",
            progress: Progress = None
    ) -> tuple[NDArray[np.float64], NDArray[np.uint64], NDArray[np.float64]]:
        """The semivariance of `values`, one for each record, by the distance of the records, 1 less
        their score: (semivariances, counts, edges). Time and progress are as of neighbors()."""
        with shown(progress, "pairs") as show:
            return self._core.variogram([float(v) for v in values], count_of("bins", bins, 1),
                                        measure, show)

    def _open_molecules(self) -> MoleculeFile | None:
        if self._is_searched:
            return self._molecules
        name = os.fsdecode(self._core.molecule_file)
        folder = os.path.dirname(self.path)
        for path in (name, os.path.join(folder, name),
                     os.path.join(folder, os.path.basename(name))):
            if os.path.isfile(path):
                molecules = read(path)
                if len(molecules) == len(self):
                    self._molecules, self._is_searched = molecules, True
                    return molecules
        warnings.warn(f"the molecule file {name!r} isn't there, or has changed; titles and SMILES "
                      "are empty", KorvexWarning, stacklevel=3)
        self._is_searched = True
        return None

    def title(self, index: int) -> str:
        """The title of a record, from the molecule file; empty if that isn't there."""
        molecules = self._open_molecules()
        return molecules.title(index) if molecules else ""

    def smiles(self, index: int) -> str:
        """The SMILES of a record, likewise."""
        molecules = self._open_molecules()
        return molecules.smiles(index) if molecules else ""


def open(path: Path, memory: str = "mapped") -> Database:
    """Opens a database file.

    memory: "mapped" reads it through the page cache, "memory" loads and checks all of it, "cuda"
    copies it to a GPU (and is "mapped", with a warning, where there is none).
    """
    return Database(path, memory)


def read(path: Path, format: str = "", smiles_column: str = "",
         title_column: str = "") -> MoleculeFile:
    """Opens a molecule file (.smi, .sdf, .mol, .csv, .tsv, also .gz): a sequence of Molecules,
    each of which is read when it is asked for.

    format: such as "csv", where the name doesn't say it. The columns are those of a table; by
    default SMILES and name.
    """
    return MoleculeFile(name_of(path), format, smiles_column, title_column)


def _line(mol: Mol) -> str:
    """A line for a molecule, also for a text that is empty or has line feeds, and for one that
    can't be read."""
    if not isinstance(mol, str):
        try:
            mol = _core.Molecule(mol).smiles
        except Error:
            return "?\n"
    return f"{mol.encode(errors='replace').decode() if mol.split() == [mol] else '?'}\n"


_partial_files = itertools.count()


def create(molecules: Path | MoleculeFile | Iterable[Mol], out: Path, type: str | Type = "path",
           threads: int = 0, progress: Progress = None) -> Database:
    """Makes a database file, and opens it. A file of this name is replaced at the end.

    molecules: a molecule file, by name or as read() opens it, or an iterable of molecules, whose
    records then have no titles. A molecule that can't be read gets a record without bits; a warning
    lists them.
    progress: a function of count and total, or whether a bar is drawn on standard error; by default
    if that is a terminal or a notebook. Ctrl-C ends the run, and leaves nothing behind.
    """
    if isinstance(molecules, (str, os.PathLike)):
        molecules = read(molecules)
    if isinstance(molecules, MoleculeFile):
        name = molecules.path
    else:
        name = "-"
        molecules = MoleculeFile.of_lines("".join(map(_line, molecules)))
    target = os.path.realpath(os.fsdecode(out))
    if not os.path.isdir(os.path.dirname(target)):
        raise Error(f"{target} can't be written: there is no such folder")
    if os.path.exists(target) and not os.path.isfile(target):
        raise Error(f"{target} can't be written: it is no regular file")
    partial = os.path.join(
        os.path.dirname(target),
        f".part{os.getpid()}-{next(_partial_files)}{os.path.splitext(target)[1]}")
    try:
        with shown(progress, "molecules") as show:
            _core.create(name_of(partial), molecules, os.fsencode(name), type_of(type),
                         count_of("threads", threads), show)
        if os.path.exists(target):
            shutil.copymode(target, partial)
        os.replace(partial, target)
    finally:
        if os.path.exists(partial):
            os.unlink(partial)
    return open(out)
