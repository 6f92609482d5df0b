// A folder below /tmp that is removed with everything in it at the end of
// its scope.
#ifndef TESTING_SCRATCH_DIR_H_
#define TESTING_SCRATCH_DIR_H_

#include <sys/types.h>

#include <string>

// Makes a new folder PARENT/NAME.XXXXXX with the access `mode` and returns
// its path, or "" (and a test failure) when it cannot.
std::string MakeFolderBelow(const std::string& parent, const std::string& name, mode_t mode);

// $TMPDIR, or /tmp without it.
std::string TemporaryParent();

class ScratchDir {
 public:
  // The folder is named /tmp/NAME.XXXXXX and only its owner may enter it,
  // unless `mode` says otherwise.
  explicit ScratchDir(const std::string& name = "db-test", mode_t mode = 0700);
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

#endif  // TESTING_SCRATCH_DIR_H_
