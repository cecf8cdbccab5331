// For tests of the program that work on files: each test has a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "pictures/PictureFile.h"
#include "support/TestFiles.h"

namespace mv::host::test {

class FolderTest : public ::testing::Test {
protected:
    // A file of that folder as the program is told of it.
    std::string Text(const std::string& name) const { return PathToText(folder_ / name); }

    TempFolder folder_;
};

}  // namespace mv::host::test
