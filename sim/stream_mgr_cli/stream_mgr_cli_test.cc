// Extraction of stream files from a scratch disk folder.
#include "sim/stream_mgr_cli/stream_mgr_cli.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>

#include "testing/run_result.h"
#include "testing/scratch_dir.h"

namespace {

class StreamMgrCli : public ::testing::Test {
 protected:
  void SetUp() override { mkdir((disk_ + "/streams").c_str(), 0755); }

  void Write(const std::string& relative, const std::string& content) {
    std::ofstream(disk_ + "/" + relative, std::ios::binary) << content;
  }
  // The file's contents, or "missing".
  std::string Read(const std::string& relative) {
    std::ifstream in(disk_ + "/" + relative, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return in ? text.str() : "missing";
  }
  RunResult Extract(const std::string& number) {
    std::ostringstream out, err;
    const int status = ExtractStreamFile(disk_, number, out, err);
    return {out.str(), err.str(), status};
  }

  const ScratchDir scratch_{"stream_mgr_cli"};
  const std::string disk_ = scratch_.Path();
};

TEST_F(StreamMgrCli, CopiesTheStreamAndNamesTheCopy) {
  const std::string content(200000, '\x47');
  Write("streams/12.ts", content);
  EXPECT_RUN(Extract("12"), "copied: " + disk_ + "/12.ts\n", "", 0);
  EXPECT_EQ(content, Read("12.ts"));
  EXPECT_EQ(content, Read("streams/12.ts"));
}

TEST_F(StreamMgrCli, OverwritesAnEarlierCopy) {
  Write("streams/3.ts", "new");
  Write("3.ts", "old and longer");
  EXPECT_RUN(Extract("3"), "copied: " + disk_ + "/3.ts\n", "", 0);
  EXPECT_EQ("new", Read("3.ts"));
}

TEST_F(StreamMgrCli, MissingStreamIsReportedAndNothingIsCopied) {
  EXPECT_RUN(Extract("4"), "",
             "StreamMgrCli: cannot extract stream file 4: " + disk_ +
                 "/streams/4.ts: No such file or directory\n",
             1);
  EXPECT_EQ("missing", Read("4.ts"));
}

TEST_F(StreamMgrCli, NumbersOnly) {
  Write("streams/x.ts", "data");
  for (const std::string& bad :
       {std::string("x"), std::string(""), std::string("-1"), std::string("1 2"),
        std::string("../streams/1"), std::string(11, '1'), std::string("1\n")}) {
    EXPECT_RUN(Extract(bad), "", "StreamMgrCli: not a stream file number: " + bad + "\n", 1);
  }
}

TEST_F(StreamMgrCli, UnwritableDiskLeavesNoCopy) {
  Write("streams/5.ts", "data");
  mkdir((disk_ + "/5.ts").c_str(), 0755);  // the target is a folder
  EXPECT_RUN(Extract("5"), "",
             "StreamMgrCli: cannot extract stream file 5: " + disk_ + "/5.ts: Is a directory\n", 1);
}

}  // namespace
