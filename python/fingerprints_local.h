#pragma once

/// What the bindings share: types and measures by name.

#include <string>

#include "python/reports_local.h"

namespace KorvexPython {

/// A type, which the library owns.
struct Type {
  const ZQFPTypeBase* type;
};

/// From the name of a kind, in any case ("path"), or a type string. Throws for any other text, and
/// for a type of which no fingerprint can be made.
Type ReadType(const std::string& text);

/// A measure by its name, in any case. Throws for an unknown one.
unsigned int ReadMeasure(const std::string& name);

void BindFingerprints(py::module_& module);
void BindDatabase(py::module_& module);
void BindMolecules(py::module_& module);
void BindTools(py::module_& module);

}  // namespace KorvexPython
