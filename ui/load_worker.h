// The workers of the window: one for each load. They outlive the window, which never deletes them,
// and must not outlive the program's data.
//
// Threads: the main thread only. Failure: none.
#pragma once

#include "loader/loading_thread.h"

#include <future>

/// A worker that, once started, waits to be let go. The window connects its signals after the start
/// and would otherwise miss the end of a load that fails at once: it would wait for ever.
class LoadWorker : public VEXAThread {
public:
    explicit LoadWorker(VEXAUsbConnector& session) : VEXAThread(session) {}

    /// Lets the load begin. To be called once.
    void beginWork() { m_watched.set_value(); }

protected:
    void run() override;

private:
    std::promise<void> m_watched;
};

/// Makes a worker for a session, not started; it lives until cancelAllLoads.
LoadWorker& addLoadWorker(VEXAUsbConnector& session);

/// Cancels the loads that are still under way, and waits a moment for the blocks that they are
/// sending. Then nobody may use the workers any more.
/// \return false when a worker is still waiting for its terminal; the program must then end without
///         tidying up what the worker uses
bool cancelAllLoads();
