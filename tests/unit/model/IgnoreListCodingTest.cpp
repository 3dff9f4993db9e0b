#include <gtest/gtest.h>

#include "model/IgnoreListCoding.h"

namespace gf {
namespace {

using Entries = std::vector<IgnoreListEntry>;

TEST(IgnoreListCodingTest, RoundTripKeepsOrderDuplicatesAndAnyTextButOnlyCompleteEntriesDecode) {
    EXPECT_EQ(IgnoreListCoding::encode({}), "[]");
    const Entries entries{
        {"XTerm", "xterm \"classic\""},
        {"Caf\xC3\xA9", "Caf\xC3\xA9 \xE2\x98\x95"},
        {"XTerm", "Second copy"},
    };
    EXPECT_EQ(IgnoreListCoding::decode(IgnoreListCoding::encode(entries)), entries);
    EXPECT_EQ(IgnoreListCoding::encode({{"XTerm", "xterm"}}),
              R"([{"appName":"xterm","bundleIdentifier":"XTerm"}])");
    EXPECT_EQ(IgnoreListCoding::decode(R"([{"appName":"A","extra":1,"bundleIdentifier":"a"}])"),
              (Entries{{"a", "A"}}));

    // Anything but an array of complete entries fails.
    const char* const malformed[] = {
        R"({"bundleIdentifier":"a","appName":"A"})",
        R"(["a"])",
        R"([{"bundleIdentifier":"a"}])",
        R"([{"appName":"A"}])",
        R"([{"bundleIdentifier":"a","appName":"A"},{"bundleIdentifier":"b","appName":7}])",
        "not json",
    };
    for (const char* json : malformed) {
        QString error;
        EXPECT_EQ(IgnoreListCoding::decode(json, &error), std::nullopt) << json;
        EXPECT_FALSE(error.isEmpty()) << json;
    }
}

}  // namespace
}  // namespace gf
