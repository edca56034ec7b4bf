#!/usr/bin/env bash
# The compiled kernels have an entry for each kernel, and round as a processor does: no fused
# multiply-adds and no approximate operations.
set -euo pipefail
ptx=$1 source=$2
status=0
entries=$(grep -oP '\.visible \.entry \K\w+' "$ptx" | sort)
kernels=$(grep -oP '^  KERNEL\(\K\w+' "$source/platform/nubrel/kernels/geometry_local.h" | sort)
[[ -n $kernels && $entries == "$kernels" ]] || { echo "kernels:" $kernels "entries:" $entries; status=1; }
if grep -nE '\bfma\.|\.approx|\.ftz' "$ptx"; then status=1; fi
exit $status
