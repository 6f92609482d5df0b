#include "sim/stream_mgr_cli/stream_mgr_cli.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

const char kStreamMgrCliHelp[] =
    "usage: StreamMgrCli -x N\n"
    "\n"
    "Extracts stream file N as a transport stream file: copies the recorded\n"
    "contents of stream file N, kept on the recorder disk in\n"
    "/mnt/hd/streams/N.ts, to /mnt/hd/N.ts and prints \"copied: /mnt/hd/N.ts\".\n"
    "N is a decimal number. A stream file without contents is reported on\n"
    "standard error, nothing is copied and the exit status is 1.\n";

namespace {

bool IsNumber(const std::string& text) {
  if (text.empty() || text.size() > 10) {
    return false;
  }
  for (char c : text) {
    if (c < '0' || c > '9') {
      return false;
    }
  }
  return true;
}

// Copies `from` to `to`; false with `error` set when either cannot be used.
bool Copy(const std::string& from, const std::string& to, std::string& error) {
  std::FILE* in = std::fopen(from.c_str(), "rb");
  if (in == nullptr) {
    error = from + ": " + std::strerror(errno);
    return false;
  }
  std::FILE* out = std::fopen(to.c_str(), "wb");
  if (out == nullptr) {
    error = to + ": " + std::strerror(errno);
    std::fclose(in);
    return false;
  }
  std::vector<char> buffer(1 << 16);
  bool ok = true;
  for (size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), in)) > 0;) {
    if (std::fwrite(buffer.data(), 1, n, out) != n) {
      error = to + ": " + std::strerror(errno);
      ok = false;
      break;
    }
  }
  if (ok && std::ferror(in)) {
    error = from + ": " + std::strerror(errno);
    ok = false;
  }
  std::fclose(in);
  if (std::fclose(out) != 0 && ok) {
    error = to + ": " + std::strerror(errno);
    ok = false;
  }
  if (!ok) {
    std::remove(to.c_str());  // leave no half copy behind
  }
  return ok;
}

}  // namespace

int ExtractStreamFile(const std::string& disk, const std::string& number, std::ostream& out,
                      std::ostream& err) {
  if (!IsNumber(number)) {
    err << "StreamMgrCli: not a stream file number: " << number << "\n";
    return 1;
  }
  const std::string target = disk + "/" + number + ".ts";
  std::string error;
  if (!Copy(disk + "/streams/" + number + ".ts", target, error)) {
    err << "StreamMgrCli: cannot extract stream file " << number << ": " << error << "\n";
    return 1;
  }
  out << "copied: " << target << "\n";
  return 0;
}
