// IsStaged and EventSize on metadata files in a scratch folder.
#include "events/metadata_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include "testing/scratch_dir.h"
#include "testing/stream_capture.h"

namespace {

// What EventSize gave, and what it wrote to standard error.
struct Sized {
  int64_t bytes;
  std::string errors;
  bool operator==(const Sized& other) const {
    return bytes == other.bytes && errors == other.errors;
  }
};

void PrintTo(const Sized& sized, std::ostream* out) {
  *out << sized.bytes << " bytes, errors \"" << sized.errors << "\"";
}

// The size of a data file that reads as its whole stream file: one segment
// with no offsets.
constexpr int64_t kWhole = kStreamFileBytes;

class MetadataFilesTest : public ::testing::Test {
 protected:
  std::string At(const std::string& name) const { return folder_.Path() + "/" + name; }
  void Write(const std::string& name, const std::string& content) const {
    std::ofstream out(At(name), std::ios::binary | std::ios::trunc);
    out << content;
    ASSERT_TRUE(out.good()) << name;
  }
  void MakeFolder(const std::string& name) const { ASSERT_EQ(0, mkdir(At(name).c_str(), 0755)); }
  // A staged pair: the description and a data file of `dataBytes` bytes.
  void Stage(const std::string& reid, const std::string& xml, size_t dataBytes = 100) const {
    Write(reid + ".xml", xml);
    Write(reid + ".mtd", std::string(dataBytes, 'm'));
  }
  bool Staged(const std::string& reid) const { return IsStaged(At(reid)); }
  // The size of "r" staged with `xml` and a data file of `dataBytes` bytes.
  Sized StagedSize(const std::string& xml, size_t dataBytes) const {
    Stage("r", xml, dataBytes);
    return Size("r");
  }
  Sized Size(const std::string& reid) const {
    const StreamCapture capture(std::cerr);
    const int64_t bytes = EventSizeIn(folder_.Path() + "/", reid);
    return {bytes, capture.Text()};
  }
  // The complaint that the description of `reid` cannot be loaded.
  std::string NotLoaded(const std::string& reid = "r") const {
    return "Failed to load XML file: " + At(reid + ".xml");
  }

