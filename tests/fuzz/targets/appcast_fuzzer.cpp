// Parses arbitrary bytes as the update feed, which comes from the network.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "app/AppcastParser.h"
#include "app/VersionComparison.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using gf::fuzz::check;
    const QByteArray feed(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const gf::AppcastParser::Result result = gf::AppcastParser::parse(feed);
    if (!result.newest) {
        check(!result.error.isEmpty(), "a feed without a usable release says why");
        return 0;
    }
    const gf::AppcastItem& item = *result.newest;
    check(!item.version.isEmpty(), "the newest release has a version");
    check(item.downloadUrl.isValid() && !item.downloadUrl.isRelative(),
          "the newest release has an absolute download address");
    check(!item.shortVersionString.isEmpty(), "the newest release has a version to show");
    check(gf::compareVersions(item.version, item.version) == 0, "a version equals itself");

    // The feed's versions are compared with ours; the order must not depend on the side.
    const QString ours = QStringLiteral("1.0");
    check(gf::compareVersions(item.version, ours) == -gf::compareVersions(ours, item.version),
          "comparing versions is antisymmetric");
    return 0;
}
