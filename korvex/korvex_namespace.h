#pragma once

/// The tables from names to values shared by type strings, command lines and help texts. Each is
/// built once, on first use; the pointers stay valid until the process exits. Safe from any thread.

#include "contract/bostrel/nspace.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// The hashed kinds: "Path", "Circular", "Tree".
ZQ_EXPORT const ZQNamespaceInterface* ZQGetFPTypeNamespaceInterface();
/// The flags of `ZQFPAtomType`, which combine with "|".
ZQ_EXPORT const ZQNamespaceInterface* ZQGetFPAtomTypeNamespaceInterface();
/// The flags of `ZQFPBondType`, which combine with "|".
ZQ_EXPORT const ZQNamespaceInterface* ZQGetFPBondTypeNamespaceInterface();
/// The measures of `ZQSimMeasure`.
ZQ_EXPORT const ZQNamespaceInterface* ZQGetSimMeasureNamespaceInterface();
/// "memory-mapped", "in-memory", "CUDA". Its own name is "ZQSimMeasure", on which callers rely.
ZQ_EXPORT const ZQNamespaceInterface* ZQGetMemoryTypeNamespaceInterface();

}  // namespace ZQKorvex
