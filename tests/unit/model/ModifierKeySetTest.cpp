#include "model/ModifierKeySet.h"

#include <gtest/gtest.h>

namespace gf {
namespace {

const ModifierKey& fn = ModifierKey::fn();
const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
const ModifierKey& command = ModifierKey::command();

TEST(ModifierKeySetTest, HoldsEachKeyOnceInTableOrderMatchesAsASubsetAndRoundTripsThroughJson) {
    ModifierKeySet set{command, shift, command};
    EXPECT_EQ(set.keys(), (std::vector<ModifierKey>{shift, command}));
    EXPECT_TRUE(set.contains("command"));
    EXPECT_FALSE(set.contains("Command"));
    set.remove(command);
    set.remove(ModifierKey::option());  // not a member: no effect
    EXPECT_EQ(set, ModifierKeySet{shift});

    const ModifierKeySet move{control, command};
    const std::uint64_t both = control.eventFlag | command.eventFlag;
    EXPECT_TRUE(move.matches(both | shift.eventFlag | 0x100));  // extra modifiers and bits ignored
    EXPECT_FALSE(move.matches(control.eventFlag));
    EXPECT_FALSE(move.matches(~command.eventFlag));
    EXPECT_TRUE(ModifierKeySet{}.matches(0));

    // Compact JSON that decodes to the same set.
    EXPECT_EQ(ModifierKeySet({command, control}).toJson(),
              R"({"keys":[{"name":"control"},{"name":"command"}]})");
    EXPECT_EQ(ModifierKeySet{}.toJson(), R"({"keys":[]})");
    const ModifierKeySet every{shift, control, ModifierKey::option(), command};
    EXPECT_EQ(ModifierKeySet::fromJson(every.toJson()), every);
}

// X never reports fn, so a set naming it (stored by another build) works with its other keys.
TEST(ModifierKeySetTest, StoredSetWithFnLoadsAndMatchesWithoutIt) {
    const auto stored = ModifierKeySet::fromJson(
        R"({"keys":[{"name":"fn"},{"name":"control"},{"name":"command"}]})");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(*stored, (ModifierKeySet{control, command}));
    EXPECT_FALSE(stored->contains(fn));
    EXPECT_TRUE(stored->matches(control.eventFlag | command.eventFlag));
    EXPECT_EQ(stored->toJson(), R"({"keys":[{"name":"control"},{"name":"command"}]})");

    const auto onlyFn = ModifierKeySet::fromJson(R"({"keys":[{"name":"fn"}]})");
    ASSERT_TRUE(onlyFn.has_value());
    EXPECT_TRUE(onlyFn->isEmpty()) << "no key left: the callers' meaning of an empty set applies";
    ModifierKeySet built{shift};
    built.insert(fn);
    EXPECT_EQ(built, ModifierKeySet{shift});
}

TEST(ModifierKeySetTest, DecodesAnyOrderRepeatsAndExtraMembersButRejectsTheRest) {
    EXPECT_EQ(ModifierKeySet::fromJson(R"({"v":2,"keys":[{"name":"command"},)"
                                       R"({"name":"control","symbol":"x"},{"name":"control"}]})"),
              (ModifierKeySet{control, command}));

    // The expected error, or "" for any that is not about an unknown key.
    const std::pair<const char*, const char*> rejected[] = {
        {R"({"keys":[{"name":"Command"}]})", "Unknown modifier key: Command"},
        {R"({"keys":[{"name":"shift"},{"name":"hyper"}]})", "Unknown modifier key: hyper"},
        {R"({})", ""},
        {R"({"keys":"shift"})", ""},
        {R"({"keys":["shift"]})", ""},
        {R"({"keys":[{"title":"shift"}]})", ""},
        {R"({"keys":[{"name":3}]})", ""},
        {R"({"keys":[{"name":null}]})", ""},
        {R"([{"name":"shift"}])", ""},
        {R"({"keys":[{"name":"shift"})", ""},
    };
    for (const auto& [json, expected] : rejected) {
        SCOPED_TRACE(json);
        QString error;
        EXPECT_FALSE(ModifierKeySet::fromJson(json, &error).has_value());
        if (*expected != '\0') {
            EXPECT_EQ(error, expected);
        } else {
            EXPECT_FALSE(error.isEmpty());
            EXPECT_FALSE(error.startsWith("Unknown modifier key"));
        }
    }
}

}  // namespace
}  // namespace gf
