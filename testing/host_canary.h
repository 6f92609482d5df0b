// A canary on the host: a folder outside any test disk holding one file with
// known text, so a test can prove that nothing run in the sandbox wrote there.
#ifndef TESTING_HOST_CANARY_H_
#define TESTING_HOST_CANARY_H_

#include <string>

extern const char kCanaryText[];

class Canary {
 public:
  // Makes the folder below `parent`, writable by everyone (so that only the
  // sandbox, not the file modes, keeps an unprivileged run from it).
  explicit Canary(const std::string& parent);
  ~Canary();
  Canary(const Canary&) = delete;
  Canary& operator=(const Canary&) = delete;

  const std::string& Folder() const { return folder_; }
  std::string File() const { return folder_ + "/victim"; }
  // The folder's names, then the file's text: "victim\n" + kCanaryText
  // while nothing touched it.
  std::string State() const;

 private:
  std::string folder_;
};

#endif  // TESTING_HOST_CANARY_H_
