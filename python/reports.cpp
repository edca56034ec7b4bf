#include "python/reports_local.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace KorvexPython {

namespace {

// Python's objects live as long as the process.
PyObject* errorClass = nullptr;
PyObject* warningClass = nullptr;

// Changed with the GIL.
std::size_t numRunning = 0;
std::atomic<bool> isExiting = false;
std::thread::id exitThread;

void AwaitRunning() {
  exitThread = std::this_thread::get_id();
  isExiting = true;
  while (numRunning > 0) {
    const py::gil_scoped_release release;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

/// On another thread than the exit's, waits for the end of the process.
void StopIfExiting() {
  if (!isExiting || std::this_thread::get_id() == exitThread) return;
  PyEval_SaveThread();
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

}  // namespace

bool Report(ZQErrorLevel level, const std::string& text) {
  constexpr std::size_t mostTexts = 20;
  auto* const reports = static_cast<Reports*>(ZQThrow.GetContext());
  if (level < ZQErrorLevel::Warning || !reports) return true;
  const std::lock_guard lock(reports->mutex_);
  ++reports->count_;
  if (reports->texts_.size() < mostTexts) reports->texts_.push_back(text);
  return true;
}

Reports::OnThread::OnThread(Reports& reports) : outer_(ZQThrow.GetContext()) {
  ZQThrow.SetContext(&reports);
}

Reports::OnThread::~OnThread() { ZQThrow.SetContext(outer_); }

std::string Reports::GetText() const {
  const std::lock_guard lock(mutex_);
  std::string all;
  for (const std::string& text : texts_) all.append(all.empty() ? "" : "\n").append(text);
  if (count_ > texts_.size()) {
    all.append("\nand ").append(std::to_string(count_ - texts_.size())).append(" more");
  }
  return all;
}

void Reports::Warn(const std::string& prefix) {
  if (!HasAny()) return;
  py::module_::import("warnings")
      .attr("warn")(Text(prefix + GetText()), py::handle(warningClass), 2);
}

void Reports::Throw(const std::string& what) const {
  PyErr_SetObject(errorClass, Text(HasAny() ? GetText() : what).ptr());
  throw py::error_already_set();
}

py::str Text(const std::string& text) {
  PyObject* const made =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
  if (!made) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(made);
}

Running::Running() {
  StopIfExiting();
  ++numRunning;
}

Running::~Running() {
  --numRunning;
  StopIfExiting();
}

bool IsExiting() { return isExiting; }

void BindReports(py::module_& module) {
  // In a forked process no other thread is in a call.
  pthread_atfork(nullptr, nullptr, [] { numRunning = 0; });
  errorClass = PyErr_NewExceptionWithDoc("korvex.Error", "What the library refused, in its words.",
                                         PyExc_RuntimeError, nullptr);
  warningClass =
      PyErr_NewExceptionWithDoc("korvex.KorvexWarning", "What the library warns about and goes on.",
                                PyExc_UserWarning, nullptr);
  module.add_object("Error", errorClass);
  module.add_object("KorvexWarning", warningClass);
  ZQThrow.SetSink(Report);
  py::module_::import("atexit").attr("register")(py::cpp_function(AwaitRunning));
}

}  // namespace KorvexPython
