// What every implementation of Files must do. `System` makes one:
//
//   struct System {
//     Files& files;
//     std::filesystem::path folder;   // an empty folder for the test alone
//   };
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/files.h"

namespace tollvane::test {

template <typename System>
class FilesContract : public ::testing::Test {
 protected:
  System system;
  Files& files = system.files;

  std::filesystem::path at(const char* name) const { return system.folder / name; }
  std::string contentOf(const char* name) const { return files.read(at(name), 1000).value_or("(none)"); }
};

TYPED_TEST_SUITE_P(FilesContract);

TYPED_TEST_P(FilesContract, AFileExistsOnceItIsWritten) {
  EXPECT_FALSE(this->files.exists(this->at("file")));
  EXPECT_TRUE(this->files.write(this->at("file"), "text"));
  EXPECT_TRUE(this->files.exists(this->at("file")));
  EXPECT_EQ(this->contentOf("file"), "text");
  EXPECT_TRUE(this->files.exists(this->system.folder));
}

TYPED_TEST_P(FilesContract, NewContentReplacesTheOld) {
  ASSERT_TRUE(this->files.write(this->at("file"), "a long text"));
  EXPECT_TRUE(this->files.write(this->at("file"), "short"));
  EXPECT_EQ(this->contentOf("file"), "short");
  EXPECT_TRUE(this->files.writeAtomically(this->at("file"), "other"));
  EXPECT_EQ(this->contentOf("file"), "other");
}

TYPED_TEST_P(FilesContract, NothingIsWrittenIntoAMissingDirectory) {
  EXPECT_FALSE(this->files.write(this->at("missing/file"), "text"));
  EXPECT_FALSE(this->files.writeAtomically(this->at("missing/file"), "text"));
  EXPECT_FALSE(this->files.exists(this->at("missing")));
}

TYPED_TEST_P(FilesContract, MissingParentDirectoriesAreMade) {
  EXPECT_TRUE(this->files.createDirectories(this->at("a/b/c")));
  EXPECT_TRUE(this->files.exists(this->at("a/b/c")));
  EXPECT_TRUE(this->files.createDirectories(this->at("a/b/c"))) << "it is there already";
  ASSERT_TRUE(this->files.write(this->at("file"), "text"));
  EXPECT_FALSE(this->files.createDirectories(this->at("file")));
  EXPECT_FALSE(this->files.createDirectories(this->at("file/below")));
}

TYPED_TEST_P(FilesContract, BytesAreAppendedToExistingFilesOnly) {
  EXPECT_EQ(this->files.append(this->at("file"), "one\n"), Files::Append::notOpened);
  EXPECT_FALSE(this->files.exists(this->at("file")));
  ASSERT_TRUE(this->files.write(this->at("file"), "one\n"));
  EXPECT_EQ(this->files.append(this->at("file"), "two\n"), Files::Append::done);
  EXPECT_EQ(this->files.append(this->at("file"), ""), Files::Append::done);
  EXPECT_EQ(this->contentOf("file"), "one\ntwo\n");
}

TYPED_TEST_P(FilesContract, AFileIsReadWholeOrNotAtAll) {
  ASSERT_TRUE(this->files.write(this->at("file"), std::string("a\0b", 3)));
  EXPECT_EQ(this->files.read(this->at("file"), 3), std::string("a\0b", 3));
  EXPECT_EQ(this->files.read(this->at("file"), 2), std::nullopt) << "it is longer";
  EXPECT_EQ(this->files.read(this->at("missing"), 100), std::nullopt);
  EXPECT_EQ(this->files.read(this->system.folder, 100), std::nullopt) << "a directory has no content";
}

TYPED_TEST_P(FilesContract, TheNamesInADirectoryAreListed) {
  ASSERT_TRUE(this->files.write(this->at("one"), ""));
  ASSERT_TRUE(this->files.createDirectories(this->at("two/three")));
  const auto names = this->files.list(this->system.folder);
  ASSERT_TRUE(names);
  EXPECT_THAT(*names, ::testing::UnorderedElementsAre("one", "two"));
  EXPECT_EQ(this->files.list(this->at("missing")), std::nullopt);
  EXPECT_EQ(this->files.list(this->at("one")), std::nullopt);
}

TYPED_TEST_P(FilesContract, ContentsAreComparedByteByByte) {
  ASSERT_TRUE(this->files.write(this->at("one"), "text"));
  ASSERT_TRUE(this->files.write(this->at("same"), "text"));
  ASSERT_TRUE(this->files.write(this->at("longer"), "text and more"));
  EXPECT_TRUE(this->files.contentsEqual(this->at("one"), this->at("same")));
  EXPECT_FALSE(this->files.contentsEqual(this->at("one"), this->at("longer")));
  EXPECT_FALSE(this->files.contentsEqual(this->at("one"), this->at("missing")));
  EXPECT_FALSE(this->files.contentsEqual(this->at("missing"), this->at("missing")));
}

TYPED_TEST_P(FilesContract, WhatIsNotThereCannotBeStarted) {
  EXPECT_FALSE(this->files.canBeStarted(this->at("missing")));
  EXPECT_FALSE(this->files.canBeStarted(this->system.folder)) << "a directory is no program";
}

TYPED_TEST_P(FilesContract, ACopyNeverReplacesAFile) {
  ASSERT_TRUE(this->files.write(this->at("one"), "text"));
  EXPECT_TRUE(this->files.copy(this->at("one"), this->at("two")));
  EXPECT_EQ(this->contentOf("two"), "text");
  ASSERT_TRUE(this->files.write(this->at("one"), "changed"));
  EXPECT_FALSE(this->files.copy(this->at("one"), this->at("two")));
  EXPECT_EQ(this->contentOf("two"), "text");
  EXPECT_FALSE(this->files.copy(this->at("missing"), this->at("three")));
  EXPECT_FALSE(this->files.exists(this->at("three")));
}

TYPED_TEST_P(FilesContract, ARenamedFileTakesThePlaceOfAnother) {
  ASSERT_TRUE(this->files.write(this->at("one"), "one"));
  ASSERT_TRUE(this->files.write(this->at("two"), "two"));
  EXPECT_TRUE(this->files.rename(this->at("one"), this->at("two")));
  EXPECT_EQ(this->contentOf("two"), "one");
  EXPECT_FALSE(this->files.exists(this->at("one")));
  EXPECT_FALSE(this->files.rename(this->at("one"), this->at("three")));
}

TYPED_TEST_P(FilesContract, ARemovedFileIsGone) {
  ASSERT_TRUE(this->files.write(this->at("file"), "text"));
  EXPECT_TRUE(this->files.remove(this->at("file")));
  EXPECT_FALSE(this->files.exists(this->at("file")));
  EXPECT_FALSE(this->files.remove(this->at("file")));
}

TYPED_TEST_P(FilesContract, AnEmptyDirectoryIsRemovedAndAFullOneStays) {
  ASSERT_TRUE(this->files.createDirectories(this->at("folder")));
  ASSERT_TRUE(this->files.write(this->at("folder/file"), "text"));
  EXPECT_FALSE(this->files.remove(this->at("folder")));
  EXPECT_TRUE(this->files.exists(this->at("folder/file")));
  EXPECT_TRUE(this->files.remove(this->at("folder/file")));
  EXPECT_TRUE(this->files.remove(this->at("folder")));
  EXPECT_FALSE(this->files.exists(this->at("folder")));
}

REGISTER_TYPED_TEST_SUITE_P(FilesContract, AFileExistsOnceItIsWritten, NewContentReplacesTheOld,
                            NothingIsWrittenIntoAMissingDirectory, MissingParentDirectoriesAreMade,
                            BytesAreAppendedToExistingFilesOnly, AFileIsReadWholeOrNotAtAll,
                            TheNamesInADirectoryAreListed, ContentsAreComparedByteByByte, WhatIsNotThereCannotBeStarted,
                            ACopyNeverReplacesAFile, ARenamedFileTakesThePlaceOfAnother, ARemovedFileIsGone,
                            AnEmptyDirectoryIsRemovedAndAFullOneStays);

}  // namespace tollvane::test
