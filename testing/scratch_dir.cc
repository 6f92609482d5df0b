#include "testing/scratch_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

ScratchDir::ScratchDir(const std::string& name) {
  const std::string pattern = "/tmp/" + name + "-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  const char* made = mkdtemp(buffer.data());
  if (made == nullptr) {
    ADD_FAILURE() << "cannot make a scratch folder";
    return;
  }
  path_ = made;
}

ScratchDir::~ScratchDir() {
  if (!path_.empty()) {
    // mkdtemp's names hold no quote. Extracted packages hold read-only
    // folders; they are made writable first.
    std::system(("chmod -R u+rwX '" + path_ + "'; rm -rf '" + path_ + "'").c_str());
  }
}
