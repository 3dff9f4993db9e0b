#include "model/DebugLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <regex>
#include <sstream>

namespace gf::test {
namespace {

namespace fs = std::filesystem;

std::string readFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class DebugLogTest : public ::testing::Test {
  protected:
    void SetUp() override { setDebugLogPath(log); }
    void TearDown() override { setDebugLogPath("/tmp/glimmerfold.log"); }

    fs::path path(const char* name) const { return fs::path(dir.path().toStdString()) / name; }

    QTemporaryDir dir;
    const fs::path log = path("glimmerfold.log");
};

TEST_F(DebugLogTest, AppendsOneUtcStampedLinePerCallToAnOwnerOnlyFile) {
    const std::time_t before = std::time(nullptr);
    debugLog("Event tap created \xE2\x9C\x93");
    const std::time_t after = std::time(nullptr);
    std::ofstream(log, std::ios::app) << "written by someone else\n";
    debugLog("second");

    const std::string text = readFile(log);
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
    ASSERT_EQ(::stat(log.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(DebugLogTest, WritesThroughNoLinkAndIntoNothingButARegularFileOfItsOwn) {
    std::ofstream(path("victim")) << "precious\n";
    fs::create_symlink(path("victim"), log);
    debugLog("attack");
    EXPECT_EQ(readFile(path("victim")), "precious\n");
    // A dangling link must not create its target either.
    fs::remove(log);
    fs::create_symlink(path("created-by-link"), log);
    debugLog("attack");
    EXPECT_FALSE(fs::exists(path("created-by-link")));
    fs::remove(log);

    fs::create_directory(log);
    debugLog("into a folder");
    EXPECT_TRUE(fs::is_empty(log));
    fs::remove(log);
    // Without a reader a plain open would block; with one, the line must not go down the pipe.
    ASSERT_EQ(::mkfifo(log.c_str(), 0600), 0);
    debugLog("into a pipe");
    const int reader = ::open(log.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    debugLog("into a pipe");
    char buffer[64];
    EXPECT_LE(::read(reader, buffer, sizeof buffer), 0);
    ::close(reader);
    fs::remove(log);

    if (::geteuid() == 0) {  // handing a file to another user needs root
        std::ofstream(log) << "theirs\n";
        ASSERT_EQ(::chown(log.c_str(), 65534, 65534), 0);
        debugLog("mine");
        EXPECT_EQ(readFile(log), "theirs\n");
    }
    setDebugLogPath(path("missing-folder") / "glimmerfold.log");
    debugLog("nowhere");
    EXPECT_FALSE(fs::exists(path("missing-folder")));
}

}  // namespace
}  // namespace gf::test
