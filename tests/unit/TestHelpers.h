#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <algorithm>
#include <optional>
#include <string>

namespace gf::test {

// Messages meant for a person say everything on one line.
inline long lineCount(const std::string& text) {
    return std::ranges::count(text, '\n');
}

template <typename F>
std::string stderrOf(F&& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

// Real sockets, signals and timers answer through the event loop; bounded so a fault fails fast.
template <typename F>
void processEventsUntil(F&& done, int limitMs = 10000) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < limitMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
}

inline QByteArray fileContents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The environment lookup of a desktop session of the given XDG_SESSION_TYPE.
inline auto sessionOfType(const char* type) {
    return [type](const char* name) -> std::optional<std::string> {
        return std::string(name) == "XDG_SESSION_TYPE" ? std::optional<std::string>(type)
                                                       : std::nullopt;
    };
}

// Sets an environment variable while it exists; tests must not leak their environment.
class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const QByteArray& value)
        : name_(name), previous_(qgetenv(name)) {
        qputenv(name, value);
    }
    ~ScopedEnvironment() { previous_.isNull() ? qunsetenv(name_) : qputenv(name_, previous_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    const char* name_;
    QByteArray previous_;
};

}  // namespace gf::test
