// The man page db.1: it renders without a single warning, and it documents
// every option of the option table and the examples of the usage text.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/option_table.h"
#include "cli/usage.h"
#include "ship/shell.h"
#include "testing/stream_capture.h"

namespace {

std::string ManPage() { return SourceDir() + "/docs/db.1"; }

// The page as plain text on lines long enough that nothing wraps, without
// hyphenation or emphasis, so that it can be searched.
std::string PlainText(const std::string& page) {
  const RunResult result =
      RunShell("LC_ALL=C groff -man -Tascii -rLL=250n -rHY=0 -P-cbou " + ShellQuote(page));
  EXPECT_EQ(0, result.status) << result.err;
  return result.out;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The lines of section `name`: those after its heading (a line of its own at
// the left margin) up to the next heading.
std::vector<std::string> Section(const std::string& text, const std::string& name) {
  std::vector<std::string> section;
  bool inside = false;
  for (const std::string& line : Lines(text)) {
    const bool heading = !line.empty() && line[0] != ' ';
    if (heading) {
      if (inside) break;
      inside = line == name;
    } else if (inside) {
      section.push_back(line);
    }
  }
  EXPECT_TRUE(inside) << "no section " << name;
  return section;
}

// Words joined by single blanks: justified lines stretch their blanks.
std::string Squeezed(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    std::istringstream words(line);
    for (std::string word; words >> word;) text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

// The tags of the option lists of a section: lines indented by exactly seven
// blanks that start with a dash, up to the gap before the explanation when a
// short tag shares its line with it.
std::vector<std::string> OptionTags(const std::vector<std::string>& section) {
  std::vector<std::string> tags;
  for (const std::string& line : section) {
    if (line.compare(0, 8, "       -") == 0) tags.push_back(line.substr(7, line.find("  ", 7) - 7));
  }
  return tags;
}

// True when `tags` name the option `name` ("-e", "--events") as a word of its
// own: followed by nothing, a comma or a blank.
bool Tagged(const std::vector<std::string>& tags, const std::string& name) {
  for (const std::string& tag : tags) {
    for (size_t at = tag.find(name); at != std::string::npos; at = tag.find(name, at + 1)) {
      const bool starts = at == 0 || tag[at - 1] == ' ';
      const size_t end = at + name.size();
      const bool ends = end == tag.size() || tag[end] == ',' || tag[end] == ' ';
      if (starts && ends) return true;
    }
  }
  return false;
}

std::string UsageText() {
  const StreamCapture captured(std::cout);
  PrintUsage("db", nullptr);
  return captured.Text();
}

}  // namespace

TEST(ManPage, RendersWithoutWarnings) {
  const RunResult result = RunShell("LC_ALL=C groff -man -ww -z -Tutf8 " + ShellQuote(ManPage()));
  EXPECT_EQ("", result.err);
  EXPECT_EQ("", result.out);
  EXPECT_EQ(0, result.status);
}

TEST(ManPage, TheRenderingCheckCatchesWarnings) {
  ScratchDir scratch;
  const std::string page = scratch.Path() + "/broken.1";
  std::ofstream(page) << ".TH BROKEN 1\n.SH NAME\nbroken \\- a page\n.XY undefined macro\n";
  const RunResult result = RunShell("LC_ALL=C groff -man -ww -z -Tutf8 " + ShellQuote(page));
  EXPECT_NE(std::string::npos, result.err.find("warning")) << result.err;
}

TEST(ManPage, ManShowsIt) {
  const RunResult result = RunShell("MANWIDTH=80 man -l " + ShellQuote(ManPage()));
  ASSERT_EQ(0, result.status) << result.err;
  EXPECT_EQ(0u, result.out.find("DB(1)")) << result.out.substr(0, 200);
  EXPECT_NE(std::string::npos,
            result.out.find("db - list, check and clean up the recorder's stream store"));
}

TEST(ManPage, DocumentsEveryOptionOfTheUsageTextWithItsLongForms) {
  const std::string text = PlainText(ManPage());
  const std::vector<std::string> tags = OptionTags(Section(text, "OPTIONS"));
  for (const char* c = kShortOptions; *c != '\0'; ++c) {
    if (*c == ':' || std::isupper(static_cast<unsigned char>(*c))) continue;
    EXPECT_TRUE(Tagged(tags, std::string("-") + *c)) << "-" << *c;
  }
  for (const struct option* o = kLongOptions; o->name != nullptr; ++o) {
    const std::string name = std::string("--") + o->name;
    EXPECT_TRUE(Tagged(tags, name)) << name;
    if (o->has_arg == required_argument) {
      // The argument is named after the option in its tag.
      bool named = false;
      for (const std::string& tag : tags) {
        const size_t at = tag.find(name + " ");
        named = named || (at != std::string::npos && at + name.size() + 1 < tag.size());
      }
      EXPECT_TRUE(named) << name << " without its argument";
    }
  }
}

TEST(ManPage, HiddenOptionsHaveASectionOfTheirOwn) {
  const std::string text = PlainText(ManPage());
  const std::vector<std::string> options = OptionTags(Section(text, "OPTIONS"));
  const std::vector<std::string> hidden = OptionTags(Section(text, "HIDDEN OPTIONS"));
  int count = 0;
  for (const char* c = kShortOptions; *c != '\0'; ++c) {
    if (!std::isupper(static_cast<unsigned char>(*c))) continue;
    ++count;
    const std::string name = std::string("-") + *c;
    EXPECT_TRUE(Tagged(hidden, name)) << name;
    EXPECT_FALSE(Tagged(options, name)) << name << " is hidden";
  }
  EXPECT_EQ(3, count);
  EXPECT_EQ((std::vector<std::string>{"-E", "-R reid", "-P"}), hidden);
}

TEST(ManPage, SynopsisNamesEveryOptionOfTheUsageText) {
  const std::string synopsis = Squeezed(Section(PlainText(ManPage()), "SYNOPSIS"));
  EXPECT_EQ(
      "db [-h] [-a analysis] [-d reid] [--deleteall] [-e] [-f selection] [-r reid] [-p] [-s] "
      "[-t] [-u] ...",
      synopsis);
}

TEST(ManPage, ShowsTheFileSelectionExamplesOfTheUsageText) {
  const std::string section = Squeezed(Section(PlainText(ManPage()), "FILE SELECTION"));
  int examples = 0;
  for (const std::string& line : Lines(UsageText())) {
    const size_t at = line.find("Example: ");
    if (at == std::string::npos) continue;
    ++examples;
    // "Example: db -f s0f = display free files ..." becomes the example's tag
    // and its explanation.
    const std::string example = line.substr(at + 9);
    const size_t equals = example.find(" = ");
    ASSERT_NE(std::string::npos, equals) << line;
    const std::string shown = example.substr(0, equals) + " " + example.substr(equals + 3);
    EXPECT_NE(std::string::npos, section.find(shown)) << shown;
  }
  EXPECT_EQ(4, examples);
}

TEST(ManPage, ExplainsTheAnalysisLettersAsTheUsageTextDoes) {
  const std::string section = Squeezed(Section(PlainText(ManPage()), "ANALYSES"));
  int letters = 0;
  for (const std::string& line : Lines(UsageText())) {
    // The explanation lines under -a: "d = ...", "s = ...", "znn = ...".
    for (const std::string letter : {"d", "s", "znn"}) {
      const std::string lead = std::string(20, ' ') + letter + " = ";
      if (line.compare(0, lead.size(), lead) != 0) continue;
      ++letters;
      const std::string explanation = line.substr(lead.size());
      EXPECT_NE(std::string::npos, section.find(explanation)) << explanation;
    }
  }
  EXPECT_EQ(3, letters);
  for (const std::string example : {"db -a d", "db -a s", "db -a sz2"}) {
    EXPECT_NE(std::string::npos, section.find(example)) << example;
  }
}

TEST(ManPage, NamesTheFilesTheExitStatusAndTheDaemon) {
  const std::string text = PlainText(ManPage());
  const std::string files = Squeezed(Section(text, "FILES"));
  EXPECT_NE(std::string::npos, files.find("/mnt/hd/streammgr/stream.db"));
  EXPECT_NE(std::string::npos, files.find("/mnt/hd/connectionmgr/"));

  const std::vector<std::string> status = Section(text, "EXIT STATUS");
  for (const std::string tag : {"       0 ", "       1 "}) {
    bool found = false;
    for (const std::string& line : status) found = found || line.compare(0, 9, tag) == 0;
    EXPECT_TRUE(found) << "status" << tag;
  }

  const std::string daemon = Squeezed(Section(text, "THE STREAMMGR DAEMON"));
  EXPECT_NE(std::string::npos, daemon.find("pidof StreamMgr"));
  EXPECT_NE(std::string::npos, daemon.find("Error initializing the ipc connection"));
  EXPECT_NE(std::string::npos, daemon.find("exits with status 1"));
}
