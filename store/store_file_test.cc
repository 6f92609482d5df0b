#include "store/store_file.h"
#include "testing/scratch_dir.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

namespace {

class StoreFileTest : public ::testing::Test {
 protected:
  void TearDown() override { sqlite3_close(database_); }

  // Opens `path` read-write as the tool does and returns the result code.
  int Open(const std::string& path, int create = 0) {
    return OpenStoreFile(path.c_str(), &database_, SQLITE_OPEN_READWRITE | create);
  }
  // The first statement's result: it reads the file's first page.
  int FirstRead() {
    return sqlite3_exec(database_, "select count(*) from sqlite_master", nullptr, nullptr, nullptr);
  }
  // Makes a store with a table at `path` and closes it again.
  void MakeStore(const std::string& path) {
    ASSERT_EQ(SQLITE_OK, Open(path, SQLITE_OPEN_CREATE));
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(database_, "create table t(a)", nullptr, nullptr, nullptr));
    sqlite3_close(database_);
    database_ = nullptr;
  }

  // Opening `path` is refused, and so is the first read.
  void ExpectRefused(const std::string& path, int create = 0) {
    EXPECT_EQ(SQLITE_CANTOPEN, Open(path, create));
    EXPECT_NE(SQLITE_OK, FirstRead());
  }

  ScratchDir scratch_{"db-store-file"};
  std::string store_ = scratch_.Path() + "/stream.db";
  sqlite3* database_ = nullptr;
};

TEST_F(StoreFileTest, RegularStoreOpensAndReads) {
  MakeStore(store_);
  ASSERT_EQ(SQLITE_OK, Open(store_));
  EXPECT_EQ(SQLITE_OK, FirstRead());
}

TEST_F(StoreFileTest, MissingStoreWithoutCreateCannotBeOpened) {
  ExpectRefused(store_);
  EXPECT_FALSE(std::filesystem::exists(store_));
}

// Opened, a FIFO with no writer would keep the first read waiting for ever.
TEST_F(StoreFileTest, FifoIsRefusedAsAFileThatCannotBeOpened) {
  ASSERT_EQ(0, mkfifo(store_.c_str(), 0666));
  ExpectRefused(store_, SQLITE_OPEN_CREATE);
  EXPECT_TRUE(std::filesystem::is_fifo(std::filesystem::symlink_status(store_)));
}

TEST_F(StoreFileTest, SocketIsRefusedAsAFileThatCannotBeOpened) {
  const int s = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(store_.size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, store_.c_str());
  ASSERT_EQ(0, bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address));
  close(s);
  ExpectRefused(store_);
}

TEST_F(StoreFileTest, DeviceIsRefusedAsAFileThatCannotBeOpened) { ExpectRefused("/dev/null"); }

// A link is followed to what it leads to: a FIFO behind one is refused too.
TEST_F(StoreFileTest, LinkToAFifoIsRefused) {
  const std::string fifo = scratch_.Path() + "/fifo";
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0666));
  ASSERT_EQ(0, symlink(fifo.c_str(), store_.c_str()));
  ExpectRefused(store_);
}

// SQLite would create the file that a dangling link names, wherever it is.
TEST_F(StoreFileTest, DanglingLinkCreatesNothing) {
  const std::string target = scratch_.Path() + "/elsewhere.db";
  ASSERT_EQ(0, symlink(target.c_str(), store_.c_str()));
  ExpectRefused(store_, SQLITE_OPEN_CREATE);
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(StoreFileTest, FolderCannotBeOpened) {
  ASSERT_EQ(0, mkdir(store_.c_str(), 0755));
  ExpectRefused(store_);
}

// A link to a store is followed, and the store it leads to is opened.
TEST_F(StoreFileTest, LinkToAStoreOpensIt) {
  const std::string target = scratch_.Path() + "/elsewhere.db";
  MakeStore(target);
  ASSERT_EQ(0, symlink(target.c_str(), store_.c_str()));
  ASSERT_EQ(SQLITE_OK, Open(store_, SQLITE_OPEN_CREATE));
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(database_, "select a from t", nullptr, nullptr, nullptr));
}

// Refusing one store leaves SQLite's own file system the default for others.
TEST_F(StoreFileTest, RefusalLeavesOtherOpensAlone) {
  ASSERT_EQ(0, mkfifo(store_.c_str(), 0666));
  EXPECT_EQ(SQLITE_CANTOPEN, Open(store_));
  sqlite3* other = nullptr;
  const std::string regular = scratch_.Path() + "/other.db";
  EXPECT_EQ(SQLITE_OK, sqlite3_open(regular.c_str(), &other));
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(other, "create table t(a)", nullptr, nullptr, nullptr));
  sqlite3_close(other);
}

}  // namespace
