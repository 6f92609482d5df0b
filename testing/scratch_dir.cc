#include "testing/scratch_dir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <vector>

std::string MakeFolderBelow(const std::string& parent, const std::string& name, mode_t mode) {
  std::string pattern = parent + "/" + name + ".XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) {
    ADD_FAILURE() << "cannot make a temporary folder " << pattern;
    return "";
  }
  chmod(buffer.data(), mode);
  return buffer.data();
}

std::string TemporaryParent() {
  const char* tmp = std::getenv("TMPDIR");
  return tmp != nullptr && *tmp != '\0' ? tmp : "/tmp";
}

ScratchDir::ScratchDir(const std::string& name, mode_t mode)
    : path_(MakeFolderBelow("/tmp", name, mode)) {}

ScratchDir::~ScratchDir() {
  if (!path_.empty()) {
    // mkdtemp's names hold no quote. Extracted packages hold read-only
    // folders; they are made writable first.
    std::system(("chmod -R u+rwX '" + path_ + "'; rm -rf '" + path_ + "'").c_str());
  }
}
