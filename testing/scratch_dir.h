// A folder below /tmp that is removed with everything in it at the end of
// its scope.
#ifndef TESTING_SCRATCH_DIR_H_
#define TESTING_SCRATCH_DIR_H_

#include <string>

class ScratchDir {
 public:
  // The folder is named /tmp/NAME-XXXXXX.
  explicit ScratchDir(const std::string& name = "db-test");
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

#endif  // TESTING_SCRATCH_DIR_H_
