#include "sim/stream_mgr_cli/stream_mgr_cli.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "store/regular_file.h"

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

// Opens stream file `path` for reading: only a regular file (a link to one
// included) holds a recording.
int OpenStream(const std::string& path, std::string& error) {
  bool notRegular = false;
  const int in = OpenRegularFile(path.c_str(), notRegular);
  if (in < 0) {
    error = path + ": " + (notRegular ? "not a regular file" : std::strerror(errno));
  }
  return in;
}

const char* KindOf(mode_t mode) {
  if (S_ISLNK(mode)) return "link";
  if (S_ISFIFO(mode)) return "FIFO";
  if (S_ISSOCK(mode)) return "socket";
  if (S_ISCHR(mode) || S_ISBLK(mode)) return "device node";
  return "file";
}

// Makes way for the copy at `to`. Whatever is there goes: a file (even one
// hard-linked to another name on the disk) loses this name only, and a link
// is removed, never followed, so what it points to stays as it was. A folder
// is left alone and stops the extraction.
bool MakeWay(const std::string& to, std::ostream& err, std::string& error) {
  struct stat info;
  if (lstat(to.c_str(), &info) != 0) {
    if (errno == ENOENT) return true;
    error = to + ": " + std::strerror(errno);
    return false;
  }
  if (S_ISDIR(info.st_mode)) {
    error = to + ": " + std::strerror(EISDIR);
    return false;
  }
  if (!S_ISREG(info.st_mode)) {
    err << "StreamMgrCli: " << to << " is a " << KindOf(info.st_mode)
        << "; replacing it, not what it points to\n";
  }
  if (unlink(to.c_str()) != 0) {
    error = to + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

// Copies all of `in` to `out`, in the kernel where it can.
bool CopyData(int in, int out) {
  for (;;) {
    const ssize_t n = copy_file_range(in, nullptr, out, nullptr, size_t{1} << 30, 0);
    if (n == 0) return true;
    if (n > 0) continue;
    if (errno == EINTR) continue;
    if (errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP) {
      return false;
    }
    break;  // not between these two files: copy through a buffer
  }
  std::vector<char> buffer(1 << 16);
  for (;;) {
    const ssize_t n = read(in, buffer.data(), buffer.size());
    if (n == 0) return true;
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    for (ssize_t done = 0; done < n;) {
      const ssize_t w = write(out, buffer.data() + done, static_cast<size_t>(n - done));
      if (w < 0 && errno != EINTR) return false;
      if (w > 0) done += w;
    }
  }
}

// Copies `from` to a new file `to`; false with `error` set when either cannot
// be used. The copy is created, never opened through a link.
bool Copy(const std::string& from, const std::string& to, std::ostream& err, std::string& error) {
  const int in = OpenStream(from, error);
  if (in < 0) return false;
  if (!MakeWay(to, err, error)) {
    close(in);
    return false;
  }
  const int out =
      open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC, 0666);
  if (out < 0) {
    error = to + ": " + std::strerror(errno);
    close(in);
    return false;
  }
  bool ok = CopyData(in, out);
  if (!ok) error = to + ": " + std::strerror(errno);
  close(in);
  if (close(out) != 0 && ok) {
    error = to + ": " + std::strerror(errno);
    ok = false;
  }
  if (!ok) {
    unlink(to.c_str());  // leave no half copy behind
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
  if (!Copy(disk + "/streams/" + number + ".ts", target, err, error)) {
    err << "StreamMgrCli: cannot extract stream file " << number << ": " << error << "\n";
    return 1;
  }
  out << "copied: " << target << "\n";
  return 0;
}
