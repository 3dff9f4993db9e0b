#include "app/BuildInfo.h"

namespace gf {

namespace {

QString orFallback(const char* value, const char* fallback) {
    const QString text = QString::fromUtf8(value).trimmed();
    return text.isEmpty() ? QString::fromUtf8(fallback) : text;
}

}  // namespace

QString shortVersion() {
#ifdef GLIMMERFOLD_VERSION
    return orFallback(GLIMMERFOLD_VERSION, "1.0");
#else
    return QStringLiteral("1.0");
#endif
}

QString buildNumber() {
#ifdef GLIMMERFOLD_BUILD_NUMBER
    return orFallback(GLIMMERFOLD_BUILD_NUMBER, "1");
#else
    return QStringLiteral("1");
#endif
}

}  // namespace gf
