// The man page db.1: it renders without a single warning, and it documents
// every option of the option table and the examples of the usage text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/option_table.h"
#include "cli/usage.h"
#include "ship/installed_db.h"
#include "ship/shell.h"
#include "testing/stream_capture.h"

namespace {

using Lines = std::vector<std::string>;

std::string ManPage() { return SourceDir() + "/docs/db.1"; }

Lines LinesOf(const std::string& text) {
  Lines lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The lines of section `name` of the page, rendered as plain text on lines
// long enough that nothing wraps, without hyphenation or emphasis: those after
// its heading (a line of its own at the left margin) up to the next heading.
Lines Section(const std::string& name) {
  static const RunResult page =
      RunShell("LC_ALL=C groff -man -Tascii -rLL=250n -rHY=0 -P-cbou " + ShellQuote(ManPage()));
  EXPECT_EQ(0, page.status) << page.err;
  Lines section;
  bool inside = false;
  for (const std::string& line : LinesOf(page.out)) {
    if (!line.empty() && line[0] != ' ') {
      if (inside) break;
      inside = line == name;
    } else if (inside) {
      section.push_back(line);
    }
  }
  EXPECT_TRUE(inside) << "no section " << name;
  return section;
}

// The words of a section joined by single blanks: justified lines stretch
// their blanks.
std::string Squeezed(const std::string& name) {
  std::string text;
  for (const std::string& line : Section(name)) {
    std::istringstream words(line);
    for (std::string word; words >> word;) text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

// The tags of the option list of a section: lines indented by exactly seven
// blanks that start with a dash, up to the gap before the explanation when a
// short tag shares its line with it.
Lines OptionTags(const std::string& section) {
  Lines tags;
  for (const std::string& line : Section(section)) {
    if (line.compare(0, 8, "       -") == 0) tags.push_back(line.substr(7, line.find("  ", 7) - 7));
  }
  return tags;
}

// The words of `tags` between single blanks, without commas.
std::string TagWords(const Lines& tags) {
  std::string words = " ";
  for (const std::string& tag : tags) words += tag + " ";
  words.erase(std::remove(words.begin(), words.end(), ','), words.end());
  return words;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(ManPage, RendersWithoutWarnings) {
  EXPECT_RUN(RunShell("LC_ALL=C groff -man -ww -z -Tutf8 " + ShellQuote(ManPage())), "", "", 0);
}

TEST(ManPage, TheRenderingCheckCatchesWarnings) {
  ScratchDir scratch;
  const std::string page = scratch.Path() + "/broken.1";
  std::ofstream(page) << ".TH BROKEN 1\n.SH NAME\nbroken \\- a page\n.XY undefined macro\n";
  const RunResult result = RunShell("LC_ALL=C groff -man -ww -z -Tutf8 " + ShellQuote(page));
  // The warning's wording is groff's own.
  EXPECT_TRUE(Contains(result.err, "warning")) << result.err;
}

TEST(ManPage, ManShowsIt) { ExpectManShowsDb("-l " + ShellQuote(ManPage())); }

TEST(ManPage, DocumentsEveryOptionOfTheUsageTextWithItsLongForms) {
  const Lines tags = OptionTags("OPTIONS");
  EXPECT_EQ((Lines{"-h, --help, --usage", "-a, --analyze analysis", "-d, --delete reid",
                   "--deleteall", "-e, --events", "-f, --files selection", "-r, --reid reid",
                   "-p, --split", "-s, --status", "-t, --tables", "-u, --un"}),
            tags);
  // And so every option of the table, with an argument named after an option
  // that takes one.
  const std::string words = TagWords(tags);
  for (const char* c = kShortOptions; *c != '\0'; ++c) {
    if (*c == ':' || std::isupper(static_cast<unsigned char>(*c))) continue;
    EXPECT_TRUE(Contains(words, std::string(" -") + *c + " ")) << "-" << *c;
  }
  for (const struct option* o = kLongOptions; o->name != nullptr; ++o) {
    const std::string name = std::string(" --") + o->name + " ";
    EXPECT_TRUE(Contains(words, name)) << name;
    const size_t after = words.find(name) + name.size();
    EXPECT_EQ(o->has_arg == required_argument, after < words.size() && words[after] != '-') << name;
  }
}

TEST(ManPage, HiddenOptionsHaveASectionOfTheirOwn) {
  const std::string options = TagWords(OptionTags("OPTIONS"));
  const Lines hidden = OptionTags("HIDDEN OPTIONS");
  Lines upper;
  for (const char* c = kShortOptions; *c != '\0'; ++c) {
    if (!std::isupper(static_cast<unsigned char>(*c))) continue;
    upper.push_back(std::string("-") + *c);
    EXPECT_FALSE(Contains(options, " " + upper.back() + " ")) << upper.back() << " is hidden";
  }
  EXPECT_EQ((Lines{"-E", "-R", "-P"}), upper);
  EXPECT_EQ((Lines{"-E", "-R reid", "-P"}), hidden);
}

TEST(ManPage, SynopsisNamesEveryOptionOfTheUsageText) {
  EXPECT_EQ(
      "db [-h] [-a analysis] [-d reid] [--deleteall] [-e] [-f selection] [-r reid] [-p] [-s] [-t] [-u] ...",
      Squeezed("SYNOPSIS"));
}

// The lines of the usage text.
Lines UsageLines() {
  const StreamCapture captured(std::cout);
  PrintUsage("db", nullptr);
  return LinesOf(captured.Text());
}

TEST(ManPage, ShowsTheFileSelectionExamplesOfTheUsageText) {
  // "Example: db -f s0f = display free files ..." stands as the example's tag
  // and its explanation.
  const std::string section = Squeezed("FILE SELECTION");
  Lines examples;
  for (const std::string& line : UsageLines()) {
    const size_t at = line.find("Example: ");
    const size_t is = line.rfind(" = ");
    if (at == std::string::npos || is == std::string::npos || is < at) continue;
    examples.push_back(line.substr(at + 9, is - at - 9) + " " + line.substr(is + 3));
  }
  EXPECT_EQ(4u, examples.size());
  for (const std::string& example : examples) EXPECT_TRUE(Contains(section, example)) << example;
}

TEST(ManPage, ExplainsTheAnalysisLettersAsTheUsageTextDoes) {
  // The explanation lines under -a, "d = ...", "s = ..." and "znn = ...",
  // stand as the letter's tag and its explanation.
  const std::string section = Squeezed("ANALYSES");
  Lines letters;
  for (const std::string& line : UsageLines()) {
    for (const std::string tag : {"d", "s", "znn"}) {
      const std::string head = std::string(20, ' ') + tag + " = ";
      if (line.rfind(head, 0) == 0) letters.push_back(tag + " " + line.substr(head.size()));
    }
  }
  EXPECT_EQ(3u, letters.size());
  for (const std::string& letter : letters) EXPECT_TRUE(Contains(section, letter)) << letter;
  for (const std::string example : {"db -a d", "db -a s", "db -a sz2"}) {
    EXPECT_TRUE(Contains(section, example)) << example;
  }
}

TEST(ManPage, NamesTheFilesTheExitStatusAndTheDaemon) {
  const std::string files = Squeezed("FILES");
  EXPECT_TRUE(Contains(files, "/mnt/hd/streammgr/stream.db"));
  EXPECT_TRUE(Contains(files, "/mnt/hd/connectionmgr/"));
  std::string status;
  for (const std::string& line : Section("EXIT STATUS")) status += line.substr(0, 9) + "|";
  EXPECT_TRUE(Contains(status, "       0 |")) << status;
  EXPECT_TRUE(Contains(status, "       1 |")) << status;
  const std::string daemon = Squeezed("THE STREAMMGR DAEMON");
  for (const char* part :
       {"pidof StreamMgr", "Error initializing the ipc connection", "exits with status 1"}) {
    EXPECT_TRUE(Contains(daemon, part)) << part;
  }
}
