// Stands in for db in the end-to-end tests of another CPU's build: starts
// that build of db under an emulator with this program's own name and
// arguments, so every test sees it exactly as it would see the host's db.
//
// The folder of this program holds `db.target` (the other build of db) and
// `db.emulator` (the emulator's command, one word a line, e.g. qemu-arm).
#include <limits.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  char self[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  if (length <= 0) {
    std::perror("emulated db: /proc/self/exe");
    return 127;
  }
  std::string folder(self, static_cast<size_t>(length));
  folder.erase(folder.rfind('/'));

  std::vector<std::string> words;
  std::ifstream emulator(folder + "/db.emulator");
  for (std::string word; std::getline(emulator, word);) {
    if (!word.empty()) words.push_back(word);
  }
  if (words.empty()) {
    std::fprintf(stderr, "emulated db: no emulator named in %s/db.emulator\n", folder.c_str());
    return 127;
  }
  // The program name is the one db was started with, as the usage text and
  // getopt's complaints print it.
  words.insert(words.end(), {"-0", argv[0], folder + "/db.target"});
  words.insert(words.end(), argv + 1, argv + argc);

  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(&word[0]);
  pointers.push_back(nullptr);
  execvp(pointers[0], pointers.data());
  std::perror(("emulated db: " + words[0]).c_str());
  return 127;
}
