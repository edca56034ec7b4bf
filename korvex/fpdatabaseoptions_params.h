#pragma once

/// Command-line parameters for fingerprint types and search options: what an application adds to
/// its `ZQInterface`, and the values read back. Bad input warns and gives false or null. One
/// interface belongs to one thread.
///
/// A "Configure" function answers false, after a warning, if the interface has a parameter of one
/// of its names already.

#include <string>

#include "contract/bostrel/interface.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

/// Appends what a namespace holds to a parameter's details: its primitives with their help and,
/// where they combine, a word on how.
ZQ_EXPORT void AddDetails(ZQParameter* parameter, const ZQNamespaceInterface* space);

/// Adds "-fptype", "-numbits", "-mindistance", "-maxdistance", "-atomtype" and "-bondtype", in an
/// interface "fingerprint options", with the values of `type` as defaults. Path, circular and
/// tree types only.
ZQ_EXPORT bool ZQConfigureFingerPrint(ZQInterface& interface, const ZQFPTypeBase* type);
/// Adds the kind of fingerprint alone, straight to the interface.
ZQ_EXPORT bool ZQConfigureFingerPrintType(ZQInterface& interface, unsigned int fptype,
                                          const std::string& name = "-fptype",
                                          const std::string& alias = "-fpt");
/// The type that the parameters of `ZQConfigureFingerPrint` describe, under the kind's current
/// version; null if the least distance is above the greatest or both typings are "None".
ZQ_EXPORT const ZQFPTypeBase* ZQSetupFingerPrint(const ZQInterface& interface);
/// The same for a kind that is given instead of "-fptype", also one that `ZQConfigureFingerPrint`
/// doesn't take. A parameter that isn't set has the default of the kind. One out of the kind's
/// legal range is an error such as "UHCircular: maximum radius 10 is outside 0 to 9", and gives
/// null.
ZQ_EXPORT const ZQFPTypeBase* ZQSetupFingerPrint(const ZQInterface& interface,
                                                 const ZQFPKind& kind);

/// Adds how a fast database is held, one of "memory-mapped" 1, "in-memory" 2 and "CUDA" 3, in an
/// interface "fingerprint database options".
ZQ_EXPORT bool ZQConfigureFPDatabaseMemoryType(ZQInterface& interface, unsigned int memoryType,
                                               const std::string& name = "-memtype",
                                               const std::string& alias = "-m");
/// The memory type that was chosen; 0 if none can be read.
ZQ_EXPORT unsigned int ZQGetFPDatabaseMemoryType(const ZQInterface& interface,
                                                 const std::string& name = "-memtype");

/// Bits of the mask of `ZQConfigureFPDatabaseOptions`.
namespace ZQFPDatabaseOptionsMask {
inline constexpr unsigned int Limit = 1;
inline constexpr unsigned int SimFunc = 2;
inline constexpr unsigned int Cutoff = 4;
}  // namespace ZQFPDatabaseOptionsMask

// One search option each, in an interface "fingerprint database search options".

/// 0 to 100000; 0 means all.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptionsLimit(ZQInterface& interface, unsigned int limit = 10,
                                                 const std::string& name = "-limit",
                                                 const std::string& alias = "-l");
/// A name of `ZQSimMeasure`.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptionsSimFunc(ZQInterface& interface,
                                                   unsigned int simFunc = ZQSimMeasure::Tanimoto,
                                                   const std::string& name = "-simfunc",
                                                   const std::string& alias = "-s");
/// The default is the options' cutoff, none if they have none.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptionsCutoff(ZQInterface& interface,
                                                  const ZQFPDatabaseOptions& options = {},
                                                  const std::string& name = "-cutoff",
                                                  const std::string& alias = "-c");

/// Adds "-limit", "-simfunc", "-cutoff" and "-descending" with defaults from the options.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptions(ZQInterface& interface,
                                            const ZQFPDatabaseOptions& options);
/// Adds those that the mask selects, with the defaults above; "-descending" isn't among them.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptions(ZQInterface& interface, unsigned int mask);
/// Copies each of the four that the interface has and the user set into the options.
ZQ_EXPORT void ZQSetupFPDatabaseOptions(ZQFPDatabaseOptions& options, const ZQInterface& interface);

}  // namespace ZQKorvex
