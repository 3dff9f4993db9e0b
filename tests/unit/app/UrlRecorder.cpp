#include "UrlRecorder.h"

#include <QDesktopServices>

namespace gf::test {

UrlRecorder::UrlRecorder(QStringList schemes) : schemes_(std::move(schemes)) {
    for (const QString& scheme : schemes_) {
        QDesktopServices::setUrlHandler(scheme, this, "open");
    }
}

UrlRecorder::~UrlRecorder() {
    for (const QString& scheme : schemes_) {
        QDesktopServices::unsetUrlHandler(scheme);
    }
}

void UrlRecorder::open(const QUrl& url) {
    urls_.append(url);
}

}  // namespace gf::test
