#include "app/SingleInstance.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QFileInfo>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <chrono>
#include <cstring>
#include <future>
#include <vector>

#include "TestHelpers.h"
#include "app/InstanceClient.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class SingleInstanceTest : public ::testing::Test {
  protected:
    QString socketPath() const { return dir.filePath("glimmerfold.socket"); }

    // Runs the event loop until the future is ready, so this thread's server can answer.
    template <typename T>
    T resultServedByThisThread(std::future<T>& future) {
        processEventsUntil([&] { return future.wait_for(0ms) == std::future_status::ready; });
        return future.get();
    }

    void recordCommands(SingleInstance& running) {
        running.setCommandHandler([this](InstanceCommand command) {
            carriedOut.push_back(command);
            return command == InstanceCommand::enable ? InstanceReply::nowEnabled
                                                      : InstanceReply::settingsShown;
        });
    }

    InstanceClient::Outcome sendFromAnotherThread(InstanceCommand command) {
        auto sent = std::async(std::launch::async, [path = socketPath(), command] {
            return InstanceClient(path).send(command);
        });
        return resultServedByThisThread(sent);
    }

    QByteArray sendRawFromAnotherThread(const QByteArray& bytes) {
        auto sent = std::async(std::launch::async, [path = socketPath(), bytes] {
            QLocalSocket socket;
            socket.connectToServer(path);
            if (!socket.waitForConnected(5000)) {
                return QByteArray("(not connected)");
            }
            socket.write(bytes);
            socket.waitForBytesWritten(5000);
            socket.waitForDisconnected(5000);
            return socket.readAll();
        });
        return resultServedByThisThread(sent);
    }

    QTemporaryDir dir;
    std::vector<InstanceCommand> carriedOut;
};

TEST_F(SingleInstanceTest, LaterLaunchStepsAsideAndOnlyWellFormedRequestsAreCarriedOut) {
    SingleInstance running(socketPath());
    ASSERT_EQ(running.claim(), SingleInstance::Claim::primary);
    recordCommands(running);

    auto second = std::async(std::launch::async, [path = socketPath()] {
        SingleInstance later(path);
        const SingleInstance::Claim claim = later.claim();
        return std::make_pair(claim, later.handOverReply());
    });
    const auto [claim, reply] = resultServedByThisThread(second);
    EXPECT_EQ(claim, SingleInstance::Claim::handedOver);
    EXPECT_EQ(reply, InstanceReply::settingsShown);
    EXPECT_EQ(carriedOut, std::vector{InstanceCommand::showSettings});

    // A client that connects and says nothing holds up nobody.
    QLocalSocket silent;
    silent.connectToServer(socketPath());
    ASSERT_TRUE(silent.waitForConnected(5000));

    for (const QByteArray& malformed :
         {QByteArray("ENABLE\n"), QByteArray("enable \n"), QByteArray("enable\nquit\n"),
          QByteArray("enable\0\n", 8), QByteArray(4096, 'x'), QByteArray(64, ' ') + "enable\n"}) {
        EXPECT_EQ(sendRawFromAnotherThread(malformed), QByteArray())
            << "answered " << malformed.left(40).toStdString();
    }
    EXPECT_EQ(carriedOut.size(), 1u);
    EXPECT_EQ(sendFromAnotherThread(InstanceCommand::enable), InstanceClient::Outcome::answered);
    EXPECT_EQ(carriedOut, (std::vector{InstanceCommand::showSettings, InstanceCommand::enable}));
}

TEST_F(SingleInstanceTest, AnotherUsersRequestHasNoEffect) {
    SingleInstance running(socketPath(), ::getuid() + 1);
    ASSERT_EQ(running.claim(), SingleInstance::Claim::primary);
    recordCommands(running);

    EXPECT_EQ(sendFromAnotherThread(InstanceCommand::enable), InstanceClient::Outcome::unanswered);
    EXPECT_TRUE(carriedOut.empty());
}

// What a killed process leaves, and what one that is starting shows for a moment.
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
    {  // another instance holds the lock and has yet to listen: this launch steps aside
        FileLock starting(socketPath() + ".lock");
        ASSERT_EQ(starting.state(), FileLock::State::held);
        SingleInstance later(socketPath());
        EXPECT_EQ(later.claim(), SingleInstance::Claim::handedOver);
        EXPECT_TRUE(QFileInfo::exists(socketPath())) << "the starting one's socket stays";
    }
    // That instance ended without removing its socket: nobody answers, the next launch takes over.
    EXPECT_EQ(InstanceClient(socketPath()).send(InstanceCommand::quit),
              InstanceClient::Outcome::notRunning);
    SingleInstance instance(socketPath());
    EXPECT_EQ(instance.claim(), SingleInstance::Claim::primary);
}

}  // namespace
}  // namespace gf::test
