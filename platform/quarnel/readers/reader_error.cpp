#include <cstdio>

#include "contract/bostrel/throw.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

std::string QuoteStart(std::string_view text, std::size_t limit) {
  if (text.empty()) return "the end";
  std::string quoted = "\"";
  for (const char c : text.substr(0, limit)) {
    if (c >= ' ' && c <= '~') {
      quoted += c;
    } else {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02x",
                    static_cast<unsigned int>(static_cast<unsigned char>(c)));
      quoted += escaped;
    }
  }
  quoted += text.size() > limit ? "...\"" : "\"";
  return quoted;
}

void ReportUnreadable(ZQMolBase& mol, const std::string& where, const char* what,
                      const ReaderError& error) {
  mol.Clear();
  mol.SetValid(false);
  Bostrel::ZQThrow.Warning("%s%s%s %zu: found %s, expected %s", where.c_str(),
                           where.empty() ? "" : ": ", error.unit ? error.unit : what, error.place,
                           error.found.c_str(), error.expected.c_str());
}

}  // namespace Quarnel
