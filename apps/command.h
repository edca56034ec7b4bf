#pragma once

/// The sub-commands of the program. Each adds its parameters to an interface and runs with the
/// values from the command line; results go to standard output, and messages, through `ZQThrow`, to
/// standard error.

#include "contract/bostrel/interface.h"
#include "korvex/siblings.h"

namespace KorvexProgram {

using namespace ZQKorvex;

enum ExitCode { Done = 0, BadInput = 1, BadUsage = 2 };

/// The number of warnings and errors printed so far. A query of a database that adds one has failed
/// and returned an empty value.
unsigned int NumWarnings();
/// The errors among them. What a molecule file has wrong is a warning, lack of memory is an error.
unsigned int NumErrors();

struct Command {
  const char* name;
  const char* brief;
  void (*configure)(ZQInterface& interface);
  int (*run)(const ZQInterface& interface);
};

extern const Command createCommand;
extern const Command convertCommand;
extern const Command searchCommand;
extern const Command fingerprintCommand;
extern const Command compareCommand;
extern const Command vseprCommand;
extern const Command explainCommand;
extern const Command substructureCommand;
extern const Command drawCommand;
extern const Command infoCommand;
extern const Command histogramCommand;
extern const Command neighborsCommand;
extern const Command versionCommand;

}  // namespace KorvexProgram
