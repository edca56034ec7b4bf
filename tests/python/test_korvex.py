"""The Python package, run by pytest against the built module."""

import copy
import math
import multiprocessing
import os
import pickle
import re
import signal
import subprocess
import sys
import threading
import warnings

import numpy as np
import pytest

import korvex

SMILES = ["CCO", "CC(=O)Oc1ccccc1C(=O)O", "Cn1cnc2c1c(=O)n(C)c(=O)n2C", "c1ccccc1", "CCN", "C[C@H](N)C(=O)O",
          "CC(C)Cc1ccc(cc1)C(C)C(=O)O", "O=C(O)c1ccccc1O"] * 20


@pytest.fixture(scope="module")
def database(tmp_path_factory):
    folder = tmp_path_factory.mktemp("db")
    (folder / "mols.smi").write_text("".join(f"{s} name {i}\n" for i, s in enumerate(SMILES)))
    return korvex.create(folder / "mols.smi", folder / "mols.fpbin", "circular")


def test_one_molecule():
    fp = korvex.fingerprint("CCO", "path")
    words = fp.to_numpy()
    bits = [64 * w + b for w in range(len(words)) for b in range(64) if int(words[w]) >> b & 1]
    assert list(fp.bits()) == bits and fp.count == len(bits)
    assert fp.hex() == words.tobytes().hex()
    assert fp.num_bits == 4096 and fp.text is None
    assert korvex.Fingerprint.from_numpy(words, fp.type) == fp
    assert korvex.type(fp.type.string) == fp.type == korvex.type("PATH")
    lingo = korvex.fingerprint("CCO", "lingo")
    assert lingo.text == "CCO" and lingo.type.is_text
    for value in (fp, lingo, fp.type):
        for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
            assert pickle.loads(pickle.dumps(value, protocol)) == value == copy.deepcopy(value)
        assert value != 1 and value is not None and value in (None, value)
        assert hash(copy.copy(value)) == hash(value)


@pytest.mark.parametrize("kind", ["path", "circular", "tree", "maccs166", "lingo", "uhcircular"])
def test_many_molecules_on_any_number_of_threads(kind):
    bad = SMILES[:70] + ["C1CC", "\ud800"] + SMILES[70:]
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        made, mask = korvex.fingerprint(bad, kind, threads=2, return_mask=True)
    assert list(np.flatnonzero(~mask)) == [70, 71]
    assert len(caught) == 1 and issubclass(caught[0].category, korvex.KorvexWarning)
    assert str(caught[0].message).startswith("2 of 162 molecules")
    for i in (0, 69, 72, 161):
        one = korvex.fingerprint(bad[i], kind)
        if one.type.is_text:
            assert made[i] == one.text
        else:
            assert made.dtype == np.uint64 and (made[i] == one.to_numpy()).all()
    assert not any(made[70]) if isinstance(made, np.ndarray) else made[70] == ""


def test_measures():
    a, b = korvex.fingerprint("CCO"), korvex.fingerprint("CCN")
    both = len(set(a.bits()) & set(b.bits()))
    assert korvex.tanimoto(a, b) == pytest.approx(both / (a.count + b.count - both))
    assert korvex.dice(a, b) == pytest.approx(2 * both / (a.count + b.count))
    assert korvex.cosine(a, b) == pytest.approx(both / math.sqrt(a.count * b.count))
    assert korvex.tversky(a, b, 1, 1) == pytest.approx(korvex.tanimoto(a, b))
    assert korvex.euclid(a, b) > 0.9 and korvex.manhattan(a, b) < 0.1
    with pytest.raises(korvex.Error, match="different types"):
        korvex.tanimoto(a, korvex.fingerprint("CCO", "tree"))


