#!/usr/bin/env bash
# The main job on a fresh Debian 12: installs what the build needs, builds, makes a fingerprint
# database of a molecule file and prints the ten best hits of a query.
#
#   ./run.sh                 the sample library, data/drugs.smi, against aspirin
#   ./run.sh FILE QUERY      your molecules (.smi .sdf .mol .csv, also .gz) against a SMILES or a file
set -euo pipefail
project=$(cd "$(dirname "$0")" && pwd)

case $# in
  0) molecules=$project/data/drugs.smi query='CC(=O)Oc1ccccc1C(=O)O' ;;
  2) molecules=$1 query=$2 ;;
  *) echo "usage: ./run.sh [FILE QUERY]" >&2; exit 2 ;;
esac
[[ -f $molecules ]] || { echo "run.sh: no molecule file '$molecules'" >&2; exit 1; }

# The build runs in the project's folder, the program where the caller stands.
(cd "$project" && . ./setup.sh && build_release korvex_program && build_python)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
program=$project/build/release/bin/korvex
echo "+ korvex create '$molecules' molecules.fpbin" >&2
"$program" create "$molecules" "$work/molecules.fpbin"
echo "+ korvex search molecules.fpbin '$query' -limit 10: query, rank, score, index, name, SMILES" >&2
"$program" search "$work/molecules.fpbin" "$query" -limit 10 -molecules "$molecules"
if [[ -d $project/build/release/python/korvex ]]; then
  echo "+ from Python: PYTHONPATH=$project/build/release/python python3 -c 'import korvex; help(korvex)'" >&2
fi
