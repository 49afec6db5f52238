#include "ui/load_worker.h"

#include <QDeadlineTimer>

#include <memory>
#include <vector>

namespace {

using Workers = std::vector<std::unique_ptr<LoadWorker>>;

/// Never destroyed: whichever way the program ends, a thread that still runs keeps its worker.
Workers& workers() {
    static auto* const all = new Workers;
    return *all;
}

} // namespace

void LoadWorker::run() {
    m_watched.get_future().wait();
    VEXAThread::run();
}

LoadWorker& addLoadWorker(VEXAUsbConnector& session) {
    workers().push_back(std::make_unique<LoadWorker>(session));
    return *workers().back();
}

bool cancelAllLoads() {
    constexpr int kPatienceMs = 500;
    for (const auto& worker : workers()) {
        worker->loadCancel();
    }
    const QDeadlineTimer deadline(kPatienceMs);
    for (const auto& worker : workers()) {
        if (!worker->wait(deadline)) {
            return false;
        }
    }
    workers().clear();
    return true;
}
