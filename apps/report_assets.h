#pragma once

/// The style sheet and the script of reports, from the files of apps/report/.

namespace KorvexProgram {

extern const char* const reportStyle;
extern const char* const reportScript;

}  // namespace KorvexProgram
