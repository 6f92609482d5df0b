// Runs shell commands for the tests of what ships with db (groff, bash,
// cmake --install, cpack, dpkg-deb), and the scratch folders they work in.
#ifndef SHIP_SHELL_H_
#define SHIP_SHELL_H_

#include <string>

struct ShellResult {
  std::string out;  // standard output
  std::string err;  // standard error
  int status = -1;  // exit status, or 128 + signal
};

// Runs `command` with /bin/sh and waits for it.
ShellResult RunShell(const std::string& command);

// `text` as one word of a shell command line.
std::string ShellQuote(const std::string& text);

// A folder below /tmp that is removed with everything in it at the end of
// its scope.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Where the sources and the build of this tree are.
std::string SourceDir();
std::string BuildDir();

#endif  // SHIP_SHELL_H_
