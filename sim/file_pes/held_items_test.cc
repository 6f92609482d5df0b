// Report items kept in a temporary file and read back.
#include "sim/file_pes/held_items.h"

#include <gtest/gtest.h>

namespace {

HeldItem Point(uint64_t packet) {
  HeldItem held;
  held.item.isPoint = true;
  held.item.point.packet = packet;
  held.item.point.pcrPid = 0x1FFF;
  held.item.point.pcrBase = (uint64_t{1} << 33) - 1;
  held.item.point.time = -5;
  held.item.point.onFrameBoundary = true;
  held.place = int64_t{1} << 40;
  held.keyKnown = false;
  held.boundaryKnown = false;
  return held;
}

TEST(HeldItems, ComeBackAsTheyWentIn) {
  HeldItems items;
  EXPECT_TRUE(items.Empty());
  const int64_t first = items.Append(Point(7));
  HeldItem note;
  note.item.note = "note clock discontinuity";
  note.item.fails = true;
  const int64_t second = items.Append(note);
  ASSERT_EQ(0, first);
  ASSERT_GT(second, first);
  EXPECT_FALSE(items.Empty());

  // A key frame judges the first after it was written.
  HeldItem held;
  int64_t size = 0;
  ASSERT_TRUE(items.Read(first, held, size));
  EXPECT_EQ(second - first, size);
  held.keyKnown = true;
  held.item.point.keyFrameDelay = -190000;
  held.previousForKey = 99;
  held.previousForBoundary = 98;
  ASSERT_TRUE(items.Rewrite(first, held));

  HeldItem back;
  ASSERT_TRUE(items.Read(items.Front(), back, size));
  EXPECT_TRUE(back.item.isPoint);
  EXPECT_EQ(7u, back.item.point.packet);
  EXPECT_EQ(0x1FFF, back.item.point.pcrPid);
  EXPECT_EQ((uint64_t{1} << 33) - 1, back.item.point.pcrBase);
  EXPECT_EQ(-5, back.item.point.time);
  EXPECT_TRUE(back.item.point.onFrameBoundary);
  EXPECT_EQ(-190000, back.item.point.keyFrameDelay.value_or(0));
  EXPECT_EQ(int64_t{1} << 40, back.place);
  EXPECT_TRUE(back.keyKnown);
  EXPECT_FALSE(back.boundaryKnown);
  EXPECT_EQ(99, back.previousForKey);
  EXPECT_EQ(98, back.previousForBoundary);
  items.PopFront(size);

  ASSERT_TRUE(items.Read(items.Front(), back, size));
  EXPECT_FALSE(back.item.isPoint);
  EXPECT_TRUE(back.item.fails);
  EXPECT_EQ("note clock discontinuity", back.item.note);
  EXPECT_FALSE(back.item.point.keyFrameDelay);
  items.PopFront(size);
  EXPECT_TRUE(items.Empty());
  // Emptied, the file is written from its start again.
  EXPECT_EQ(0, items.Append(Point(8)));
}

TEST(HeldItems, MadeInTheFolderGivenOrElseInTheSystemsOne) {
  for (const char* folder : {".", "/nonexistent-folder"}) {
    HeldItems items;
    items.SetFolder(folder);
    ASSERT_EQ(0, items.Append(Point(1))) << folder;
    HeldItem back;
    int64_t size = 0;
    ASSERT_TRUE(items.Read(0, back, size)) << folder;
    EXPECT_EQ(1u, back.item.point.packet) << folder;
  }
}

TEST(HeldItems, NothingToReadBeforeAnythingIsWritten) {
  HeldItems items;
  HeldItem held;
  int64_t size = 0;
  EXPECT_FALSE(items.Read(0, held, size));
  EXPECT_FALSE(items.Rewrite(0, held));
}

}  // namespace
