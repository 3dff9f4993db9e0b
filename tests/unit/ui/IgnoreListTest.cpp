#include <QPointer>
#include <QSignalSpy>

#include "UiTestFixture.h"
#include "ui/ApplicationRow.h"
#include "ui/IgnoreListEdits.h"
#include "ui/IgnoreListSettingsView.h"
#include "ui/RunningAppsPicker.h"

namespace gf::test {
namespace {

using Entries = std::vector<IgnoreListEntry>;

RunningApplication app(std::int32_t pid, std::optional<std::string> identifier,
                       std::optional<std::string> name, bool regular = true) {
    return {pid, std::move(identifier), std::move(name), {}, regular};
}

std::vector<std::string> namesOf(const std::vector<RunningApplication>& applications) {
    std::vector<std::string> names;
    for (const RunningApplication& application : applications) {
        names.push_back(application.displayName.value_or("<none>"));
    }
    return names;
}

TEST(IgnoreCandidatesTest, OffersOrdinaryApplicationsWithAnIdentifierSortedByCodePoints) {
    const auto candidates = ignoreCandidates({
        app(1, "org.apple", "apple"),
        app(2, "org.zed", "Zed"),
        app(3, std::nullopt, "No Identifier"),
        app(4, "org.panel", "Panel", false),
        app(5, "org.nameless", std::nullopt),
        app(6, "org.emoji", "\U0001F600 Smile"),  // outside the basic plane
        app(7, "org.ligature", "\uFB01le"),       // U+FB01: above the surrogates in UTF-16
        app(8, "", "Empty Identifier"),
    });
    // A missing name sorts as empty; U+1F600 after U+FB01 although its UTF-16 would not.
    EXPECT_EQ(namesOf(candidates),
              (std::vector<std::string>{"<none>", "Zed", "apple", "\uFB01le", "\U0001F600 Smile"}));

    // Canonically equivalent names compare equal and keep their order.
    const auto equivalent = ignoreCandidates({app(1, "org.decomposed", "Cafe\u0301 B"),
                                              app(2, "org.composed", "Caf\u00E9 A"),
                                              app(3, "org.second", "Caf\u00E9 B")});
    EXPECT_EQ(namesOf(equivalent),
              (std::vector<std::string>{"Caf\u00E9 A", "Cafe\u0301 B", "Caf\u00E9 B"}));
}

TEST(IgnoreListEditsTest, AddsOnceNamedByDisplayNameOrIdentifierAndRemovesEveryCopy) {
    Entries list;
    list = addingToIgnoreList(list, app(1, "org.gimp", "GIMP"));
    list = addingToIgnoreList(list, app(2, "org.gimp", "GIMP"));  // a second instance
    list = addingToIgnoreList(list, app(3, "org.nameless", std::nullopt));
    list = addingToIgnoreList(list, app(4, std::nullopt, "Anonymous"));
    EXPECT_EQ(list, (Entries{{"org.gimp", "GIMP"}, {"org.nameless", "org.nameless"}}));

    const Entries stored{{"a", "A"}, {"b", "B"}, {"a", "A again"}, {"c", "C"}};
    EXPECT_EQ(removingFromIgnoreList(stored, "a"), (Entries{{"b", "B"}, {"c", "C"}}));
}

class IgnoreListViewTest : public UiTest {
  protected:
    IgnoreListSettingsView& view() {
        if (view_ == nullptr) {
            view_ = std::make_unique<IgnoreListSettingsView>(settings(), desktop());
        }
        return *view_;
    }

    RunningAppsPicker& openPicker() {
        view().addButton().click();
        RunningAppsPicker* picker = view().appPicker();
        EXPECT_NE(picker, nullptr);
        return *picker;
    }

    ApplicationRow& rowOf(int index) {
        return *qobject_cast<ApplicationRow*>(view().list().itemWidget(view().list().item(index)));
    }

