#include "contract/bostrel/throw.h"

#include <pthread.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace Bostrel {

namespace {

bool WriteToStandardError(ZQErrorLevel level, const std::string& message) {
  std::fprintf(stderr, "%s: %s\n", ZQGetErrorLevelName(level), message.c_str());
  return false;
}

// Constant-initialised or leaked: reports may come from destructors of other static objects.
std::atomic<ZQErrorLevel> threshold{ZQErrorLevel::Info};
thread_local bool insideSink = false;
std::mutex& SinkMutex() {
  static auto* mutex = [] {
    // A process that is forked while another thread reports has it unlocked.
    const auto unlock = [] {
      if (!insideSink) SinkMutex().unlock();
    };
    const auto lock = [] {
      if (!insideSink) SinkMutex().lock();
    };
    pthread_atfork(lock, unlock, unlock);
    return new std::mutex;
  }();
  return *mutex;
}
ZQErrorSink& Sink() {
  static auto* sink = new ZQErrorSink;
  return *sink;
}
thread_local void* contextOfThread = nullptr;

__attribute__((format(printf, 1, 0))) std::string Format(const char* format, std::va_list args) {
  std::va_list again;
  va_copy(again, args);
  const int size = std::vsnprintf(nullptr, 0, format, args);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  if (size > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  while (!text.empty() && text.back() == '\n') text.pop_back();  // the sink adds line ends
  return text;
}

__attribute__((format(printf, 2, 0))) void Report(ZQErrorLevel level, const char* format,
                                                  std::va_list args) {
  if (level < threshold.load(std::memory_order_relaxed)) return;
  const std::string message = Format(format, args);
  bool goOn = false;
  if (insideSink) {
    WriteToStandardError(level, message);
    goOn = true;  // ending here would hide the sink's report
  } else {
    const std::lock_guard<std::mutex> lock(SinkMutex());
    insideSink = true;
    const ZQErrorSink& sink = Sink();
    goOn = sink ? sink(level, message) : WriteToStandardError(level, message);
    insideSink = false;
  }
  if (level == ZQErrorLevel::Fatal && !goOn) std::abort();
}

}  // namespace

ZQErrorHandler ZQThrow;

const char* ZQGetErrorLevelName(ZQErrorLevel level) {
  switch (level) {
    case ZQErrorLevel::Debug:
      return "Debug";
    case ZQErrorLevel::Info:
      return "Info";
    case ZQErrorLevel::Warning:
      return "Warning";
    case ZQErrorLevel::Error:
      return "Error";
    case ZQErrorLevel::Fatal:
      return "Fatal";
  }
  return "Unknown";
}

void ZQErrorHandler::Debug(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  Report(ZQErrorLevel::Debug, format, args);
  va_end(args);
}

void ZQErrorHandler::Info(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  Report(ZQErrorLevel::Info, format, args);
  va_end(args);
}

void ZQErrorHandler::Warning(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  Report(ZQErrorLevel::Warning, format, args);
  va_end(args);
}

void ZQErrorHandler::Error(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  Report(ZQErrorLevel::Error, format, args);
  va_end(args);
}

void ZQErrorHandler::Fatal(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  Report(ZQErrorLevel::Fatal, format, args);
  va_end(args);
}

void ZQErrorHandler::SetContext(void* context) { contextOfThread = context; }

void* ZQErrorHandler::GetContext() const { return contextOfThread; }

ZQErrorSink ZQErrorHandler::SetSink(ZQErrorSink sink) {
  const std::lock_guard<std::mutex> lock(SinkMutex());
  std::swap(sink, Sink());
  return sink;
}

void ZQErrorHandler::SetLevel(ZQErrorLevel level) { threshold = level; }

ZQErrorLevel ZQErrorHandler::GetLevel() const { return threshold; }

}  // namespace Bostrel
