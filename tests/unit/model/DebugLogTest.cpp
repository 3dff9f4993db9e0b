#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <regex>
#include <sstream>

#include "model/DebugLog.h"

namespace gf::test {
namespace {

namespace fs = std::filesystem;

std::string readFile(const fs::path& file) {
    std::ostringstream contents;
    contents << std::ifstream(file, std::ios::binary).rdbuf();
    return contents.str();
}

class DebugLogTest : public ::testing::Test {
  protected:
    void SetUp() override { setDebugLogPath(logPath()); }
    void TearDown() override { setDebugLogPath("/tmp/glimmerfold.log"); }

    fs::path path(const char* name) const { return fs::path(dir_.path().toStdString()) / name; }
    fs::path logPath() const { return path("glimmerfold.log"); }

    QTemporaryDir dir_;
};

TEST_F(DebugLogTest, AppendsOneUtcStampedLinePerCallToAnOwnerOnlyFile) {
    const std::time_t before = std::time(nullptr);
    debugLog("Event tap created \xE2\x9C\x93");
    const std::time_t after = std::time(nullptr);
    std::ofstream(logPath(), std::ios::app) << "written by someone else\n";
    debugLog("second");

    const std::string text = readFile(logPath());
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match,
                                 std::regex(R"(\[(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d) \+0000\] )"
                                            "Event tap created \xE2\x9C\x93\n"
                                            "written by someone else\n"
                                            R"(\[[^\]]+\] second\n)")))
        << text;
    std::tm stamp{};
    std::istringstream(match[1].str()) >> std::get_time(&stamp, "%Y-%m-%d %H:%M:%S");
    EXPECT_GE(::timegm(&stamp), before);
    EXPECT_LE(::timegm(&stamp), after);

    struct stat status {};
    ASSERT_EQ(::stat(logPath().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(DebugLogTest, NeverFollowsASymbolicLink) {
    std::ofstream(path("victim")) << "precious\n";
    fs::create_symlink(path("victim"), logPath());
    debugLog("attack");
    EXPECT_EQ(readFile(path("victim")), "precious\n");

    // A dangling link must not create its target either.
    fs::remove(logPath());
    fs::create_symlink(path("created-by-link"), logPath());
    debugLog("attack");
    EXPECT_FALSE(fs::exists(path("created-by-link")));
}

TEST_F(DebugLogTest, LeavesAnythingButARegularFileAlone) {
    fs::create_directory(logPath());
    debugLog("into a folder");
    EXPECT_TRUE(fs::is_empty(logPath()));
    fs::remove(logPath());

    // A pipe without a reader would block a plain open for writing; one with a reader must not
    // receive the line either.
    ASSERT_EQ(::mkfifo(logPath().c_str(), 0600), 0);
    debugLog("into a pipe");
    const int reader = ::open(logPath().c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    debugLog("into a pipe");
    char buffer[64];
    EXPECT_LE(::read(reader, buffer, sizeof buffer), 0);
    ::close(reader);

    setDebugLogPath(path("missing-folder") / "glimmerfold.log");
    debugLog("nowhere");
    EXPECT_FALSE(fs::exists(path("missing-folder")));
}

TEST_F(DebugLogTest, LeavesAnotherUsersFileAlone) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "handing a file to another user needs root";
    }
    std::ofstream(logPath()) << "theirs\n";
    ASSERT_EQ(::chown(logPath().c_str(), 65534, 65534), 0);
    debugLog("mine");
    EXPECT_EQ(readFile(logPath()), "theirs\n");
}

}  // namespace
}  // namespace gf::test