def test_searches(database):
    assert len(database) == 160 and database.memory == "memory-mapped"
    assert database[-1] == korvex.fingerprint(SMILES[-1], "circular")
    scores = database.scores(SMILES[1])
    expected = [korvex.tanimoto(database[1], database[i]) for i in range(160)]
    assert scores == pytest.approx(expected)
    hits = database.search([SMILES[1], database[2]], k=25)
    assert hits.array.dtype.names == ("query", "index", "score") and len(hits) == 50
    for query in (0, 1):
        found = hits[hits["query"] == query]["score"]
        all_scores = database.scores(SMILES[1 + query])
        assert list(found) == sorted(all_scores, reverse=True)[:25]
    assert (database.search(SMILES[0], k=0, cutoff=0.9)["index"] % 8 == 0).all()
    assert database.title(3) == "name 3" and database.smiles(3) == "c1ccccc1"

    near = database.neighbors(k=3, cutoff=0.5)
    assert (near["record"] != near["index"]).all() and (near["score"] >= 0.5).all()
    assert (np.bincount(near["record"].astype(int)) <= 3).all()
    counts, edges = database.histogram(bins=7)
    assert counts.sum() == 160 * 159 // 2 and len(edges) == 8
    semivariance, counts, edges = database.variogram(np.arange(160) % 8, bins=5)
    assert semivariance[0] == 0 and counts.sum() == 160 * 159 // 2


def test_a_database_of_an_iterable(database, tmp_path):
    made = korvex.create((s for s in SMILES), tmp_path / "made.fpbin", "circular")
    assert [made[i] for i in range(160)] == [database[i] for i in range(160)]
    with pytest.warns(korvex.KorvexWarning, match="record 2"):
        made = korvex.create(["CCO", "C C\nC", "CCN"], tmp_path / "made.fpbin", "circular")
    assert [made[i].count > 0 for i in range(3)] == [True, False, True]
    with pytest.warns(korvex.KorvexWarning, match="isn't there"):
        assert made.title(0) == ""


