#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

namespace gf {

// Turns SIGTERM, SIGINT and SIGHUP into a Qt signal delivered by the event
// loop: the handler only writes the signal's number into a socket pair, which
// the loop reads. One instance per process; the previous handlers come back
// when it is destroyed.
class TerminationSignals : public QObject {
    Q_OBJECT

  public:
    // nullptr (with a line on standard error) when the handlers cannot be set.
    static std::unique_ptr<TerminationSignals> install();

    struct Key;
    TerminationSignals(const Key&, int readEnd);
    ~TerminationSignals() override;

  signals:
    void received(int signalNumber);

  private:
    void readPendingSignals();

    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace gf
