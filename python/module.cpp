#include "python/fingerprints_local.h"

PYBIND11_MODULE(_core, module) {
  module.doc() = "The part of korvex that is compiled; import korvex instead.";
  KorvexPython::BindReports(module);
  KorvexPython::BindMolecules(module);
  KorvexPython::BindFingerprints(module);
  KorvexPython::BindDatabase(module);
  KorvexPython::BindTools(module);
}
