#include "store/regular_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "store/store_fixture.h"
#include "testing/scratch_dir.h"
#include "testing/sim_named_cases.h"

namespace {

std::string Data(const std::string& path) {
  std::ofstream(path) << "data";
  return path;
}

// What opening `path` gives: what it reads, "not regular", or why it failed.
// `notRegular` starts as `said`, so that the call must set it either way.
std::string Opened(const std::string& path, bool said) {
  bool notRegular = said;
  errno = 0;
  const int fd = OpenRegularFile(path.c_str(), notRegular);
  if (fd < 0) return notRegular ? "not regular" : std::strerror(errno);
  char text[8];
  const ssize_t length = read(fd, text, sizeof text);
  close(fd);
  return (notRegular ? "not regular but reads " : "reads ") +
         std::string(text, length < 0 ? 0 : length);
}

const Opening kOpenings[] = {
    {"RegularFileOpensForReading", Data, "reads data"},
    {"LinkToARegularFileOpens", LinkTo<Data>, "reads data"},
    {"MissingFileGivesItsReason", Missing, "No such file or directory"},
    {"DanglingLinkGivesItsReason", LinkTo<Missing>, "No such file or directory"},
    // Opened for reading, a FIFO with no writer would keep the open waiting.
    {"FifoIsNotOpened", Fifo, "not regular"},
    {"LinkToAFifoIsNotOpened", LinkTo<Fifo>, "not regular"},
    {"FolderIsNotRegular", Folder, "not regular"},
    {"DeviceIsNotRegular", Device, "not regular"},
    {"SocketIsNotRegular", Socket, "not regular"},
};

class RegularFile : public testing::TestWithParam<Opening> {};

TEST_P(RegularFile, Opens) {
  ScratchDir scratch("db-regular-file");
  const std::string path = GetParam().make(scratch.Path() + "/file");
  ASSERT_NE("", path);
  EXPECT_EQ(GetParam().opened, Opened(path, true));
  EXPECT_EQ(GetParam().opened, Opened(path, false));
}

INSTANTIATE_NAMED_CASES(RegularFileTest, RegularFile, kOpenings);

}  // namespace
