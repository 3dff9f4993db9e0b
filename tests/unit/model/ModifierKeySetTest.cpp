#include <gtest/gtest.h>

#include "ModelPrinters.h"
#include "model/ModifierKeySet.h"

namespace gf {
namespace {

const ModifierKey& fn = ModifierKey::fn();
const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
const ModifierKey& option = ModifierKey::option();
const ModifierKey& command = ModifierKey::command();

TEST(ModifierKeyTest, TableHoldsTheFiveKeysInPickerOrder) {
    const ModifierKey expected[] = {
        {"fn", "fn", 0x800000, 0},
        {"shift", "\xE2\x87\xA7", 0x20000, 0x1},
        {"control", "\xE2\x8C\x83", 0x40000, 0x4},
        {"option", "\xE2\x8C\xA5", 0x80000, 0x8},
        {"command", "\xE2\x8C\x98", 0x100000, 0x40},
    };
    ASSERT_EQ(ModifierKey::allKeys().size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const ModifierKey& key = ModifierKey::allKeys()[i];
        EXPECT_EQ(key.name, expected[i].name);
        EXPECT_EQ(key.symbol, expected[i].symbol) << key.name;
        EXPECT_EQ(key.eventFlag, expected[i].eventFlag) << key.name;
        EXPECT_EQ(key.nativeModifier, expected[i].nativeModifier) << key.name;
    }
    EXPECT_EQ(ModifierKey::withName("option"), &ModifierKey::option());
    EXPECT_EQ(ModifierKey::withName("Option"), nullptr);
    EXPECT_EQ(ModifierKey::withName("super"), nullptr);
}

TEST(ModifierKeySetTest, HoldsEachKeyOnceAndListsMembersInTableOrder) {
    ModifierKeySet set{command, shift, command};
    EXPECT_EQ(set.keys(), (std::vector<ModifierKey>{shift, command}));
    EXPECT_TRUE(set.contains("command"));
    EXPECT_FALSE(set.contains("Command"));
    set.insert(fn);
    set.remove(command);
    set.remove(option);  // not a member: no effect
    EXPECT_EQ(set, (ModifierKeySet{fn, shift}));
    set.remove(fn);
    set.remove(shift);
    EXPECT_TRUE(set.isEmpty());
}

TEST(ModifierKeySetTest, MatchesIsASubsetTestOverEventFlags) {
    const ModifierKeySet move{control, command};
    const std::uint64_t both = control.eventFlag | command.eventFlag;
    EXPECT_TRUE(move.matches(both));
    EXPECT_TRUE(move.matches(both | shift.eventFlag | 0x100));  // extra modifiers and bits ignored
    EXPECT_FALSE(move.matches(control.eventFlag));
    EXPECT_FALSE(move.matches(~command.eventFlag));
    EXPECT_TRUE(ModifierKeySet{}.matches(0));

    // Holding control, option and command satisfies both default gestures.
    const std::uint64_t held = both | option.eventFlag;
    EXPECT_TRUE(move.matches(held));
    EXPECT_TRUE((ModifierKeySet{control, option}.matches(held)));
}

TEST(ModifierKeySetTest, EncodesCompactJsonThatDecodesToTheSameSet) {
    EXPECT_EQ(ModifierKeySet({command, control}).toJson(),
              R"({"keys":[{"name":"control"},{"name":"command"}]})");
    EXPECT_EQ(ModifierKeySet{}.toJson(), R"({"keys":[]})");
    for (unsigned bits = 0; bits < 32; ++bits) {
        ModifierKeySet set;
        for (std::size_t i = 0; i < 5; ++i) {
            if ((bits & (1U << i)) != 0) {
                set.insert(ModifierKey::allKeys()[i]);
            }
        }
        EXPECT_EQ(ModifierKeySet::fromJson(set.toJson()), set);
    }
}

TEST(ModifierKeySetTest, DecodingAcceptsAnyOrderRepeatsAndExtraMembers) {
    EXPECT_EQ(ModifierKeySet::fromJson(R"({"keys":[{"name":"command"},{"name":"control"}]})"),
              (ModifierKeySet{control, command}));
    EXPECT_EQ(ModifierKeySet::fromJson(R"({"keys":[{"name":"control"},{"name":"control"}]})"),
              (ModifierKeySet{control}));
    // The key's other fields always come from the table, never from the stored text.
    const auto decoded =
        ModifierKeySet::fromJson(R"({"v":2,"keys":[{"name":"option","symbol":"x"}]})");
    ASSERT_TRUE(decoded.has_value());
    ASSERT_EQ(decoded->keys().size(), 1U);
    EXPECT_EQ(decoded->keys()[0].symbol, "\xE2\x8C\xA5");
    EXPECT_EQ(decoded->keys()[0].eventFlag, 0x80000U);
}

TEST(ModifierKeySetTest, AnUnknownNameRejectsTheWholeSet) {
    QString error;
    EXPECT_EQ(ModifierKeySet::fromJson(R"({"keys":[{"name":"Command"}]})", &error), std::nullopt);
    EXPECT_EQ(error, "Unknown modifier key: Command");
    EXPECT_EQ(ModifierKeySet::fromJson(R"({"keys":[{"name":"shift"},{"name":"hyper"}]})", &error),
              std::nullopt);
    EXPECT_EQ(error, "Unknown modifier key: hyper");
}

TEST(ModifierKeySetTest, MissingOrMistypedMembersFailWithADescription) {
    const char* const malformed[] = {
        R"({})",
        R"({"keys":"shift"})",
        R"({"keys":["shift"]})",
        R"({"keys":[{"title":"shift"}]})",
        R"({"keys":[{"name":3}]})",
        R"({"keys":[{"name":null}]})",
        R"([{"name":"shift"}])",
        R"({"keys":[{"name":"shift"})",
    };
    for (const char* json : malformed) {
        QString error;
        EXPECT_EQ(ModifierKeySet::fromJson(json, &error), std::nullopt) << json;
        EXPECT_FALSE(error.isEmpty()) << json;
        EXPECT_FALSE(error.startsWith("Unknown modifier key")) << json;
    }
}

}  // namespace
}  // namespace gf
