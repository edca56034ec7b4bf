#pragma once

/// Error reports. Every failure of the library goes through the one object `ZQThrow`, with a printf
/// format that the compiler checks. Any thread may report at any time; the sink is called by one
/// thread at a time. No function of the library throws for bad input: it reports here and returns
/// an empty value.

#include <functional>
#include <string>

#include "contract/bostrel/export.h"

namespace Bostrel {

enum class ZQErrorLevel {
  Debug,    ///< for the developer of an application
  Info,     ///< informative, nothing is wrong
  Warning,  ///< bad input, repaired or rejected
  Error,    ///< an operation that can't be done: a mismatch, a failed system call
  Fatal,    ///< a broken invariant: a defect of the program, not of its input
};

/// Returns the name of a level as the default sink prints it, such as "Warning".
ZQ_EXPORT const char* ZQGetErrorLevelName(ZQErrorLevel level);

/// Receives each report: its level and its text without a closing line feed. The result matters for
/// Fatal only: true continues the program, false ends it.
using ZQErrorSink = std::function<bool(ZQErrorLevel level, const std::string& message)>;

/// The error handler. The default sink writes "Level: text" and a line feed to standard error and
/// ends the program (`std::abort`) on Fatal. Reports below the threshold are dropped; the default
/// threshold is Info. A report made within a sink is written to standard error.
class ZQ_EXPORT ZQErrorHandler {
 public:
  void Debug(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Info(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Warning(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Fatal(const char* format, ...) __attribute__((format(printf, 2, 3)));

  /// Replaces the sink and returns the earlier one; an empty function restores the default.
  ZQErrorSink SetSink(ZQErrorSink sink);

  /// A pointer of the calling thread, null at first, for the sink, which runs on the thread that
  /// reports: it says whose call a report belongs to. Threads that the library starts have that of
  /// their caller.
  void SetContext(void* context);
  void* GetContext() const;

  void SetLevel(ZQErrorLevel threshold);
  ZQErrorLevel GetLevel() const;
};

ZQ_EXPORT extern ZQErrorHandler ZQThrow;

}  // namespace Bostrel

/// Reports Fatal if `condition` is false and continues if the handler returns. Evaluates to the
/// condition, so that the caller can return: `if (!ZQ_ASSERT(p)) return false;`
#define ZQ_ASSERT(condition)                                                                  \
  ((condition)                                                                                \
       ? true                                                                                 \
       : (::Bostrel::ZQThrow.Fatal("Assertion failed at line %d of %s.", __LINE__, __FILE__), \
          false))

/// The same with a text before the report.
#define ZQ_ASSERT_MSG(condition, message)                                                       \
  ((condition) ? true                                                                           \
               : (::Bostrel::ZQThrow.Fatal("%s\nAssertion failed at line %d of %s.", (message), \
                                           __LINE__, __FILE__),                                 \
                  false))
