#pragma once

#include <QString>

namespace gf {

// Orders release versions the way release feeds mean them: runs of digits
// compare as numbers ("1.10" > "1.9"), missing components count as zero
// ("1.0" == "1.0.0"), and a word where the other version has a number or
// nothing marks a pre-release, which is lower ("1.0beta2" < "1.0rc1" < "1.0").
// Returns a negative number, zero or a positive number, like strcmp.
int compareVersions(const QString& a, const QString& b);

}  // namespace gf
