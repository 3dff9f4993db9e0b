#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace gf::test {

// Catches what the program asks the desktop to open, instead of starting a browser.
class UrlRecorder : public QObject {
    Q_OBJECT

  public:
    explicit UrlRecorder(QStringList schemes);
    ~UrlRecorder() override;

    const QList<QUrl>& urls() const { return urls_; }

  public slots:
    void open(const QUrl& url);

  private:
    QStringList schemes_;
    QList<QUrl> urls_;
};

}  // namespace gf::test
