// Placeholder endpoint: no daemon can be reached yet.
#include "recorder/linx_ipc.h"

struct LinxIpc::Impl {
  std::string name;
};

LinxIpc::LinxIpc(const std::string& name) : impl_(new Impl{name}) {}

LinxIpc::~LinxIpc() = default;

int LinxIpc::Init() { return -1; }

const std::string& LinxIpc::Name() const { return impl_->name; }
