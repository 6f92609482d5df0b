// The recorder's IPC endpoint. A process constructs one endpoint with its own
// name; Init() connects it to the stream manager daemon.
#ifndef RECORDER_LINX_IPC_H_
#define RECORDER_LINX_IPC_H_

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
};

#endif  // RECORDER_LINX_IPC_H_
