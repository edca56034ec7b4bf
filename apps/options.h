#pragma once

/// Parameters that several commands share.

#include <string>

#include "apps/command.h"
#include "korvex/fingerprint.h"
#include "korvex/fpdatabaseoptions.h"

namespace KorvexProgram {

/// A required word, told by its place.
void AddArgument(ZQInterface& interface, const char* name, const char* brief);

/// "-threads", 0 (all processors) by default.
void AddThreads(ZQInterface& interface);
unsigned int GetThreads(const ZQInterface& interface);

/// Which kinds of fingerprint a command takes.
enum class Kinds {
  OfDatabases,  ///< those that a database file can hold: path, circular and tree
  All
};

/// The fingerprint options, whose defaults are those of the kind that is chosen, and "-type" in
/// place of them.
void AddTypeOptions(ZQInterface& interface, Kinds kinds);
/// The type that they choose; null after a message for one that isn't legal, of which no
/// fingerprint can be made, or that isn't for the command: a database holds multiples of 256 bits.
const ZQFPTypeBase* GetTypeOption(const ZQInterface& interface, Kinds kinds);

/// "-alpha" and "-beta" of Tversky, beside the other search options if there are any.
void AddTverskyCoeffs(ZQInterface& interface);
void SetTverskyCoeffs(ZQFPDatabaseOptions& options, const ZQInterface& interface);

}  // namespace KorvexProgram
