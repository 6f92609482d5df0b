#include "store/regular_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "testing/scratch_dir.h"

namespace {

class RegularFileTest : public ::testing::Test {
 protected:
  void TearDown() override {
    if (descriptor_ >= 0) close(descriptor_);
  }
  // Opens `path`, keeping the descriptor to close.
  int Open(const std::string& path) {
    descriptor_ = OpenRegularFile(path.c_str(), notRegular_);
    return descriptor_;
  }

  ScratchDir scratch_{"db-regular-file"};
  std::string file_ = scratch_.Path() + "/file";
  int descriptor_ = -1;
  bool notRegular_ = true;
};

TEST_F(RegularFileTest, RegularFileOpensForReading) {
  std::ofstream(file_) << "data";
  ASSERT_LE(0, Open(file_));
  EXPECT_FALSE(notRegular_);
  char text[8] = {};
  EXPECT_EQ(4, read(descriptor_, text, sizeof text));
  EXPECT_EQ(std::string("data"), text);
}

TEST_F(RegularFileTest, LinkToARegularFileOpens) {
  std::ofstream(file_) << "data";
  const std::string link = scratch_.Path() + "/link";
  ASSERT_EQ(0, symlink(file_.c_str(), link.c_str()));
  EXPECT_LE(0, Open(link));
  EXPECT_FALSE(notRegular_);
}

TEST_F(RegularFileTest, MissingFileGivesItsReason) {
  EXPECT_EQ(-1, Open(file_));
  EXPECT_FALSE(notRegular_);
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(RegularFileTest, DanglingLinkGivesItsReason) {
  ASSERT_EQ(0, symlink("nowhere", file_.c_str()));
  EXPECT_EQ(-1, Open(file_));
  EXPECT_FALSE(notRegular_);
  EXPECT_EQ(ENOENT, errno);
}

// Opened for reading, a FIFO with no writer would keep the open waiting.
TEST_F(RegularFileTest, FifoIsNotOpened) {
  ASSERT_EQ(0, mkfifo(file_.c_str(), 0666));
  EXPECT_EQ(-1, Open(file_));
  EXPECT_TRUE(notRegular_);
}

TEST_F(RegularFileTest, FolderAndDeviceAreNotRegular) {
  ASSERT_EQ(0, mkdir(file_.c_str(), 0755));
  EXPECT_EQ(-1, Open(file_));
  EXPECT_TRUE(notRegular_);
  notRegular_ = false;
  EXPECT_EQ(-1, Open("/dev/null"));
  EXPECT_TRUE(notRegular_);
}

}  // namespace
