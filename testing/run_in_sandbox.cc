#include "testing/run_in_sandbox.h"
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "testing/scratch_dir.h"

extern char** environ;

#ifndef DB_BIN_DIR
#error "DB_BIN_DIR must name the folder of the built programs"
#endif
#ifndef DB_SANDBOX
#error "DB_SANDBOX must name tools/recorder-sandbox"
#endif

std::string BinDir() {
  // A run of the end-to-end suite against another build of db (the ARM
  // build under an emulator) names a folder that holds that db beside the
  // host's stand-ins.
  const char* other = std::getenv("DB_TEST_BIN_DIR");
  return other != nullptr && *other != '\0' ? other : DB_BIN_DIR;
}

const char* AccessPathName(AccessPath path) {
  return path == AccessPath::kDirect ? "Direct" : "Daemon";
}

namespace {

// The sandbox script and the programs, where the unprivileged user can reach
// them: a checkout may lie in a folder that only its owner may enter (root's
// home is 0700), so they are copied once per test program into a folder of
// their own that everyone may read. Removed when the test program ends.
class WorldReadableTools {
 public:
  WorldReadableTools() : folder_(MakeFolderBelow(TemporaryParent(), "db-tools", 0755)) {
    if (folder_.empty()) return;
    // cp keeps the programs' modes; -L copies what links point at.
    const std::string copy = "cp -RL '" + BinDir() + "' '" + folder_ + "/bin' && cp '" +
                             DB_SANDBOX + "' '" + folder_ +
                             "/recorder-sandbox' && chmod -R a+rX '" + folder_ + "'";
    if (std::system(copy.c_str()) != 0) {
      ADD_FAILURE() << "cannot copy the programs for the unprivileged user: " << copy;
    }
  }
  ~WorldReadableTools() {
    if (!folder_.empty()) {
      const std::string remove = "rm -rf '" + folder_ + "'";
      if (std::system(remove.c_str()) != 0) {
        // Nothing to do about it but leave the folder behind.
      }
    }
  }
  std::string Sandbox() const { return folder_ + "/recorder-sandbox"; }
  std::string Bin() const { return folder_ + "/bin"; }

 private:
  std::string folder_;
};

const WorldReadableTools& UnprivilegedTools() {
  static const WorldReadableTools tools;
  return tools;
}

std::vector<std::string> SandboxCommand(const RecorderDisk& disk,
                                        const std::vector<std::string>& command,
                                        const SandboxOptions& options) {
  std::vector<std::string> argv = options.prefix;
  if (options.unprivileged) {
    // Without root the sandbox maps the caller to root in a user namespace of
    // its own, which grants nothing over files of other users.
    argv.insert(argv.end(), {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                             UnprivilegedTools().Sandbox()});
  } else {
    argv.push_back(DB_SANDBOX);
  }
  if (options.streamMgr) {
    argv.push_back("--streammgr=" + options.streamMgrArgs);
  }
  if (options.configMp) {
    argv.push_back("--configmp=" + options.configMpArgs);
  }
  argv.insert(argv.end(), options.sandboxArgs.begin(), options.sandboxArgs.end());
  argv.push_back(options.diskDir.empty() ? disk.Path() : options.diskDir);
  argv.push_back("--");
  argv.insert(argv.end(), command.begin(), command.end());
  return argv;
}

std::vector<std::string> Environment(const SandboxOptions& options) {
  std::vector<std::string> env;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (std::strncmp(*entry, "TZ=", 3) != 0 && std::strncmp(*entry, "RECORDER_", 9) != 0) {
      env.push_back(*entry);
    }
  }
  env.push_back("TZ=UTC");
  env.push_back("RECORDER_BIN_DIR=" +
                (options.unprivileged ? UnprivilegedTools().Bin() : BinDir()));
  env.insert(env.end(), options.environment.begin(), options.environment.end());
  return env;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (std::string& s : strings) pointers.push_back(&s[0]);
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

RunResult RunInSandbox(const RecorderDisk& disk, const std::vector<std::string>& command,
                       const SandboxOptions& options) {
  RunResult result;
  std::vector<std::string> argv = SandboxCommand(disk, command, options);
  std::vector<std::string> env = Environment(options);
  std::vector<char*> argvPointers = Pointers(argv);
  std::vector<char*> envPointers = Pointers(env);

  int out[2], err[2], in[2];
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0 || pipe2(in, O_CLOEXEC) != 0) {
    return result;
  }
  const pid_t child = fork();
  if (child == 0) {
    // The test process ignores SIGPIPE; the command gets the default a shell gives it.
    signal(SIGPIPE, SIG_DFL);
    setpgid(0, 0);
    dup2(in[0], 0);
    dup2(out[1], 1);
    dup2(err[1], 2);
    execve(argvPointers[0], argvPointers.data(), envPointers.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  close(err[1]);
  // Feed standard input, then close it so the command sees its end.
  signal(SIGPIPE, SIG_IGN);
  if (!options.input.empty()) {
    ssize_t written = write(in[1], options.input.data(), options.input.size());
    (void)written;
  }
  close(in[1]);

  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(options.timeoutSeconds);
  pollfd fds[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
  std::string* sinks[2] = {&result.out, &result.err};
  int open = 2;
  bool timedOut = false;
  while (open > 0) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                          deadline - std::chrono::steady_clock::now())
                          .count();
    if (left <= 0) {
      timedOut = true;
      break;
    }
    if (poll(fds, 2, static_cast<int>(left)) < 0) continue;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      char buffer[65536];
      const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
      if (n > 0) {
        sinks[i]->append(buffer, static_cast<size_t>(n));
      } else {
        close(fds[i].fd);
        fds[i].fd = -1;
        --open;
      }
    }
  }
  if (timedOut) {
    kill(-child, SIGKILL);
    for (pollfd& fd : fds) {
      if (fd.fd >= 0) close(fd.fd);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  if (timedOut) {
    ADD_FAILURE_AT(__FILE__, __LINE__)
        << "command timed out after " << options.timeoutSeconds << " s";
  }
  return result;
}

RunResult RunDb(const RecorderDisk& disk, const std::vector<std::string>& args,
                const SandboxOptions& options) {
  std::vector<std::string> command = {"db"};
  command.insert(command.end(), args.begin(), args.end());
  return RunInSandbox(disk, command, options);
}

RunResult RunDb(const RecorderDisk& disk, AccessPath path, const std::vector<std::string>& args,
                SandboxOptions options) {
  options.streamMgr = path == AccessPath::kDaemon;
  return RunDb(disk, args, options);
}
