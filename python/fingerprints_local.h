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

/// Throws for coefficients of Tversky's measure that aren't within 0 and 1.
void CheckCoefficients(double alpha, double beta);

/// `__reduce_ex__` of each class. The way of protocols 0 and 1 would end the process.
py::object Reduce(const py::object& object, int protocol);

void BindFingerprints(py::module_& module);
void BindDatabase(py::module_& module);
void BindMolecules(py::module_& module);
void BindTools(py::module_& module);

}  // namespace KorvexPython
