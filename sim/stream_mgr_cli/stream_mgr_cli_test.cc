// Extraction of stream files from a scratch disk folder.
#include "sim/stream_mgr_cli/stream_mgr_cli.h"
#include "testing/scratch_dir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

class StreamMgrCli : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(disk_.empty());
    mkdir((disk_ + "/streams").c_str(), 0755);
  }

  void WriteStream(const std::string& name, const std::string& content) {
    std::ofstream(disk_ + "/streams/" + name, std::ios::binary) << content;
  }
  std::string Read(const std::string& relative) {
    std::ifstream in(disk_ + "/" + relative, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
  bool Exists(const std::string& relative) {
    struct stat info;
    return stat((disk_ + "/" + relative).c_str(), &info) == 0;
  }
  int Extract(const std::string& number) {
    out_.str("");
    err_.str("");
    return ExtractStreamFile(disk_, number, out_, err_);
  }

  const ScratchDir scratch_{"stream_mgr_cli"};
  const std::string disk_ = scratch_.Path();
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(StreamMgrCli, CopiesTheStreamAndNamesTheCopy) {
  const std::string content(200000, '\x47');
  WriteStream("12.ts", content);
  EXPECT_EQ(0, Extract("12"));
  EXPECT_EQ("copied: " + disk_ + "/12.ts\n", out_.str());
  EXPECT_EQ("", err_.str());
  EXPECT_EQ(content, Read("12.ts"));
  EXPECT_EQ(content, Read("streams/12.ts"));
}

TEST_F(StreamMgrCli, OverwritesAnEarlierCopy) {
  WriteStream("3.ts", "new");
  std::ofstream(disk_ + "/3.ts") << "old and longer";
  EXPECT_EQ(0, Extract("3"));
  EXPECT_EQ("new", Read("3.ts"));
}

TEST_F(StreamMgrCli, MissingStreamIsReportedAndNothingIsCopied) {
  EXPECT_EQ(1, Extract("4"));
  EXPECT_EQ("", out_.str());
  EXPECT_EQ("StreamMgrCli: cannot extract stream file 4: " + disk_ +
                "/streams/4.ts: No such file or directory\n",
            err_.str());
  EXPECT_FALSE(Exists("4.ts"));
}

TEST_F(StreamMgrCli, NumbersOnly) {
  WriteStream("x.ts", "data");
  for (const std::string& bad :
       {std::string("x"), std::string(""), std::string("-1"), std::string("1 2"),
        std::string("../streams/1"), std::string(11, '1'), std::string("1\n")}) {
    EXPECT_EQ(1, Extract(bad)) << bad;
    EXPECT_EQ("", out_.str()) << bad;
    EXPECT_EQ("StreamMgrCli: not a stream file number: " + bad + "\n", err_.str()) << bad;
  }
}

TEST_F(StreamMgrCli, UnwritableDiskLeavesNoCopy) {
  WriteStream("5.ts", "data");
  mkdir((disk_ + "/5.ts").c_str(), 0755);  // the target is a folder
  EXPECT_EQ(1, Extract("5"));
  EXPECT_EQ("", out_.str());
  EXPECT_EQ("StreamMgrCli: cannot extract stream file 5: " + disk_ + "/5.ts: Is a directory\n",
            err_.str());
}

}  // namespace
