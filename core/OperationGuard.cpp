#include "core/OperationGuard.h"

#include "core/Watcher.h"

OperationGuard::OperationGuard() : OperationGuard(Limits{}) {}

OperationGuard::OperationGuard(const Limits& limits) : watcher_(std::make_unique<Watcher>(limits)) {}

OperationGuard::~OperationGuard() = default;

bool OperationGuard::Succeeded() const { return watcher_->failures.isEmpty(); }

const QVector<OperationGuard::Failure>& OperationGuard::Failures() const { return watcher_->failures; }

bool OperationGuard::LoopEnded() const { return watcher_->loopEnded; }

int OperationGuard::RefusedConnections() const { return static_cast<int>(watcher_->refused.size()); }

void OperationGuard::CloseRefusedConnections() { watcher_->CloseRefusedConnections(); }

void OperationGuard::Reset() { watcher_->Reset(); }
