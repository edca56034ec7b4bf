#pragma once

/// Parameters that several commands share.

#include <span>
#include <string>
#include <vector>

#include "apps/command.h"
#include "korvex/fingerprint.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/vsepr_fingerprint.h"

namespace KorvexProgram {

/// A required positional argument.
void AddArgument(ZQInterface& interface, const char* name, const char* brief);

/// A parameter whose value is one of the names, which the long help describes. They must outlive
/// it.
void AddChoice(ZQInterface& interface, const char* name, const char* alias, const char* brief,
               const ZQNamespaceInterface& choices, const char* byDefault);

/// "-threads", 0 (all processors) by default.
void AddThreads(ZQInterface& interface);
unsigned int GetThreads(const ZQInterface& interface);

/// The kinds of fingerprints that a command accepts.
enum class Kinds {
  OfDatabases,  ///< the kinds of database files: path, circular and tree
  OfFiles,      ///< those that a file of databases or of stored fingerprints can hold
  All
};

/// The fingerprint options, with the defaults of the chosen kind, and "-type", which replaces them.
/// `furtherKinds` are names of "-fptype" that the command handles itself.
void AddTypeOptions(ZQInterface& interface, Kinds kinds,
                    std::vector<std::string> furtherKinds = {});
/// The type chosen by them. Null after a message if it is illegal, if no fingerprint can be made of
/// it, or if the command doesn't accept it: a database needs multiples of 256 bits.
const ZQFPTypeBase* GetTypeOption(const ZQInterface& interface, Kinds kinds);

/// Whether fingerprints of a type are compared by this measure: texts of fragments by Tanimoto
/// only.
bool IsComparedBy(const ZQFPTypeBase* type, unsigned int measure);
/// The same, with an error about "-simfunc" if not.
bool CheckMeasure(const ZQFPTypeBase* type, unsigned int measure);

/// Whether one of these options is set; if so, reports the error "option %s is of no use %s".
bool IsAnySet(const ZQInterface& interface, std::span<const char* const> names,
              const std::string& reason);
/// The same for the options of `AddTypeOptions`.
bool IsAnyTypeOptionSet(const ZQInterface& interface, const std::string& reason);
/// The same for those other than "-fptype".
bool IsAnyTypeParameterSet(const ZQInterface& interface, const std::string& reason);

/// The options of VSEPR fingerprints, in a group of their own.
void AddVseprOptions(ZQInterface& interface);
bool IsAnyVseprOptionSet(const ZQInterface& interface, const std::string& reason);
/// Their values. Warns about paths of more atoms than a key holds, once, and reduces their length.
ZQVseprOptions GetVseprOptions(const ZQInterface& interface);

/// "-alpha" and "-beta" of Tversky, next to the other search options if there are any.
void AddTverskyCoeffs(ZQInterface& interface);
void SetTverskyCoeffs(ZQFPDatabaseOptions& options, const ZQInterface& interface);

}  // namespace KorvexProgram
