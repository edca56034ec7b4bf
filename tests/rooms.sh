#!/usr/bin/env bash
# Checks the dependencies between folders: apps -> korvex -> contract <- platform. Within
# platform/quarnel: readers, canonical, substructure, depiction -> perception -> molecule, and the
# SMARTS parser may use the readers' error reports.
set -euo pipefail
cd "$1"
status=0
# Prints the project includes of a folder that are outside the folders allowed to it.
check() {
  local room=$1 allowed=$2 found
  found=$(grep -rnE '^#include "' "$room" --include='*.h' --include='*.cpp' --include='*.cu' |
    grep -vE "#include \"($allowed)" || true)
  [[ -z $found ]] || { echo "$room may not include:"; echo "$found"; status=1; }
}
check contract 'contract/'
check platform 'contract/|platform/'
check korvex 'contract/|korvex/'
check apps 'contract/|korvex/|apps/'
check python 'contract/|korvex/|python/'
quarnel='contract/|platform/quarnel/'
check platform/quarnel/molecule "${quarnel}molecule/"
check platform/quarnel/perception "$quarnel(molecule|perception)/"
check platform/quarnel/readers "$quarnel(molecule|perception|readers)/"
check platform/quarnel/canonical "$quarnel(molecule|perception|canonical)/"
check platform/quarnel/depiction "$quarnel(molecule|perception|depiction)/"
check platform/quarnel/substructure "$quarnel(molecule|perception|readers|substructure)/"
if grep -rnE '#include "korvex/.*_(local|private)\.h"' apps python; then
  echo "apps and python may include public headers only"
  status=1
fi
if grep -rnE '#include <(x86|[a-z]+mm)intrin\.h>|#include <(cpuid|arm_neon)\.h>' \
  contract platform korvex apps python tests benchmarks --include='*.h' --include='*.cpp' |
  grep -vE '^[^:]*_(x86|arm)[^/:]*\.(h|cpp):'; then
  echo "headers of one processor stand in files named after it"
  status=1
fi
if grep -rn ZQ_EXPORT contract korvex platform --include='*_local.h' --include='*_private.h'; then
  echo "private headers export nothing"
  status=1
fi
exit $status
