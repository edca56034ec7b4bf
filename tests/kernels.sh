#!/usr/bin/env bash
# The compiled kernels have an entry for each kernel, are read by the drivers of all usable devices,
# and round as a processor does: no fused multiply-adds, none that a driver may make (of operations
# without a rounding mode), and no approximate operations.
set -euo pipefail
ptx=$1 source=$2
status=0
entries=$(grep -oP '\.visible \.entry \K\w+' "$ptx" | sort)
kernels=$(grep -oP '^  KERNEL\(\K\w+' "$source/platform/nubrel/kernels/geometry_local.h" | sort)
[[ -n $kernels && $entries == "$kernels" ]] || { echo "kernels:" $kernels "entries:" $entries; status=1; }
grep -q '^\.version 6\.0$' "$ptx" && grep -q '^\.target sm_70$' "$ptx" ||
  { grep -E '^\.(version|target)' "$ptx"; status=1; }
if grep -nE '\bfma\.|\bmad\.r|\b(add|sub|mul)\.f|\.approx|\.full|\.ftz' "$ptx"; then status=1; fi
exit $status
