#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/event_state_names.h"
#include "store/file_state_names.h"

using namespace StreamMgrApi;
using Names = std::vector<std::string>;

// The texts `toText` gives for each of `values`.
template <typename Enum>
Names TextsOf(const char* (*toText)(Enum), const std::vector<uint32_t>& values) {
  Names texts;
  for (uint32_t value : values) texts.push_back(toText(static_cast<Enum>(value)));
  return texts;
}

TEST(EventStateNames, KnownValuesAreTenCharactersWithTheirBlanks) {
  EXPECT_EQ((Names{"RecordCmpl", "Transfered", "Recording ", "InPost    "}),
            TextsOf(EventStateToStr, {0, 1, 2, 3}));
  EXPECT_EQ((Names{"NotChecked", "NotNeeded ", "SplitPend ", "AlreadySpl", "ExportOnly"}),
            TextsOf(EventSplitStateToStr, {0, 1, 2, 3, 4}));
}

TEST(EventStateNames, OtherValuesAreInvalid) {
  EXPECT_EQ(Names(2, "Invalid"), TextsOf(EventStateToStr, {4, 4294967295u}));
  EXPECT_EQ(Names(2, "Invalid"), TextsOf(EventSplitStateToStr, {5, 4294967295u}));
}

TEST(FileStateNames, KnownValues) {
  EXPECT_EQ((Names{"Free    ", "Allocatd", "UsedFree", "UsedKeep"}),
            TextsOf(FileStateToStr, {0, 1, 2, 3}));
  EXPECT_EQ((Names{"Init", "Norm", "Bkgd", "Wiped"}), TextsOf(FileTypeToStr, {0, 1, 2, 3}));
}

TEST(FileStateNames, OtherValuesAreInvalid) {
  EXPECT_EQ(Names(2, "Invalid"), TextsOf(FileStateToStr, {4, 4294967295u}));
  EXPECT_EQ(Names(2, "Invalid"), TextsOf(FileTypeToStr, {4294967295u, 4}));
}
