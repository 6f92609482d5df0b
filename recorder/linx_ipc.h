// The recorder's IPC endpoint. A process constructs one endpoint with its own
// name; Init() connects it to the stream manager daemon.
#ifndef RECORDER_LINX_IPC_H_
#define RECORDER_LINX_IPC_H_

#include <memory>
#include <string>

class LinxIpc {
 public:
  explicit LinxIpc(const std::string& name);
  ~LinxIpc();
  LinxIpc(const LinxIpc&) = delete;
  LinxIpc& operator=(const LinxIpc&) = delete;

  // 0 on success; non-zero when the daemon's endpoint cannot be reached.
  int Init();

  const std::string& Name() const;

  // The implementation's own state; opaque to callers.
  struct Impl;
  Impl& GetImpl() { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

#endif  // RECORDER_LINX_IPC_H_
