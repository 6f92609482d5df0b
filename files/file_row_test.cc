// The files table's heading and rows, printed with the daemon not running.
#include "files/file_row.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "cli/tool_context.h"
#include "testing/files_listing.h"
#include "testing/stream_capture.h"

namespace {

using StreamMgrApi::StreamfileRecordItem;
using StreamMgrApi::StreamFileState;
using StreamMgrApi::StreamFileType;

class FileRowTest : public ::testing::Test {
 protected:
  void SetUp() override { toolContext.running = false; }

  // Everything printed so far, once `file` is displayed.
  std::string Shown(StreamfileRecordItem file) {
    DisplayFile(file);
    return out_.Text();
  }

  StreamCapture out_{std::cout};
};

StreamfileRecordItem File() {
  StreamfileRecordItem file;
  file.number.SetValue(12);
  file.stream.SetValue(1);
  file.state = StreamMgrApi::FILE_USED_KEEP;
  file.startTick.SetValue(1596);
  file.stopTick.SetValue(2200);
  file.startTime.SetValue(1704164645);  // 01/02/24 03:04:05 UTC
  file.stopTime.SetValue(1704164945);
  file.previous.SetValue(11);
  file.next.SetValue(13);
  file.size.SetValue(98566144);
  file.type = StreamMgrApi::FILE_TYPE_NORMAL;
  return file;
}

// File() as its row.
const char kFileLine[] =
    "    12       1  UsedKeep  98566144  01/02/24 03:04:05  03:09:05        1596        2200    11    13  Norm  \n";

TEST_F(FileRowTest, Heading) {
  PrintFileHeading();
  EXPECT_EQ(files_listing::kHeading, out_.Text());
}

TEST_F(FileRowTest, OneRow) { EXPECT_EQ(kFileLine, Shown(File())); }

TEST_F(FileRowTest, FreeStateKeepsItsBlanks) {
  StreamfileRecordItem file = File();
  file.state = StreamMgrApi::FILE_FREE;
  file.type = StreamMgrApi::FILE_TYPE_INIT;
  EXPECT_EQ(
      "    12       1  Free      98566144  01/02/24 03:04:05  03:09:05        1596        2200    11    13  Init  \n",
      Shown(file));
}

TEST_F(FileRowTest, InvalidStateIsPaddedAndWideTypesPushTheSeparator) {
  StreamfileRecordItem file = File();
  file.state = static_cast<StreamFileState>(7);
  file.type = StreamMgrApi::FILE_TYPE_WIPED;
  DisplayFile(file);
  file.type = static_cast<StreamFileType>(-1);
  DisplayFile(file);
  file.type = StreamMgrApi::FILE_TYPE_BACKGROUND;
  file.state = StreamMgrApi::FILE_ALLOCATED;
  EXPECT_EQ(
      "    12       1   Invalid  98566144  01/02/24 03:04:05  03:09:05        1596        2200    11    13  Wiped  \n"
      "    12       1   Invalid  98566144  01/02/24 03:04:05  03:09:05        1596        2200    11    13  Invalid  \n"
      "    12       1  Allocatd  98566144  01/02/24 03:04:05  03:09:05        1596        2200    11    13  Bkgd  \n",
      Shown(file));
}

TEST_F(FileRowTest, WideNumbersPushTheRestRight) {
  StreamfileRecordItem file;
  for (UIntItem* field :
       {&file.number, &file.stream, &file.startTick, &file.stopTick, &file.startTime,
        &file.stopTime, &file.previous, &file.next, &file.size}) {
    field->SetValue(4294967295u);
  }
  file.state = static_cast<StreamFileState>(4294967295u);
  file.type = static_cast<StreamFileType>(4);
  EXPECT_EQ(
      "4294967295  4294967295   Invalid  4294967295  02/07/06 06:28:15  06:28:15  4294967295  4294967295  4294967295  4294967295  Invalid  \n",
      Shown(file));
}

TEST_F(FileRowTest, ZeroRecordIsTheEpoch) {
  EXPECT_EQ(
      "     0       0  Free             0  01/01/70 00:00:00  00:00:00           0           0     0     0  Init  \n",
      Shown(StreamfileRecordItem()));
}

TEST_F(FileRowTest, WithoutTheDaemonTheTableSizeIsShown) {
  toolContext.fileAccess.InitializeFileSize(12, 5);
  StreamfileRecordItem file = File();
  file.next.SetValue(0);
  DisplayFile(file);
  EXPECT_EQ(98566144u, file.size.GetValue());
  EXPECT_EQ(
      "    12       1  UsedKeep  98566144  01/02/24 03:04:05  03:09:05        1596        2200    11     0  Norm  \n",
      out_.Text());
}

TEST_F(FileRowTest, LeftAlignmentLeftByAnotherHandlerDoesNotLeak) {
  std::cout << std::left;
  EXPECT_EQ(kFileLine, Shown(File()));
}

}  // namespace
