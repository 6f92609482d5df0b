#include <gtest/gtest.h>

#include <string>

#include "store/event_state_names.h"
#include "store/file_state_names.h"

using namespace StreamMgrApi;

TEST(EventStateNames, KnownValuesAreTenCharactersWithTheirBlanks) {
  EXPECT_STREQ("RecordCmpl", EventStateToStr(EventState(0)));
  EXPECT_STREQ("Transfered", EventStateToStr(EventState(1)));
  EXPECT_STREQ("Recording ", EventStateToStr(EventState(2)));
  EXPECT_STREQ("InPost    ", EventStateToStr(EventState(3)));
  EXPECT_STREQ("NotChecked", EventSplitStateToStr(SplitEventState(0)));
  EXPECT_STREQ("NotNeeded ", EventSplitStateToStr(SplitEventState(1)));
  EXPECT_STREQ("SplitPend ", EventSplitStateToStr(SplitEventState(2)));
  EXPECT_STREQ("AlreadySpl", EventSplitStateToStr(SplitEventState(3)));
  EXPECT_STREQ("ExportOnly", EventSplitStateToStr(SplitEventState(4)));
  EXPECT_EQ(10u, std::string(EventStateToStr(EventState(3))).size());
}

TEST(EventStateNames, OtherValuesAreInvalid) {
  EXPECT_STREQ("Invalid", EventStateToStr(EventState(4)));
  EXPECT_STREQ("Invalid", EventStateToStr(EventState(4294967295u)));
  EXPECT_STREQ("Invalid", EventSplitStateToStr(SplitEventState(5)));
  EXPECT_STREQ("Invalid", EventSplitStateToStr(SplitEventState(4294967295u)));
}

TEST(FileStateNames, KnownValues) {
  EXPECT_STREQ("Free    ", FileStateToStr(StreamFileState(0)));
  EXPECT_EQ(8u, std::string(FileStateToStr(StreamFileState(0))).size());
  EXPECT_STREQ("Allocatd", FileStateToStr(StreamFileState(1)));
  EXPECT_STREQ("UsedFree", FileStateToStr(StreamFileState(2)));
  EXPECT_STREQ("UsedKeep", FileStateToStr(StreamFileState(3)));
  EXPECT_STREQ("Init", FileTypeToStr(StreamFileType(0)));
  EXPECT_STREQ("Norm", FileTypeToStr(StreamFileType(1)));
  EXPECT_STREQ("Bkgd", FileTypeToStr(StreamFileType(2)));
  EXPECT_STREQ("Wiped", FileTypeToStr(StreamFileType(3)));
}

TEST(FileStateNames, OtherValuesAreInvalid) {
  EXPECT_STREQ("Invalid", FileStateToStr(StreamFileState(4)));
  EXPECT_STREQ("Invalid", FileStateToStr(StreamFileState(4294967295u)));
  EXPECT_STREQ("Invalid", FileTypeToStr(static_cast<StreamFileType>(-1)));
  EXPECT_STREQ("Invalid", FileTypeToStr(StreamFileType(4)));
}
