// The files that every page holds.
#pragma once

namespace cli {

extern const char *const kUplotScript, *const kUplotStyle, *const kUplotLicence;
extern const char *const kViewerScript, *const kViewerStyle;  // ours

}  // namespace cli
