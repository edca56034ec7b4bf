#!/usr/bin/env bash
# The shared library exports exactly the names declared in the installed headers.
set -euo pipefail
library=$1 source=$2
cd "$source"
status=0
headers=$(find contract korvex -name '*.h' ! -name '*_local.h' ! -name '*_private.h')
exports=$(nm -DC --defined-only "$library" | cut -d' ' -f3-)
# Prints the words on standard input that aren't lines of the given list.
missing_from() { sort -u | comm -23 - <(sort -u <<<"$1"); }

# Each part of an exported name, without template and function arguments.
declared=$(cat $headers | sed 's@//.*@@' | grep -oE '[A-Za-z_][A-Za-z_0-9]*')
names=$(sed -E 's/^(vtable|typeinfo|typeinfo name|VTT) for //; s/\[abi:cxx11\]//g; s/\(.*//
                :again; s/<[^<>]*>//; t again; s/^.* //' <<<"$exports")
unknown=$(tr -s ':~' '\n' <<<"$names" | grep -vE '^operator|^$' | missing_from "$declared")
foreign=$(grep -E '^(std|__gnu_cxx)::' <<<"$names" || true)
[[ -z $unknown$foreign ]] || { echo "exported, not declared:" $unknown $foreign; status=1; }

# Each marked function, variable and class.
marked=$(cat $headers | grep -v '^#' | tr '\n' ' ' | grep -oE 'ZQ_EXPORT [^;{]*[;{(]' | sed -E 's/\(.*//' |
  grep -vE 'ZQ_EXPORT ZQ[A-Za-z]+ (final )?:|\{' | grep -oE '[A-Za-z_0-9]+ *;?$' | tr -d '; ')
absent=$(missing_from "$(tr -s ':~' '\n' <<<"$names")" <<<"$marked")
[[ -z $absent ]] || { echo "marked for export, not exported:" $absent; status=1; }
exit $status
