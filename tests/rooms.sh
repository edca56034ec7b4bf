#!/usr/bin/env bash
# Keeps the arrows between the rooms: apps -> korvex -> contract <- platform.
set -euo pipefail
cd "$1"
status=0
# Prints the project includes of a room that lie outside the rooms allowed to it.
check() {
  local room=$1 allowed=$2 found
  found=$(grep -rnE '^#include "' "$room" --include='*.h' --include='*.cpp' |
    grep -vE "#include \"($allowed)" || true)
  [[ -z $found ]] || { echo "$room may not include:"; echo "$found"; status=1; }
}
check contract 'contract/'
check platform 'contract/|platform/'
check korvex 'contract/|korvex/'
check apps 'contract/|korvex/|apps/'
if grep -rnE '#include "korvex/.*_(local|private)\.h"' apps; then
  echo "apps may include public headers only"
  status=1
fi
if grep -rn ZQ_EXPORT contract korvex platform --include='*_local.h' --include='*_private.h'; then
  echo "private headers export nothing"
  status=1
fi
exit $status
