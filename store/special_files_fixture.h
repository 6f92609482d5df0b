// What a disk from the field may hold where a file belongs, for the tests of
// opening files: each maker puts its thing at `path` and gives the path to
// open, or "" when it could not make it.
#ifndef STORE_SPECIAL_FILES_FIXTURE_H_
#define STORE_SPECIAL_FILES_FIXTURE_H_

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>

using Maker = std::string (*)(const std::string& path);

inline std::string Made(int result, const std::string& path) { return result == 0 ? path : ""; }

inline std::string Missing(const std::string& path) { return path; }
inline std::string Fifo(const std::string& path) { return Made(mkfifo(path.c_str(), 0666), path); }
inline std::string Socket(const std::string& p) { return Made(mknod(p.c_str(), S_IFSOCK, 0), p); }
inline std::string Folder(const std::string& path) { return Made(mkdir(path.c_str(), 0755), path); }
inline std::string Device(const std::string&) { return "/dev/null"; }

// A link at `path` to what `make` puts at `path`-target.
template <Maker make>
std::string LinkTo(const std::string& path) {
  const std::string target = make(path + "-target");
  return target.empty() ? "" : Made(symlink(target.c_str(), path.c_str()), path);
}

// The names in `dir` and what each is: "a file, b link".
inline std::string Listing(const std::string& dir) {
  using Type = std::filesystem::file_type;
  std::map<std::string, Type> types;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    types[entry.path().filename()] = entry.symlink_status().type();
  }
  std::string listing;
  for (const auto& [name, t] : types) {
    listing += (listing.empty() ? "" : ", ") + name +
               (t == Type::symlink     ? " link"
                : t == Type::fifo      ? " fifo"
                : t == Type::socket    ? " socket"
                : t == Type::directory ? " folder"
                                       : " file");
  }
  return listing;
}

#endif  // STORE_SPECIAL_FILES_FIXTURE_H_
