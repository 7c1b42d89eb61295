// Tests of titles as the menu on macOS lays them out.
#include "platform/macos/decisions/menu_title.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

constexpr Font digits{FontFamily::monospacedDigits};
constexpr Font plain{};

TEST(MenuTitleTest, TheTimeStandsInAColumnThatEndsAtATabStop) {
  const MenuTitle title = menuTitle({{"3:07:42 PM   ", digits}, {"Mail", plain}});
  EXPECT_EQ(plainText(title.runs), "3:07:42 PM\tMail");
  EXPECT_EQ(title.column.text, "3:07:42 PM   ");
  EXPECT_EQ(title.column.font, digits);
}

TEST(MenuTitleTest, TheSecondLineStartsAtTheSameTabStop) {
  const MenuTitle title =
      menuTitle({{"3:07:42 PM   ", digits}, {"Firefox", plain}, {"\n              ", digits}, {"Tab: Inbox", plain}});
  EXPECT_EQ(plainText(title.runs), "3:07:42 PM\tFirefox\n\tTab: Inbox");
}

TEST(MenuTitleTest, AnIndentAloneIsAColumnToo) {
  const MenuTitle title = menuTitle({{"              ", digits}, {"Add the free extension", plain}});
  EXPECT_EQ(plainText(title.runs), "\tAdd the free extension");
  EXPECT_EQ(title.column.text, "              ");
}

TEST(MenuTitleTest, ATitleWithoutATimeHasNoTabStop) {
  const MenuTitle title = menuTitle({{"Update available: version 2…", plain}});
  EXPECT_EQ(plainText(title.runs), "Update available: version 2…");
  EXPECT_EQ(title.column.text, "");
}

TEST(MenuTitleTest, TextFromOutsideBeginsNoLineAndNoColumn) {
  const MenuTitle title = menuTitle({{"3:07:42 PM   ", digits}, {"a\nb\tc", plain}, {"\nevil", plain}});
  EXPECT_EQ(plainText(title.runs), "3:07:42 PM\ta b c evil");
}

TEST(MenuTitleTest, FontsAndColoursStay) {
  const MenuTitle title =
      menuTitle({{"3:07:42 PM   ", digits, TextColor::tertiaryLabel}, {"Mail", plain, TextColor::label}});
  EXPECT_EQ(title.runs[0].color, TextColor::tertiaryLabel);
  EXPECT_EQ(title.runs[0].font, digits);
  EXPECT_EQ(title.runs[1].color, TextColor::label);
}

TEST(MenuTitleTest, AnEmptyTitleStaysEmpty) { EXPECT_TRUE(menuTitle({}).runs.empty()); }

}  // namespace
}  // namespace tollvane
