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

BIN = os.path.join(os.path.dirname(korvex.__file__), "../../bin")
PROGRAM, SEARCH_TIME = os.path.join(BIN, "korvex"), os.path.join(BIN, "search_time")


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
                           capture_output=True)

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
            records = best(lambda: [m.ToBinary(0) for m in mols], rounds)
            for kind in ("path", "circular", "tree", "maccs166"):
                theirs = best(lambda: korvex.fingerprint(mols, kind, threads=1), rounds)
                base = best(lambda: korvex.fingerprint(texts, kind, threads=1), rounds)
                print(f"an RDKit molecule costs {theirs / base:.2f} times its SMILES, {kind} (at most "
                      f"2.00), of which RDKit's record {records / base:.2f}")

        million = (smiles * (1000000 // n + 1))[:1000000]
        database = korvex.open(korvex.create(million, out).path, memory="memory")
        query = database[5]
        here, there = [], []
        for _ in range(3):  # in turns
            run = subprocess.run([SEARCH_TIME, out, "5", str(10 * rounds)], check=True,
                                 capture_output=True)
            there.append(float(run.stdout))
            here.append(best(lambda: database.search(query, k=10, threads=1), 10 * rounds))
        print(f"a search of {len(database)} records: {1e3 * min(here):.2f} ms, "
              f"{min(here) / min(there):.3f} times that from C++ (at most 1.05)")


main()
