// What every implementation of Bundle must do. `System` makes a bundle with this in it:
//
//   the information record: "Version" is the text "1.2", "Number" the number 7, "List" the texts "a" and "b" with a
//   number between them; a program "Helper"; a file "Data" and a folder "Folder", which are not programs
//
//   struct System { const Bundle& bundle(); };
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/bundle.h"

namespace tollvane::test {

template <typename System>
class BundleContract : public ::testing::Test {
 protected:
  System system;
};

TYPED_TEST_SUITE_P(BundleContract);

TYPED_TEST_P(BundleContract, TextsOfTheInformationRecordAreRead) {
  EXPECT_EQ(this->system.bundle().infoString("Version"), "1.2");
  EXPECT_EQ(this->system.bundle().infoString("Number"), std::nullopt);
  EXPECT_EQ(this->system.bundle().infoString("Missing"), std::nullopt);
}

TYPED_TEST_P(BundleContract, TheTextsOfAListAreRead) {
  EXPECT_THAT(this->system.bundle().infoStrings("List"), ::testing::ElementsAre("a", "b"));
  EXPECT_THAT(this->system.bundle().infoStrings("Version"), ::testing::IsEmpty());
  EXPECT_THAT(this->system.bundle().infoStrings("Missing"), ::testing::IsEmpty());
}

TYPED_TEST_P(BundleContract, ProgramsAndOtherFilesAreToldApart) {
  const auto helper = this->system.bundle().auxiliaryExecutable("Helper");
  ASSERT_TRUE(helper);
  EXPECT_TRUE(helper->is_absolute());
  EXPECT_EQ(helper->filename(), "Helper");
  EXPECT_EQ(this->system.bundle().auxiliaryExecutable("Data"), std::nullopt);
  EXPECT_EQ(this->system.bundle().auxiliaryExecutable("Missing"), std::nullopt);
  for (const char* name : {"Data", "Folder"}) {
    const auto resource = this->system.bundle().resource(name);
    ASSERT_TRUE(resource) << name;
    EXPECT_EQ(resource->filename(), name);
  }
  EXPECT_EQ(this->system.bundle().resource("Missing"), std::nullopt);
}

TYPED_TEST_P(BundleContract, TheLogToolHasAnAbsolutePath) {
  EXPECT_TRUE(this->system.bundle().logTool().is_absolute());
}

REGISTER_TYPED_TEST_SUITE_P(BundleContract, TextsOfTheInformationRecordAreRead, TheTextsOfAListAreRead,
                            ProgramsAndOtherFilesAreToldApart, TheLogToolHasAnAbsolutePath);

}  // namespace tollvane::test