    std::unique_ptr<IgnoreListSettingsView> view_;
};

TEST_F(IgnoreListViewTest, PickerListsRunningApplicationsAndAddsTheChosenOneAtTheEndOnce) {
    settings().setIgnoreList({{"org.first", "First"}});
    for (const auto& running :
         {app(10, "org.zed", "Zed"), app(11, "org.apple", "apple"), app(12, "org.nameless", {}),
          app(13, "org.tray", "Tray Helper", false), app(14, "org.zed", "Zed")}) {
        desktop().addApplication(running);  // the last a second instance: a row of its own
    }

    RunningAppsPicker& picker = openPicker();
    EXPECT_TRUE(picker.isVisible());
    ASSERT_EQ(picker.candidates().size(), 4u);
    EXPECT_EQ(picker.rowButton(0).accessibleName(), QStringLiteral("Unknown"));
    EXPECT_EQ(picker.rowButton(1).accessibleName(), QStringLiteral("Zed"));
    EXPECT_EQ(picker.rowButton(2).accessibleName(), QStringLiteral("Zed"));
    EXPECT_EQ(picker.rowButton(3).accessibleName(), QStringLiteral("apple"));

    QPointer<RunningAppsPicker> sheet(&picker);
    QSignalSpy changes(&settings(), &Settings::ignoreListChanged);
    picker.rowButton(0).click();
    processEvents();
    EXPECT_TRUE(sheet.isNull());
    EXPECT_EQ(view().appPicker(), nullptr);
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(settings().ignoreList(),
              (Entries{{"org.first", "First"}, {"org.nameless", "org.nameless"}}));
    ASSERT_EQ(view().list().count(), 2);
    EXPECT_EQ(rowOf(1).nameLabel().text(), QStringLiteral("org.nameless"));
    EXPECT_EQ(rowOf(1).identifierLabel().text(), QStringLiteral("org.nameless"));

    // Choosing an application already ignored, or cancelling, closes the sheet unchanged.
    openPicker().rowButton(0).click();
    processEvents();
    EXPECT_EQ(view().appPicker(), nullptr);
    openPicker().cancelButton().click();
    processEvents();
    EXPECT_EQ(view().appPicker(), nullptr);
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(settings().ignoreList().size(), 2u);
}

TEST_F(IgnoreListViewTest, MinusRemovesEveryCopyOfTheSelectedIdentifierAndRowsFollowTheStoredList) {
    settings().setIgnoreList({{"a", "A"}, {"b", "B"}, {"a", "A"}, {"c", "C"}});
    EXPECT_FALSE(view().removeButton().isEnabled());

    view().list().setCurrentRow(2);
    ASSERT_TRUE(view().selectedEntry().has_value());
    EXPECT_EQ(view().selectedEntry()->bundleIdentifier, "a");
    EXPECT_TRUE(view().removeButton().isEnabled());

    view().removeButton().click();
    EXPECT_EQ(settings().ignoreList(), (Entries{{"b", "B"}, {"c", "C"}}));
    EXPECT_FALSE(view().selectedEntry().has_value());
    EXPECT_FALSE(view().removeButton().isEnabled());
    EXPECT_EQ(view().list().count(), 2);
    EXPECT_TRUE(view().list().selectedItems().isEmpty());

    // Rows keep the stored order and show icons only for installed applications.
    ApplicationIcon red;  // 2 x 2 opaque red, as an application publishes it
    red.width = red.height = 2;
    red.argb.assign(4, 0xFFFF0000u);
    desktop().installApplication("org.installed", red);
    settings().setIgnoreList({{"org.zzz", "Zzz"}, {"org.installed", "Installed"}});
    ASSERT_EQ(view().list().count(), 2);
    EXPECT_EQ(rowOf(0).nameLabel().text(), QStringLiteral("Zzz"));
    EXPECT_EQ(rowOf(0).iconLabel(), nullptr);
    ASSERT_NE(rowOf(1).iconLabel(), nullptr);
    EXPECT_EQ(rowOf(1).iconLabel()->pixmap().toImage().pixel(0, 0), 0xFFFF0000u);

    // A change made elsewhere shows at once, keeping a selection that is still there.
    view().list().setCurrentRow(1);
    settings().setIgnoreList(
        {{"org.new", "New"}, {"org.zzz", "Zzz"}, {"org.installed", "Installed"}});
    EXPECT_EQ(view().list().count(), 3);
    ASSERT_TRUE(view().selectedEntry().has_value());
    EXPECT_EQ(view().selectedEntry()->bundleIdentifier, "org.installed");
    EXPECT_EQ(view().list().currentRow(), 2);
}

}  // namespace
}  // namespace gf::test
