#!/usr/bin/env bash
# The main job on a fresh Debian 12: installs what the build needs, builds, makes a fingerprint
# database of a molecule file and prints the ten best hits of a query.
#
#   ./run.sh                 the sample library, data/drugs.smi, against aspirin
#   ./run.sh FILE QUERY      your molecules (.smi .sdf .mol, also .gz) against a SMILES or a file
set -euo pipefail
cd_from=$PWD
cd "$(dirname "$0")"

case $# in
  0) molecules=$PWD/data/drugs.smi query='CC(=O)Oc1ccccc1C(=O)O' ;;
  2) molecules=$(realpath "$cd_from/$1" 2>/dev/null || true) query=$2
     [[ $1 == /* ]] && molecules=$1
     # A query that names a file is meant from where the caller stands.
     [[ $2 != /* && -f $cd_from/$2 ]] && query=$cd_from/$2 ;;
  *) echo "usage: ./run.sh [FILE QUERY]" >&2; exit 2 ;;
esac
if [[ ! -f $molecules ]]; then
  echo "run.sh: no molecule file '${1:-}'" >&2
  exit 1
fi

. ./setup.sh
build_release korvex_program

database=$(mktemp -d)/molecules.fpbin
trap 'rm -rf "$(dirname "$database")"' EXIT
program=build/release/bin/korvex
echo "+ korvex create $molecules" >&2
$program create "$molecules" "$database"
echo "+ korvex search '$query': query, rank, score, index, name, SMILES" >&2
$program search "$database" "$query" -limit 10
