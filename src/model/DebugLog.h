#pragma once

#include <filesystem>
#include <string_view>

namespace gf {

// Appends "[YYYY-MM-DD HH:MM:SS +0000] message\n" (UTC) to the diagnostic log. The file lives in
// a directory every user shares, so it is only ever appended to, never followed through a symbolic
// link, and created readable and writable by its owner only; a file that is not a regular file or
// belongs to someone else is left alone. Any failure loses the line without a report.
void debugLog(std::string_view message);

// Where debugLog writes; "/tmp/glimmerfold.log" unless changed (tests point it elsewhere).
void setDebugLogPath(std::filesystem::path path);

}  // namespace gf
