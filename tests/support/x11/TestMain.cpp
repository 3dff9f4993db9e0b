#include <gtest/gtest.h>

#include <QCoreApplication>

// A Qt application object, so that socket notifiers and timers work in every test.
int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