 private:
  ScratchDir folder_{"metadata"};
};

// A description whose one stream holds `segments`.
std::string Description(const std::string& segments) {
  return "<?xml version=\"1.0\"?>\n<recording-event>\n <video>\n  <streams>\n   <stream>\n" +
         segments + "\n   </stream>\n  </streams>\n </video>\n</recording-event>\n";
}

std::string Segment(const std::string& attributes) {
  return "    <segment name=\"1.ts\" src=\"1\" " + attributes + "/>\n";
}

// The streams element of a description holding `streams`.
std::string Streams(const std::string& streams) {
  return "<recording-event><video><streams>" + streams + "</streams></video></recording-event>";
}

TEST_F(MetadataFilesTest, StagedWhenBothFilesExist) {
  Stage("r", Description(Segment("")));
  EXPECT_TRUE(Staged("r"));
}

TEST_F(MetadataFilesTest, NotStagedWithTheDescriptionAlone) {
  Write("r.xml", Description(Segment("")));
  EXPECT_FALSE(Staged("r"));
}

TEST_F(MetadataFilesTest, NotStagedWithTheDataFileAlone) {
  Write("r.mtd", "data");
  EXPECT_FALSE(Staged("r"));
}

// The paths probed, and a probe that finds every one or only data files.
std::vector<std::string> probed;
bool ProbeFindsAll(const std::string& path) {
  probed.push_back(path);
  return true;
}
bool ProbeFindsDataFilesOnly(const std::string& path) {
  return ProbeFindsAll(path) && path.size() > 4 && path.compare(path.size() - 4, 4, ".mtd") == 0;
}

TEST(IsStagedProbes, DataFileIsNotProbedWhenTheDescriptionIsMissing) {
  probed.clear();
  EXPECT_FALSE(IsStagedWith("/x/r", ProbeFindsDataFilesOnly));
  EXPECT_EQ(std::vector<std::string>{"/x/r.xml"}, probed);
}

TEST(IsStagedProbes, DescriptionThenDataFile) {
  probed.clear();
  EXPECT_TRUE(IsStagedWith("/x/r", ProbeFindsAll));
  EXPECT_EQ((std::vector<std::string>{"/x/r.xml", "/x/r.mtd"}), probed);
}

TEST_F(MetadataFilesTest, OnlyExistenceCounts) {
  // A folder and an unreadable file are still "there".
  MakeFolder("r.xml");
  Write("r.mtd", "");
  ASSERT_EQ(0, chmod(At("r.mtd").c_str(), 0));
  EXPECT_TRUE(Staged("r"));
}

TEST_F(MetadataFilesTest, MissingDataFileGivesZeroEvenWithAValidDescription) {
  Write("r.xml", Description(Segment("")));
  EXPECT_EQ((Sized{0, "Failed to stat file: " + At("r.mtd")}), Size("r"));
}

TEST_F(MetadataFilesTest, MissingDescriptionGivesTheDataFileSize) {
  Write("r.mtd", std::string(321, 'm'));
  EXPECT_EQ((Sized{321, NotLoaded()}), Size("r"));
}

TEST_F(MetadataFilesTest, MalformedDescriptionGivesTheDataFileSize) {
  EXPECT_EQ((Sized{77, NotLoaded()}),
            StagedSize("<recording-event><video><streams><stream><segment name='a' src='1'/>", 77));
}

TEST_F(MetadataFilesTest, EmptyDescriptionGivesTheDataFileSize) {
  EXPECT_EQ((Sized{12, NotLoaded()}), StagedSize("", 12));
}

TEST_F(MetadataFilesTest, DescriptionThatIsAFolderGivesTheDataFileSize) {
  MakeFolder("r.xml");
  Write("r.mtd", std::string(5, 'm'));
  EXPECT_EQ((Sized{5, NotLoaded()}), Size("r"));
}

TEST_F(MetadataFilesTest, DeeplyNestedDescriptionIsRefusedNotRecursedInto) {
  std::string xml;
  for (int i = 0; i < 100000; ++i) xml += "<n>";
  for (int i = 0; i < 100000; ++i) xml += "</n>";
  EXPECT_EQ((Sized{9, NotLoaded()}), StagedSize(xml, 9));
}

TEST_F(MetadataFilesTest, HugeDescriptionIsSummedWhole) {
  std::string segments;
  for (int i = 0; i < 200000; ++i) segments += Segment("start-offset=\"1\" stop-offset=\"11\"");
  EXPECT_EQ((Sized{200000 * 10, ""}), StagedSize(Description(segments), 0));
}

TEST_F(MetadataFilesTest, IncompleteElementPathGivesTheDataFileSizeSilently) {
  for (const std::string xml :
       {"<other/>", "<recording-event><audio/></recording-event>",
        "<recording-event><video><stream/></video></recording-event>",
        "<recording-event><video><streams><segment name='a' src='1'/></streams></video>"
        "</recording-event>"}) {
    EXPECT_EQ((Sized{40, ""}), StagedSize(xml, 40)) << xml;
  }
}

TEST_F(MetadataFilesTest, SegmentContributions) {
  struct Case {
    std::string attributes;
    int64_t bytes;
  };
  const Case cases[] = {
      {"", kWhole},
      {"start-offset=\"1000\"", kWhole - 1000},
      {"start-offset=\"1000\" stop-offset=\"5000\"", 4000},
      {"start-offset=\"5000\" stop-offset=\"1000\"", -4000},
      {"stop-offset=\"-1\"", 0},
      {"start-offset=\"1000\" stop-offset=\"-1\"", 0},
      {"start-offset=\"-1000\" stop-offset=\"-1\"", 0},
      {"start-offset=\"-1000\"", 0},
      {"start-offset=\"-1000\" stop-offset=\"5000\"", 6000},
      {"start-offset=\"0\" stop-offset=\"0\"", kWhole},
      // Out-of-range numbers wrap to 32 bits as the XML library reads them.
      {"start-offset=\"4294968296\"", kWhole - 1000},
      {"start-offset=\"0x10\" stop-offset=\" 116abc\"", 100},
      // 2147483647 - (-2147483648) wraps to -1.
      {"start-offset=\"-2147483648\" stop-offset=\"2147483647\"", -1},
      // 98566144 - 2147483647 stays in range: a start past the file's end lowers the total.
      {"start-offset=\"2147483647\"", kWhole - 2147483647},
  };
  for (const Case& c : cases) {
    EXPECT_EQ((Sized{100 + c.bytes, ""}), StagedSize(Description(Segment(c.attributes)), 100))
        << c.attributes;
  }
}

TEST_F(MetadataFilesTest, SegmentsAndStreamsAreSummed) {
  EXPECT_EQ((Sized{1 + kWhole + 10 + 2, ""}),
            StagedSize(Streams("<stream><a name='x' src='1'/><b name='y' src='2' stop-offset='10'/>"
                               "</stream><stream><c name='z' src='3' start-offset='1' "
                               "stop-offset='3'/></stream>"),
                       1));
}

TEST_F(MetadataFilesTest, SiblingsAfterTheFirstStreamCountWhateverTheirName) {
  EXPECT_EQ((Sized{30, ""}),
            StagedSize(Streams("<other><s name='x' src='1' stop-offset='1000'/></other>"
                               "<stream><s name='x' src='1' stop-offset='10'/></stream>"
                               "<audio><s name='x' src='1' stop-offset='20'/></audio>"),
                       0));
}

TEST_F(MetadataFilesTest, StreamOpeningWithACommentContributesNothing) {
  EXPECT_EQ(
      (Sized{10, ""}),
      StagedSize(Streams("<stream><!-- cut --><s name='x' src='1' stop-offset='1000'/></stream>"
                         "<stream>text<s name='x' src='1' stop-offset='100'/></stream>"
                         "<stream>\n   <s name='x' src='1' stop-offset='10'/></stream>"
                         "<stream/>"),
                 0));
}

TEST_F(MetadataFilesTest, InvalidStartStopsTheWholeComputation) {
  EXPECT_EQ((Sized{11, "Start offset invalid"}),
            StagedSize(Streams("<stream><s name='x' src='1' stop-offset='10'/>"
                               "<s name='x' src='1' start-offset='abc' stop-offset='20'/>"
                               "<s name='x' src='1' stop-offset='40'/></stream>"
                               "<stream><s name='x' src='1' stop-offset='80'/></stream>"),
                       1));
}

TEST_F(MetadataFilesTest, MessagesOfUnusableSegments) {
  struct Case {
    std::string segment;
    std::string message;
  };
  const Case cases[] = {
      {"<s src='1'/>", ":'name' attribute missing"},
      {"<s name='x' start-offset='1.5x' src='1'/>", ""},  // digits first: read as 1
      {"<s name='x' start-offset='' src='1'/>", "Start offset invalid"},
      {"<s name='x' stop-offset='ten' src='1'/>", "Stop offset invalid"},
      {"<s name='x'/>", "Source file number missing"},
      {"<s name='x' src='one'/>", "Source file number missing"},
      // The first wrong attribute in the order name, start, stop, src is reported.
      {"<s start-offset='a' stop-offset='b'/>", ":'name' attribute missing"},
      {"<s name='x' start-offset='a' stop-offset='b'/>", "Start offset invalid"},
      {"<s name='x' stop-offset='b'/>", "Stop offset invalid"},
  };
  for (const Case& c : cases) {
    const int64_t bytes = c.message.empty() ? 3 + 7 + kWhole - 1 : 3 + 7;
    EXPECT_EQ((Sized{bytes, c.message}),
              StagedSize(Description("<s name='first' src='1' stop-offset='7'/>" + c.segment), 3))
        << c.segment;
  }
}

TEST_F(MetadataFilesTest, DataFileSizeIsTakenFromStatNotFromReading) {
  Stage("r", "<none/>", 64);
  ASSERT_EQ(0, chmod(At("r.mtd").c_str(), 0));
  EXPECT_EQ((Sized{64, ""}), Size("r"));
}

TEST_F(MetadataFilesTest, DataFileThatIsAFolderCountsTheFolderSize) {
  Write("r.xml", "<none/>");
  MakeFolder("r.mtd");
  struct stat info;
  ASSERT_EQ(0, stat(At("r.mtd").c_str(), &info));
  EXPECT_EQ((Sized{info.st_size, ""}), Size("r"));
}

TEST_F(MetadataFilesTest, DataFileSizeIsCutTo32BitsAndSignExtended) {
  Write("r.xml", "<none/>");
  Write("r.mtd", "");
  ASSERT_EQ(0, truncate(At("r.mtd").c_str(), 0xC0000010LL));  // sparse
  EXPECT_EQ(-1073741808, Size("r").bytes);
  ASSERT_EQ(0, truncate(At("r.mtd").c_str(), 0x100000020LL));
  EXPECT_EQ(32, Size("r").bytes);
}

TEST_F(MetadataFilesTest, ReidsAreUsedAsTheyAre) {
  for (const std::string reid : {"a b", "it's", "caf\xc3\xa9", "raw\xff\xfe", "-dash"}) {
    Stage(reid, Description(Segment("stop-offset=\"5\"")), 2);
    EXPECT_TRUE(Staged(reid)) << reid;
    EXPECT_EQ(7, Size(reid).bytes) << reid;
  }
}

TEST_F(MetadataFilesTest, OverlongReidIsNotStagedAndHasNoSize) {
  const std::string reid(1000, 'r');
  EXPECT_FALSE(Staged(reid));
  EXPECT_EQ((Sized{0, "Failed to stat file: " + At(reid + ".mtd")}), Size(reid));
}

TEST(MetadataDirectory, IsTheRecordersFixedFolder) {
  EXPECT_STREQ("/mnt/hd/connectionmgr/", kMetadataDirectory);
}

}  // namespace
