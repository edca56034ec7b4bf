# %% [markdown]
# # Similar drugs, from Python
#
# Each cell runs as it is, in a notebook (open this file in JupyterLab or an editor that knows
# `# %%`), or all of them by `PYTHONPATH=build/release/python python3 docs/tutorial.py`. The last
# ones use RDKit and Matplotlib where they are there.

# %%
import pathlib
import tempfile

import numpy as np

import korvex

FOLDER = pathlib.Path(tempfile.mkdtemp())
DRUGS = pathlib.Path(__file__).parents[1] / "data/drugs.smi"

# %% [markdown]
# ## One molecule, many molecules
# A fingerprint is a value with bits and a type. Many at once are a NumPy array.

# %%
aspirin = "CC(=O)Oc1ccccc1C(=O)O"
fp = korvex.fingerprint(aspirin, "circular")
print(fp.count, "of", fp.num_bits, "bits:", fp.bits()[:5], "...")

drugs = korvex.read(DRUGS)
words = korvex.fingerprint(drugs, "circular")
print(len(drugs), "drugs:", words.shape, words.dtype)
print("mean number of bits:", round(float(np.unpackbits(words.view(np.uint8), axis=1).sum(1).mean()), 1))

# %% [markdown]
# ## A database
# Made once, it opens in no time, and is searched on all processors.

# %%
database = korvex.create(DRUGS, FOLDER / "drugs.fpbin", "circular")
for query, index, score in database.search(aspirin, k=4):
    print(f"{score:.3f}", database.title(int(index)), database.smiles(int(index)))

# %% [markdown]
# Many queries share one pass. The hits are a structured array: here, the nearest other drug of each.

# %%
nearest = database.neighbors(k=1)
twins = nearest[np.argsort(-nearest["score"], kind="stable")][:3]
for record, index, score in twins:
    print(f"{score:.3f}", database.title(int(record)), "-", database.title(int(index)))

# %% [markdown]
# ## What two molecules share
# Atoms are those of the molecule that was given. In a notebook the drawing shows itself.

# %%
salicylic_acid = "OC(=O)c1ccccc1O"
shared = korvex.explain(aspirin, salicylic_acid, "circular")
print(f"{shared.score:.3f}:", shared.counts[2], "bits of both;", "shared atoms", shared.shared_atoms[0])
picture = shared.draw(0)
(FOLDER / "aspirin.svg").write_text(picture)
picture

# %% [markdown]
# ## How similar are drugs?

# %%
counts, edges = database.histogram(bins=50)
print(int(counts.sum()), "pairs; half of them below",
      edges[np.searchsorted(np.cumsum(counts), counts.sum() / 2) + 1])

try:
    import matplotlib
    matplotlib.use("Agg")
    from matplotlib import pyplot
except ImportError:
    print("Matplotlib isn't there")
else:
    figure, axes = pyplot.subplots(figsize=(6, 3))
    axes.stairs(counts, edges, fill=True)
    axes.set(xlabel="Tanimoto similarity", ylabel="pairs of drugs", yscale="log")
    figure.savefig(FOLDER / "histogram.png", bbox_inches="tight")

# %% [markdown]
# ## With RDKit
# Its molecules go in as they are, and keep their indices.

# %%
try:
    from rdkit import Chem
except ImportError:
    print("RDKit isn't there")
else:
    mol = Chem.MolFromSmiles(aspirin)
    assert korvex.fingerprint(mol, "circular") == fp
    print("acid at atoms", korvex.Smarts("[CX3](=O)[OX2H]").matches(mol))
    bits = korvex.to_rdkit(fp)
    print(type(bits).__name__, "with", bits.GetNumOnBits(), "bits set")
