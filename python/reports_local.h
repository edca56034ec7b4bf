#pragma once

/// The library's messages while Python calls it: collected, and turned into Python warnings and
/// exceptions. Nothing is printed.

#include <pybind11/pybind11.h>

#include <cmath>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "korvex/korvex.h"

namespace KorvexPython {

namespace py = pybind11;
using namespace ZQKorvex;

/// Collects the messages of this thread from its construction on, and those of threads that the
/// library starts for it. Used with or without the GIL, but for the last two functions.
class Reports {
 public:
  Reports() : onThread_(*this) {}
  Reports(const Reports&) = delete;
  Reports& operator=(const Reports&) = delete;

  bool HasAny() const { return count_ > 0; }
  /// The first messages, a line each.
  std::string GetText() const;
  /// Issues them as a Python warning, `prefix` before them, if there are any. Throws if Python
  /// makes warnings errors.
  void Warn(const std::string& prefix = std::string());
  /// Throws them as `korvex.Error`; `what` where there are none.
  [[noreturn]] void Throw(const std::string& what) const;

  /// Collects the messages of another thread, for the time of its existence there.
  class OnThread {
   public:
    explicit OnThread(Reports& reports);
    ~OnThread();
    OnThread(const OnThread&) = delete;
    OnThread& operator=(const OnThread&) = delete;

   private:
    void* outer_;
  };

 private:
  friend bool Report(ZQErrorLevel level, const std::string& text);

  mutable std::mutex mutex_;
  std::vector<std::string> texts_;
  std::size_t count_ = 0;
  OnThread onThread_;
};

/// Text of a file or a message; bytes that aren't UTF-8 become U+FFFD.
py::str Text(const std::string& text);

/// A call that is running. The interpreter's exit waits for its end, as what it uses is destroyed
/// then; on another thread than the exit's, none begins or returns any more. Requires the GIL.
class Running {
 public:
  Running();
  ~Running();
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
};
/// Whether long calls should end, as the interpreter exits. On any thread.
bool IsExiting();

/// The result of `call()`, which runs without the GIL.
template <class Call>
auto Unlocked(const Call& call) {
  const Running running;
  const py::gil_scoped_release release;
  return call();
}

/// Throws what a signal handler of Python has to throw, such as for Ctrl-C.
inline void CheckSignals() {
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

/// Makes the library report here, and the module's exception and warning classes.
void BindReports(py::module_& module);

}  // namespace KorvexPython
