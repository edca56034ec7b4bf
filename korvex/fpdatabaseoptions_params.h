#pragma once

/// Command-line parameters for fingerprint types and search options: functions that add them to an
/// application's `ZQInterface`, and functions that read the values. Invalid input causes a warning
/// and a false or null result. Not thread safe for one interface.
///
/// A "Configure" function returns false, after a warning, if the interface already has a parameter
/// with one of its names.

#include <string>

#include "contract/bostrel/interface.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

/// Appends a namespace's primitives and their help to a parameter's details, with the way to
/// combine them if they combine.
ZQ_EXPORT void AddDetails(ZQParameter* parameter, const ZQNamespaceInterface* space);

/// Adds "-fptype", "-numbits", "-mindistance", "-maxdistance", "-atomtype" and "-bondtype" in an
/// interface "fingerprint options", with the values of `type` as defaults. Path, circular and tree
/// types only.
ZQ_EXPORT bool ZQConfigureFingerPrint(ZQInterface& interface, const ZQFPTypeBase* type);
/// Adds only the kind of fingerprint, directly to the interface.
ZQ_EXPORT bool ZQConfigureFingerPrintType(ZQInterface& interface, unsigned int fptype,
                                          const std::string& name = "-fptype",
                                          const std::string& alias = "-fpt");
/// The type for the parameters of `ZQConfigureFingerPrint`, with the kind's current version; null
/// if the minimum distance exceeds the maximum or both typings are "None".
ZQ_EXPORT const ZQFPTypeBase* ZQSetupFingerPrint(const ZQInterface& interface);
/// The same with the kind as an argument instead of "-fptype"; all kinds are accepted. A parameter
/// that isn't set has the kind's default. If one is out of the kind's legal range, reports an error
/// such as "UHCircular: maximum radius 10 is outside 0 to 9" and returns null.
ZQ_EXPORT const ZQFPTypeBase* ZQSetupFingerPrint(const ZQInterface& interface,
                                                 const ZQFPKind& kind);

/// Adds the memory type of a fast database, one of "memory-mapped" 1, "in-memory" 2 and "CUDA" 3,
/// in an interface "fingerprint database options".
ZQ_EXPORT bool ZQConfigureFPDatabaseMemoryType(ZQInterface& interface, unsigned int memoryType,
                                               const std::string& name = "-memtype",
                                               const std::string& alias = "-m");
/// The selected memory type; 0 if none can be read.
ZQ_EXPORT unsigned int ZQGetFPDatabaseMemoryType(const ZQInterface& interface,
                                                 const std::string& name = "-memtype");

/// Bits of the mask of `ZQConfigureFPDatabaseOptions`.
namespace ZQFPDatabaseOptionsMask {
inline constexpr unsigned int Limit = 1;
inline constexpr unsigned int SimFunc = 2;
inline constexpr unsigned int Cutoff = 4;
}  // namespace ZQFPDatabaseOptionsMask

// Each adds one search option in an interface "fingerprint database search options".

/// 0 to 100000; 0 means all.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptionsLimit(ZQInterface& interface, unsigned int limit = 10,
                                                 const std::string& name = "-limit",
                                                 const std::string& alias = "-l");
/// A name of `ZQSimMeasure`.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptionsSimFunc(ZQInterface& interface,
                                                   unsigned int simFunc = ZQSimMeasure::Tanimoto,
                                                   const std::string& name = "-simfunc",
                                                   const std::string& alias = "-s");
/// The default is the cutoff of the options, if any.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptionsCutoff(ZQInterface& interface,
                                                  const ZQFPDatabaseOptions& options = {},
                                                  const std::string& name = "-cutoff",
                                                  const std::string& alias = "-c");

/// Adds "-limit", "-simfunc", "-cutoff" and "-descending" with defaults from the options.
ZQ_EXPORT bool ZQConfigureFPDatabaseOptions(ZQInterface& interface,
                                            const ZQFPDatabaseOptions& options);
/// Adds the options that the mask selects, with the defaults above, but never "-descending".
ZQ_EXPORT bool ZQConfigureFPDatabaseOptions(ZQInterface& interface, unsigned int mask);
/// Copies into the options each of the four that the interface has and the user set.
ZQ_EXPORT void ZQSetupFPDatabaseOptions(ZQFPDatabaseOptions& options, const ZQInterface& interface);

}  // namespace ZQKorvex
