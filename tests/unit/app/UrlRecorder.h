#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace gf::test {

// Catches what the program asks the desktop to open, instead of starting a browser.
class UrlRecorder : public QObject {
    Q_OBJECT

  public:
    explicit UrlRecorder(QStringList schemes) : schemes_(std::move(schemes)) {
        for (const QString& scheme : schemes_) {
            QDesktopServices::setUrlHandler(scheme, this, "open");
        }
    }
    ~UrlRecorder() override {
        for (const QString& scheme : schemes_) {
            QDesktopServices::unsetUrlHandler(scheme);
        }
    }

    const QList<QUrl>& urls() const { return urls_; }

  public slots:
    void open(const QUrl& url) { urls_.append(url); }

  private:
    QStringList schemes_;
    QList<QUrl> urls_;
};

}  // namespace gf::test
