#pragma once

/// What the bindings share: types, measures and texts from Python.

#include <string>
#include <vector>

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

/// The texts of a sequence of strings, which stay valid with it. Throws a TypeError for anything
/// else.
std::vector<std::string_view> ReadTexts(const py::sequence& texts);

/// Throws what a signal handler of Python has to throw, such as for Ctrl-C.
inline void CheckSignals() {
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

void BindFingerprints(py::module_& module);
void BindDatabase(py::module_& module);
void BindMolecules(py::module_& module);

}  // namespace KorvexPython
