#include "app/TerminationSignals.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

namespace gf {

namespace {

constexpr std::array handledSignals{SIGTERM, SIGINT, SIGHUP};

// Written by the handler, so it has to be a plain integer.
volatile sig_atomic_t writeEnd = -1;
int readEnd = -1;
std::array<struct sigaction, handledSignals.size()> previousActions{};

void forwardSignal(int signalNumber) {
    const int savedErrno = errno;
    const auto byte = static_cast<unsigned char>(signalNumber);
    // A full pipe means a signal is already waiting to be handled; dropping this one is fine.
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
    errno = savedErrno;
}

void restorePreviousHandlers() {
    for (std::size_t i = 0; i < handledSignals.size(); ++i) {
        ::sigaction(handledSignals[i], &previousActions[i], nullptr);
    }
}

void closeEnds() {
    if (writeEnd >= 0) {
        ::close(writeEnd);
        writeEnd = -1;
    }
    if (readEnd >= 0) {
        ::close(readEnd);
        readEnd = -1;
    }
}

}  // namespace

struct TerminationSignals::Key {};

std::unique_ptr<TerminationSignals> TerminationSignals::install() {
    if (readEnd >= 0) {
        std::cerr << "Glimmerfold: termination signals are already being handled\n";
        return nullptr;
    }
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
        std::cerr << "Glimmerfold cannot watch for termination signals: " << std::strerror(errno)
                  << '\n';
        return nullptr;
    }
    readEnd = ends[0];
    writeEnd = ends[1];

    struct sigaction action {};
    action.sa_handler = forwardSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < handledSignals.size(); ++i) {
        ::sigaction(handledSignals[i], &action, &previousActions[i]);
    }
    return std::make_unique<TerminationSignals>(Key{}, readEnd);
}

TerminationSignals::TerminationSignals(const Key&, int fd)
    : notifier_(std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read)) {
    connect(notifier_.get(), &QSocketNotifier::activated, this,
            &TerminationSignals::readPendingSignals);
}

TerminationSignals::~TerminationSignals() {
    notifier_.reset();
    restorePreviousHandlers();
    closeEnds();
}

void TerminationSignals::readPendingSignals() {
    unsigned char byte = 0;
    while (::read(readEnd, &byte, 1) == 1) {
        emit received(byte);
    }
}

}  // namespace gf
