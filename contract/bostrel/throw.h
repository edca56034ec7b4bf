#pragma once

/// Error reports. Every failure of the library goes through the one object `ZQThrow`, with a
/// printf format that the compiler checks. Any thread may report at any time; the sink is called
/// by one thread at a time. No function of the library throws for bad input: it reports here and
/// answers with an empty value.

#include <functional>
#include <string>

#include "contract/bostrel/export.h"

namespace Bostrel {

enum class ZQErrorLevel {
  Debug,    ///< for the developer of an application
  Info,     ///< worth knowing, nothing is wrong
  Warning,  ///< bad input, repaired or refused
  Error,    ///< what can't be done: a mismatch, a failed system call
  Fatal,    ///< a broken invariant: a defect of the program, not of its input
};

/// Name of a level as the default sink prints it, such as "Warning".
ZQ_EXPORT const char* ZQGetErrorLevelName(ZQErrorLevel level);

/// Receives each report: its level and its text without a closing line feed. The answer matters
/// for Fatal only: true lets the program go on, false ends it.
using ZQErrorSink = std::function<bool(ZQErrorLevel level, const std::string& message)>;

/// The error handler. The default sink writes "Level: text" and a line feed to standard error
/// and lets Fatal end the program (`std::abort`). Reports below the threshold are dropped; the
/// default threshold is Info. A report made from within a sink goes to standard error.
class ZQ_EXPORT ZQErrorHandler {
 public:
  void Debug(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Info(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Warning(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Fatal(const char* format, ...) __attribute__((format(printf, 2, 3)));

  /// Replaces the sink and returns the earlier one; an empty function restores the default.
  ZQErrorSink SetSink(ZQErrorSink sink);

  void SetLevel(ZQErrorLevel threshold);
  ZQErrorLevel GetLevel() const;
};

ZQ_EXPORT extern ZQErrorHandler ZQThrow;

}  // namespace Bostrel

/// Reports Fatal when `condition` is false and goes on if the handler returns. Its value is the
/// condition's, so that the caller can leave: `if (!ZQ_ASSERT(p)) return false;`
#define ZQ_ASSERT(condition)                                                                  \
  ((condition)                                                                                \
       ? true                                                                                 \
       : (::Bostrel::ZQThrow.Fatal("Assertion failed at line %d of %s.", __LINE__, __FILE__), \
          false))

/// The same with a text in front.
#define ZQ_ASSERT_MSG(condition, message)                                                       \
  ((condition) ? true                                                                           \
               : (::Bostrel::ZQThrow.Fatal("%s\nAssertion failed at line %d of %s.", (message), \
                                           __LINE__, __FILE__),                                 \
                  false))
