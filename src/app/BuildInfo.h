#pragma once

#include <QString>

namespace gf {

// The version of this build, e.g. "0.1.0"; "1.0" when the build did not say.
QString shortVersion();
// The build number, e.g. "1"; "1" when the build did not say.
QString buildNumber();

}  // namespace gf
