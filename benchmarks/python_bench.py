#!/usr/bin/env python3
"""The Python package against the program, in one run: fingerprints of a SMILES file's molecules, on
one thread and on two, those of RDKit molecules, and searches.

  PYTHONPATH=build/release/python python3 benchmarks/python_bench.py FILE.smi [rounds]
"""

import os
import subprocess
import sys
import tempfile
import time

import korvex

PROGRAM = os.path.join(os.path.dirname(korvex.__file__), "../../bin/korvex")


def best(call, rounds):
    times = []
    for _ in range(rounds):
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return min(times)


def main():
    name, rounds = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 3
    smiles = [line.split()[0] for line in open(name) if line.strip()]
    n = len(smiles)
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "out.fpbin")

        def program(threads):
            subprocess.run([PROGRAM, "create", name, out, "-threads", str(threads)], check=True,
                           stderr=subprocess.DEVNULL)

        base = {t: best(lambda: program(t), rounds) for t in (1, 2)}
        own = {t: best(lambda: korvex.fingerprint(smiles, threads=t), rounds) for t in (1, 2)}
        print(f"{n} molecules, one thread: {n / own[1]:.0f} a second, {base[1] / own[1]:.2f} of the "
              "program's rate (at least 0.90)")
        print(f"two threads: {own[1] / own[2]:.2f} times the rate of one (at least 1.80); the "
              f"program {base[1] / base[2]:.2f}")
        try:
            from rdkit import Chem, RDLogger
            RDLogger.DisableLog("rdApp.*")
        except ImportError:
            print("RDKit isn't there")
        else:
            mols = [m for m in map(Chem.MolFromSmiles, smiles[:5000]) if m]
            texts = [Chem.MolToSmiles(m) for m in mols]
            ratio = (best(lambda: korvex.fingerprint(mols, threads=1), rounds) /
                     best(lambda: korvex.fingerprint(texts, threads=1), rounds))
            print(f"an RDKit molecule costs {ratio:.2f} times its SMILES (at most 2.00)")

        database = korvex.open(out, memory="memory")
        query = database[5]
        core = database._core
        inner = best(lambda: core.scores(query, "tanimoto", 0.95, 0.05), 10 * rounds)
        one = best(lambda: database.search(query, k=10, threads=1), 10 * rounds)
        print(f"a search of {n} records: {1e3 * one:.2f} ms; all scores: {1e3 * inner:.2f} ms")


main()
