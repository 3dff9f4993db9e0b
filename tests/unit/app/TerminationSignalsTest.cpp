#include "app/TerminationSignals.h"

#include <QSignalSpy>
#include <csignal>

#include "TestHelpers.h"

namespace gf::test {
namespace {

TEST(TerminationSignalsTest, SignalsArriveThroughTheEventLoopAndHandlersAreRestored) {
    {
        const auto handlers = TerminationSignals::install();
        ASSERT_NE(handlers, nullptr);
        EXPECT_EQ(TerminationSignals::install(), nullptr) << "one instance per process";
        QSignalSpy received(handlers.get(), &TerminationSignals::received);

        ASSERT_EQ(std::raise(SIGTERM), 0);  // would end the test run without the handler
        ASSERT_EQ(std::raise(SIGINT), 0);
        EXPECT_EQ(received.count(), 0) << "nothing runs inside the signal handler";
        processEventsUntil([&] { return received.count() >= 2; });
        ASSERT_EQ(received.count(), 2);
        EXPECT_EQ(received.at(0).at(0).toInt(), SIGTERM);
        EXPECT_EQ(received.at(1).at(0).toInt(), SIGINT);
    }
    struct sigaction current {};
    ASSERT_EQ(::sigaction(SIGTERM, nullptr, &current), 0);
    EXPECT_EQ(current.sa_handler, SIG_DFL);
}

}  // namespace
}  // namespace gf::test