def test_databases_are_opened_again_elsewhere(database):
    again = pickle.loads(pickle.dumps(database))
    assert again[5] == database[5]
    with multiprocessing.get_context("spawn").Pool(2) as pool:
        assert pool.map(database.__getitem__, [1, 2]) == [database[1], database[2]]
    threads = [threading.Thread(target=database.search, args=(SMILES[:9],)) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()


def test_messages_are_of_the_call(database, tmp_path):
    def create():
        for _ in range(30):
            korvex.create(["CCO", "C1CC"] * 50, tmp_path / "bad.fpbin", threads=2)

    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        thread = threading.Thread(target=create)
        thread.start()
        while thread.is_alive():
            database.histogram()  # raises what is reported
        thread.join()
    assert len(caught) == 30


def test_long_calls_show_progress_and_stop(database, tmp_path):
    many = korvex.create(SMILES * 250, tmp_path / "many.fpbin", "circular")
    out = tmp_path / "out.fpbin"
    out.write_bytes(b"old")
    calls = [lambda progress: korvex.create(SMILES * 250, out, threads=1, progress=progress),
             lambda progress: many.neighbors(k=2, progress=progress),
             lambda progress: many.histogram(threads=1, progress=progress),
             lambda progress: many.variogram(range(len(many)), progress=progress)]
    for call in calls:
        seen = []

        def interrupt(count, total):
            if count > 0:
                seen.append((count, total))
                signal.raise_signal(signal.SIGINT)

        with pytest.raises(KeyboardInterrupt):
            call(interrupt)
        assert len(seen) == 1 and 0 < seen[0][0] < seen[0][1]
    assert out.read_bytes() == b"old" and len(os.listdir(tmp_path)) == 2
    seen = []
    many.histogram(progress=lambda *args: seen.append(args))
    assert seen == sorted(seen) and seen[-1] == (40000 * 39999 // 2,) * 2
    run = subprocess.run([sys.executable, "-c", "import sys, korvex\n"
                          "korvex.open(sys.argv[1]).histogram(progress=True)", database.path],
                         capture_output=True, text=True)
    assert re.search(r"\[#{30}\] 12720/12720 pairs, \d+/s, 0 s left", run.stderr)


@pytest.mark.filterwarnings("ignore::korvex.KorvexWarning")
def test_a_fork_during_searches(database):
    stop = threading.Event()

    def search():
        while not stop.is_set():
            database.search(SMILES[:50], threads=2)
            korvex.fingerprint(["C1CC"] * 2000, threads=2)
            with pytest.raises(korvex.Error):
                korvex.fingerprint("C1CC")

    threads = [threading.Thread(target=search) for _ in range(2)]
    for thread in threads:
        thread.start()
    try:
        for _ in range(50):
            child = os.fork()
            if child == 0:
                signal.alarm(20)
                try:
                    right = database.search(SMILES[1], k=1)["score"][0] == 1.0
                    korvex.fingerprint("C1CC")
                except korvex.Error:
                    os._exit(0 if right else 1)
                os._exit(2)
            assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    finally:
        stop.set()
        for thread in threads:
            thread.join()


def test_bad_arguments(database, tmp_path):
    for call, error, text in [
            (lambda: korvex.fingerprint("C1CC"), korvex.Error, "ring closure 1 left open"),
            (lambda: korvex.fingerprint([5]), TypeError, "item 0 is a int; a molecule is"),
            (lambda: korvex.fingerprint("CCO", "Path,ver=2.0.0,size=8"), korvex.Error, "size|Path"),
            (lambda: korvex.type("nonsense"), korvex.Error, "nonsense"),
            (lambda: korvex.open(tmp_path / "no.fpbin"), korvex.Error, "cannot open"),
            (lambda: korvex.open(database.path, memory="disk"), ValueError, "mapped, memory, cuda"),
            (lambda: korvex.create(tmp_path / "no.smi", tmp_path / "no.fpbin"), korvex.Error, "no.smi"),
            (lambda: korvex.Molecule("C1CC"), korvex.Error, "ring closure 1 left open"),
            (lambda: korvex.Smarts("C").matches(None), TypeError, "argument is a NoneType"),
            (lambda: database[160], IndexError, "160 records"),
            (lambda: database.search(korvex.fingerprint("CCO", "tree")), ValueError, "query's type"),
            (lambda: database.search("CCO", measure="best"), ValueError, "tanimoto, cosine"),
            (lambda: database.search("CCO", alpha=2), ValueError, "within 0 and 1"),
            (lambda: korvex.tversky(database[0], database[1], math.nan), ValueError, "within 0 and 1"),
            (lambda: korvex.explain("C", "C", alpha=-1), ValueError, "within 0 and 1"),
            (lambda: database.search(["CCO", "C1CC"], k=-1), korvex.Error, "query 1: .*ring closure 1"),
            (lambda: database.search(["CCO"], k=-1), ValueError, "k is -1; it is within 0 and 4294967295"),
            (lambda: database.neighbors(cutoff=math.nan), ValueError, "cutoff is not a number"),
            (lambda: database.scores(["CCO", "CCN"]), ValueError, "2 queries; scores"),
            (lambda: database.histogram(bins=0), ValueError, "bins is 0; it is within 1"),
            (lambda: korvex.draw("CCO", atoms=[3]), IndexError, "atom 3 of 3"),
            (lambda: korvex.draw("CCO", weights=[1]), ValueError, "1 weights for 3 atoms"),
            (lambda: korvex.open(database.path + "\0"), ValueError, "no NUL"),
            (lambda: korvex.create(SMILES, tmp_path / "no/a.fpbin"), korvex.Error, "no/a.fpbin .* no such folder"),
            (lambda: database.variogram([1.0, 2.0]), korvex.Error, "2 values for 160"),
            (lambda: korvex.Fingerprint.from_numpy(np.zeros(3, np.uint64), korvex.type("path")),
             ValueError, "64 words"),
            (lambda: korvex.Fingerprint.from_numpy(np.zeros(64), korvex.type("path")), TypeError, "")]:
        with pytest.raises(error, match=text):
            call()
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        on_gpu = korvex.open(database.path, memory="cuda")
    assert len(on_gpu) == 160
    assert on_gpu.memory == "cuda" or "no CUDA-enabled device" in str(caught[0].message)


def test_nothing_is_printed(tmp_path):
    code = "import korvex; korvex.fingerprint(['C1CC', 'CCO'])\n" \
           "try: korvex.open('/no/such')\nexcept korvex.Error: pass"
    at_exit = "import korvex, sys, threading, time\nsys.stderr.close()\n" \
              "def work():\n  while True: korvex.fingerprint(['c1ccccc1CCO'] * 20000)\n" \
              f"database = korvex.create(['CCO', 'CCN'] * 40000, {str(tmp_path / 'a.fpbin')!r})\n" \
              "for target in (work, database.histogram):\n" \
              "  threading.Thread(target=target, daemon=True).start()\ntime.sleep(0.3)"
    for script in (code, at_exit):
        run = subprocess.run([sys.executable, "-W", "ignore", "-c", script], capture_output=True)
        assert (run.returncode, run.stdout, run.stderr) == (0, b"", b"")


def test_names_and_titles_that_are_no_utf8(tmp_path):
    path = os.path.join(os.fsencode(tmp_path), b"\xe9.smi")
    with open(path, "wb") as file:
        file.write(b"CCO caf\xe9\n\xe9 b\n")
    with pytest.warns(korvex.KorvexWarning, match='record 2 of .*\ufffd.smi: SMILES'):
        database = korvex.create(os.fsdecode(path), tmp_path / "a.fpbin")
    assert korvex.read(path)[0].title == database.title(0) == "caf\ufffd"


def test_molecules_of_files(tmp_path):
    rows = "".join(f"{i},{s}\n" for i, s in enumerate(SMILES[:100]))
    (tmp_path / "a.csv").write_text("code,structure\n" + rows + "bad,C1CC\n")
    file = korvex.read(tmp_path / "a.csv", smiles_column="structure", title_column="code")
    assert len(file) == 101 and file[-2].title == "99" and file.smiles(1) == SMILES[1]
    with pytest.raises(korvex.Error, match="record 101 .*line 102"):
        file[100]
    with pytest.raises(IndexError, match="101 records"):
        file[101]
    with pytest.warns(korvex.KorvexWarning, match="1 of 101 .*\n.*line 102"):
        made, mask = korvex.fingerprint(file, "tree", return_mask=True)
    assert list(np.flatnonzero(~mask)) == [100]
    mols = [file[i] for i in range(100)]
    assert (made[:100] == korvex.fingerprint(mols, "tree")).all()
    assert (made[:100] == korvex.fingerprint(SMILES[:100], "tree")).all()
    with pytest.warns(korvex.KorvexWarning, match="line 102"):
        database = korvex.create(file, tmp_path / "a.fpbin", "tree")
    assert [database[i] for i in (0, 99)] == [korvex.fingerprint(m, "tree") for m in (mols[0], mols[99])]

    mol = pickle.loads(pickle.dumps(korvex.Molecule("F/C=C/[C@H](N)[13CH2][O-]", title="a")))
    assert (mol.title, mol.num_atoms, mol.num_bonds) == ("a", 7, 6)
    assert korvex.canonical_smiles(mol) == korvex.canonical_smiles("F/C=C/[C@H](N)[13CH2][O-]")
    again = pickle.loads(pickle.dumps(korvex.Molecule("[NH3]->[Cu]c1cccnc1")))
    assert again.smiles == korvex.Molecule("[NH3]->[Cu]c1cccnc1").smiles and again.num_bonds == 8
    assert korvex.fingerprint(again) == korvex.fingerprint("[NH3]->[Cu]c1cccnc1")


# Each has something that RDKit's record keeps in a way of its own.
RDKIT_SMILES = [
    "C[C@H](N)C(=O)O", "[C@@H](N)(C)F", "C[C@]12CC1CO2", "C[S@](=O)CC", "C[S@@+]([O-])c1ccccc1", "C/C(F)=C(Cl)\\C",
    "F/C=C/C=C\\Cl", "CC/C=N/O", "C1CCC/C=C/CC1", "c1cc[nH]c1", "Cn1cccc1", "O=c1cccc[nH]1", "c1ccsc1", "c1ccc2c(c1)[nH]c1ccccc12",
    "[O-][n+]1ccccc1", "[13CH3][CH2]", "[2H]C([2H])Cl", "[NH4+].[Cl-]", "[CH3:255][CH2:70000]O", "*c1ccccc1", "CC#N", "[Fe+2]<-N",
    "C" * 254 + "O", "C" * 255 + "[C@H](F)Cl", "OC1=CC=CC=C1", "CS(=O)(=O)N", "C[Si](C)(C)C", "B(O)O", "[Na]", "[SiH4]", "C[P@](CC)CCC"]


def test_rdkit_molecules(database, monkeypatch):
    Chem = pytest.importorskip("rdkit.Chem")
    mols = [Chem.MolFromSmiles(s) for s in SMILES[:8] + RDKIT_SMILES]
    mols += [Chem.AddHs(m) for m in mols[:20]]
    # The record isn't taken, but atoms and bonds one by one: edited, not sanitized, a query.
    stale = Chem.MolFromSmiles("CCO")
    stale.GetAtomWithIdx(0).SetAtomicNum(7)
    added, joined = (Chem.RWMol(Chem.MolFromSmiles(s)) for s in ("c1ccccc1", "C1CCCO1"))
    added.AddBond(added.AddAtom(Chem.Atom(9)), 0, Chem.BondType.SINGLE)
    joined.GetBondWithIdx(1).SetBondType(Chem.BondType.AROMATIC)
    edited = Chem.RWMol(Chem.MolFromSmiles("C[C@H](N)O"))
    edited.AddBond(edited.AddAtom(Chem.Atom(9)), 0, Chem.BondType.SINGLE)
    mols += [stale, added, joined, edited, Chem.MolFromSmiles("C[C@H](F)/C=C/c1ccccc1", sanitize=False),
             Chem.MolFromSmiles("C[C@H](C)C", sanitize=False), Chem.MolFromSmarts("[#6]-[#8]")]
    for mol in mols:
        text = Chem.MolToSmiles(mol)
        assert korvex.canonical_smiles(mol) == korvex.canonical_smiles(text), text
    texts = [Chem.MolToSmiles(m) for m in mols]
    for kind in ("path", "circular", "maccs166"):
        assert (korvex.fingerprint(mols, kind) == korvex.fingerprint(texts, kind)).all()
    assert database.search(mols[1], k=1)["score"][0] == 1.0
    assert korvex.Molecule(mols[1]).num_atoms == 13
    with pytest.warns(korvex.KorvexWarning, match="1 of 2 .*\nmolecule 1: bond 0 has no order"):
        korvex.fingerprint(["C", Chem.MolFromSmarts("C~C")])
    broken = Chem.RWMol(mols[0])
    broken.GetBondWithIdx(0).SetBondType(Chem.BondType.OTHER)
    mapped = Chem.RWMol(stale)
    mapped.GetAtomWithIdx(0).SetAtomMapNum(-5)
    with pytest.warns(korvex.KorvexWarning, match="2 of 3 molecules have"):
        korvex.fingerprint([broken, mapped, "C"])
    with pytest.raises(korvex.Error, match="atom 0 is aromatic"):
        korvex.fingerprint(Chem.MolFromSmiles("cC", sanitize=False))

    # Records of another version are taken if they look the same and give the same atoms.
    from korvex import _rdkit
    assert _rdkit.are_records_right()
    monkeypatch.setattr(_rdkit, "PROBES", _rdkit.PROBES[:2] + ("[He]~[He]",))
    assert not _rdkit.are_records_right()
    record = bytearray(mols[1].ToBinary(0))
    assert all(korvex._core.rdkit_graph(bytes(record[:n])) is None for n in range(20, 150))

    from rdkit import DataStructs
    fp = korvex.fingerprint(mols[1], "maccs166")
    bits = korvex.to_rdkit(fp)
    assert list(bits.GetOnBits()) == list(fp.bits()) and len(bits) == 166
    assert korvex.from_rdkit(bits, "maccs166") == fp
    with pytest.raises(ValueError, match="8 bits; .* 4096"):
        korvex.from_rdkit(DataStructs.ExplicitBitVect(8), "path")
    with pytest.raises(ValueError, match="no bits"):
        korvex.to_rdkit(korvex.fingerprint("CCO", "lingo"))

    # Indices are those of the caller's molecule, whatever the order of its atoms.
    drug = Chem.RenumberAtoms(mols[1], [12, 3, 7, 0, 9, 11, 5, 1, 2, 10, 4, 6, 8])
    plain, mapped = (korvex.explain(m, "OC(=O)c1ccccc1O") for m in (SMILES[1], drug))
    assert mapped.score == plain.score
    atoms = drug.GetSubstructMatch(mols[1])  # by atom of the text
    assert sorted(atoms[i] for i in plain.shared_atoms[0]) == sorted(mapped.shared_atoms[0])
    assert {drug.GetBondBetweenAtoms(*(atoms[i] for i in ends)).GetIdx()
            for ends in ((5, 6), (8, 9))} <= set(mapped.shared_bonds[0])
    assert [plain.weights[0][i] for i in range(13)] == pytest.approx(
        [mapped.weights[0][atoms[i]] for i in range(13)])
    assert set(korvex.Smarts("C(=O)O").matches(drug)) == set(
        drug.GetSubstructMatches(Chem.MolFromSmarts("C(=O)O")))


def test_explanations():
    found = korvex.explain("CC(=O)Oc1ccccc1C(=O)O", "OC(=O)c1ccccc1O", "circular")
    a, b = found.fingerprints
    assert found.score == pytest.approx(korvex.tanimoto(a, b))
    assert found.counts == (a.count, b.count, len(set(a.bits()) & set(b.bits())))
    text, atoms_a, bonds_a, atoms_b, bonds_b = found.fragments[0]
    assert len(atoms_a) == len(atoms_b) and len(bonds_a) == len(bonds_b)
    assert set(atoms_a) <= set(found.shared_atoms[0])
    assert len(found.weights[0]) == 13 and 0 < found.covered_atoms[0] <= 1
    svg = found.draw(0)
    assert svg.count('class="shade"') > 5 and svg._repr_svg_() == svg
    with pytest.raises(korvex.Error, match="C1CC|ring closure"):
        korvex.explain("CCO", "C1CC")


def test_other_tools():
    assert korvex.canonical_smiles("OCC") == korvex.canonical_smiles("CCO")
    assert 'data-atom="2"' in korvex.draw("CCO", atoms=[2], title="ethanol")
    pattern = pickle.loads(pickle.dumps(korvex.Smarts("[OX2H]c")))
    assert pattern.matches("OC(=O)c1ccccc1O") == [(9, 8)] and pattern.is_in("Oc1ccccc1")
    assert not pattern.is_in("CCO")
    a, b = korvex.vsepr("C[C@H](N)C(=O)O"), korvex.vsepr("C[C@@H](N)C(=O)O")
    short = korvex.vsepr("C[C@H](N)C(=O)O", max_length=3, stereo_aware=False)
    for fp in (a, b, short):
        assert pickle.loads(pickle.dumps(fp)).paths() == copy.copy(fp).paths() == fp.paths()
    assert a.tanimoto(a) == 1.0 > a.tanimoto(b) > 0
    assert korvex.vsepr("C[C@H](N)C(=O)O", stereo_aware=False).tanimoto(
        korvex.vsepr("C[C@@H](N)C(=O)O", stereo_aware=False)) == 1.0
    assert sum(weight for _, weight in a.paths()) == pytest.approx(a.volume)
    with pytest.raises(ValueError, match="different lengths"):
        a.tanimoto(korvex.vsepr("CCO", max_length=3))
    with pytest.raises(korvex.Error, match="SMARTS"):
        korvex.Smarts("[")


def test_hits_as_a_frame(database):
    pytest.importorskip("pandas")
    frame = database.search(SMILES[3], k=2).to_pandas()
    assert list(frame.columns) == ["query", "index", "score", "title", "smiles"]
    assert set(frame.smiles) == {"c1ccccc1"}


def test_the_guide_runs(tmp_path, monkeypatch, capsys):
    source = os.environ["KORVEX_SOURCE_DIR"]
    text = open(os.path.join(source, "docs/python.md")).read()
    (tmp_path / "data").symlink_to(os.path.join(source, "data"))
    monkeypatch.chdir(tmp_path)
    scope = {}
    for block in re.findall(r"```python\n(.*?)```", text, re.DOTALL):
        exec(block, scope)
    lines = capsys.readouterr().out.splitlines()
    assert "0.451087" in lines and "(3, 64) uint64" in lines
    assert [line.split(maxsplit=1)[1] for line in lines[4:7]] == [
        "aspirin", "salicylic acid", "methyl salicylate"]


def test_the_tutorial_runs():
    path = os.path.join(os.environ["KORVEX_SOURCE_DIR"], "docs/tutorial.py")
    run = subprocess.run([sys.executable, path], capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    assert "0.385 salicylic acid" in run.stdout and "97461 pairs" in run.stdout


def test_types_are_declared():
    pytest.importorskip("mypy")
    source = os.path.join(os.environ["KORVEX_SOURCE_DIR"], "python/korvex")
    run = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--no-incremental",
                          "--ignore-missing-imports", "--cache-dir=/dev/null", source],
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stdout
