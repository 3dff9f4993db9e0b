#include "app/SingleInstance.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <chrono>
#include <cstring>
#include <future>

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class SingleInstanceTest : public ::testing::Test {
  protected:
    QString socketPath() const { return dir.filePath("glimmerfold.socket"); }

    // Runs the event loop until the future is ready, so this thread's server can answer.
    template <typename T>
    T resultServedByThisThread(std::future<T>& future) {
        QElapsedTimer timer;
        timer.start();
        while (future.wait_for(0ms) != std::future_status::ready && timer.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        }
        return future.get();
    }

    QTemporaryDir dir;
};

TEST_F(SingleInstanceTest, LaterLaunchAsksTheRunningOneForItsSettingsAndStepsAside) {
    SingleInstance running(socketPath());
    ASSERT_EQ(running.claim(), SingleInstance::Claim::primary);
    QSignalSpy requests(&running, &SingleInstance::showSettingsRequested);

    // The second launch is another process in real life; a thread with its own socket here.
    auto second = std::async(std::launch::async, [path = socketPath()] {
        SingleInstance later(path);
        return later.claim();
    });
    EXPECT_EQ(resultServedByThisThread(second), SingleInstance::Claim::handedOver);
    EXPECT_EQ(requests.count(), 1);
}

// A socket bound but not listening: what a killed process leaves, and what one that is starting
// shows for a moment.
void bindWithoutListening(const QString& socketPath) {
    const QByteArray path = socketPath.toUtf8();
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ::close(fd);
}

TEST_F(SingleInstanceTest, ASocketIsTakenOverOnlyWhenNoInstanceHoldsTheLock) {
    bindWithoutListening(socketPath());
    {
        // Another instance holds the lock and has yet to listen: this launch steps aside.
        FileLock starting(socketPath() + ".lock");
        ASSERT_EQ(starting.state(), FileLock::State::held);
        SingleInstance later(socketPath());
        EXPECT_EQ(later.claim(), SingleInstance::Claim::handedOver);
        EXPECT_TRUE(QFileInfo::exists(socketPath())) << "the starting one's socket stays";
    }
    // That instance ended without removing its socket: the next launch takes over.
    SingleInstance instance(socketPath());
    EXPECT_EQ(instance.claim(), SingleInstance::Claim::primary);
}

}  // namespace
}  // namespace gf::test
