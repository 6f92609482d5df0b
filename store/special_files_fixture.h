// What a disk from the field may hold where a file belongs, for the tests of
// opening files: each maker puts its thing at `path` and gives the path to
// open, or "" when it could not make it.
#ifndef STORE_SPECIAL_FILES_FIXTURE_H_
#define STORE_SPECIAL_FILES_FIXTURE_H_

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string>

using Maker = std::string (*)(const std::string& path);

inline std::string Made(int result, const std::string& path) { return result == 0 ? path : ""; }

inline std::string Missing(const std::string& path) { return path; }
inline std::string Fifo(const std::string& path) { return Made(mkfifo(path.c_str(), 0666), path); }
inline std::string Folder(const std::string& path) { return Made(mkdir(path.c_str(), 0755), path); }
inline std::string Device(const std::string&) { return "/dev/null"; }

inline std::string Socket(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return "";
  std::strcpy(address.sun_path, path.c_str());
  const int s = socket(AF_UNIX, SOCK_STREAM, 0);
  const int bound = bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
  close(s);
  return Made(bound, path);
}

// A link at `path` to what `make` puts at `path`-target.
template <Maker make>
std::string LinkTo(const std::string& path) {
  const std::string target = make(path + "-target");
  return target.empty() ? "" : Made(symlink(target.c_str(), path.c_str()), path);
}

// The names in `dir` and what each is: "a file, b link".
inline std::string Listing(const std::string& dir) {
  using Type = std::filesystem::file_type;
  const std::map<Type, std::string> kinds = {{Type::regular, "file"},
                                             {Type::symlink, "link"},
                                             {Type::fifo, "fifo"},
                                             {Type::socket, "socket"},
                                             {Type::directory, "folder"}};
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    const auto kind = kinds.find(entry.symlink_status().type());
    names.insert(entry.path().filename().string() + " " +
                 (kind == kinds.end() ? "other" : kind->second));
  }
  std::string listing;
  for (const std::string& name : names) listing += (listing.empty() ? "" : ", ") + name;
  return listing;
}

#endif  // STORE_SPECIAL_FILES_FIXTURE_H_
