// What a folder holds, as one line of text, for tests that check what was
// made or left behind.
#ifndef TESTING_STORE_FOLDER_LISTING_H_
#define TESTING_STORE_FOLDER_LISTING_H_

#include <filesystem>
#include <map>
#include <string>

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
                : t == Type::regular   ? " file"
                                       : " other");
  }
  return listing;
}

#endif  // TESTING_STORE_FOLDER_LISTING_H_
