#include "python/reports_local.h"

#include <pthread.h>

#include <utility>

namespace KorvexPython {

namespace {

// Python's objects live as long as the process.
PyObject* errorClass = nullptr;
PyObject* warningClass = nullptr;

thread_local Reports* ofThread = nullptr;
// For threads of the library: those of the latest call that is still running.
std::mutex activeMutex;
std::vector<Reports*> active;

}  // namespace

bool Report(ZQErrorLevel level, const std::string& text) {
  constexpr std::size_t mostTexts = 20;
  if (level < ZQErrorLevel::Warning) return true;
  const auto add = [&](Reports& reports) {
    const std::lock_guard lock(reports.mutex_);
    ++reports.count_;
    if (reports.texts_.size() < mostTexts) reports.texts_.push_back(text);
  };
  if (ofThread) {
    add(*ofThread);
    return true;
  }
  const std::lock_guard lock(activeMutex);
  if (!active.empty()) add(*active.back());
  return true;
}

Reports::OnThread::OnThread(Reports& reports) : outer_(std::exchange(ofThread, &reports)) {}

Reports::OnThread::~OnThread() { ofThread = outer_; }

Reports::Reports() : onThread_(*this) {
  const std::lock_guard lock(activeMutex);
  active.push_back(this);
}

Reports::~Reports() {
  const std::lock_guard lock(activeMutex);
  std::erase(active, this);
}

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
  if (PyErr_WarnEx(warningClass, (prefix + GetText()).c_str(), 2) != 0) {
    throw py::error_already_set();
  }
}

void Reports::Throw(const std::string& what) const {
  PyErr_SetString(errorClass, HasAny() ? GetText().c_str() : what.c_str());
  throw py::error_already_set();
}

void BindReports(py::module_& module) {
  // A process that is forked while another thread is here, or in a call, has none of these.
  pthread_atfork([] { activeMutex.lock(); }, [] { activeMutex.unlock(); },
                 [] {
                   active.clear();
                   activeMutex.unlock();
                 });
  errorClass = PyErr_NewExceptionWithDoc("korvex.Error", "What the library refused, in its words.",
                                         PyExc_RuntimeError, nullptr);
  warningClass =
      PyErr_NewExceptionWithDoc("korvex.KorvexWarning", "What the library warns about and goes on.",
                                PyExc_UserWarning, nullptr);
  module.add_object("Error", errorClass);
  module.add_object("KorvexWarning", warningClass);
  ZQThrow.SetSink(Report);
}

}  // namespace KorvexPython
