// The worker: runs one loading session from start to end and reports its course.
//
// In window mode it is started as a thread and reports through its signals; the slots of the
// window run in the main thread. In command-line mode operate() is called directly, emits nothing
// and prints instead.
//
// Owner: the worker owns its session. One that was started must have finished before it is
// destroyed. Threads: operate and getProgress in the thread that loads;
// loadCancel from any thread. Failure: a result code, LoadResult.
#pragma once

#include "loader/usb_connector.h"

#include <QString>
#include <QThread>

#include <atomic>

class VEXAThread : public QThread {
    Q_OBJECT

public:
    /// A worker that cannot load.
    VEXAThread();

    /// Works on a fresh copy of a session.
    explicit VEXAThread(VEXAUsbConnector session);

    /// Percentage of the file that the terminal has acknowledged, see VEXAUsbConnector.
    int getProgress();

    /// The whole load, to be called once. \return 0, also when only the ending frame failed, or
    /// the code of what went wrong
    int operate();

signals:
    // Sent in window mode only. The return values are used by nobody; the declarations stay as they
    // are known.

    /// The load has ended, with this LoadResult; or, with kLoadSucceeded or kEndingNotAcknowledged,
    /// the terminal has had its last word.
    int threadFeedback(int messageCode);
    /// The load has ended, for a reason that is told in this text, translated.
    QString threadFeedback_NACK(QString message);
    /// Another block was acknowledged; the percentage of getProgress.
    int threadProgress(int progress);

public slots:
    /// Ends the load after the block that is under way, whatever the terminal answers to it;
    /// without effect after the last one.
    void loadCancel();

protected:
    void run() override;

private:
    void reportFailedStart(int code, const std::string& response);
    /// \return what the last block came to
    int sendBlocks(QString& nackText);
    void showProgress(int& lastPrinted);
    void reportCancelled();
    /// Reports what ends a load at once. \return false when the ending frame is still to be sent
    bool stopsWithoutEnding(int result, const QString& nackText);
    void endLoad(int result);
    void closeConnection();
    void reportMessage(const QString& message);
    void reportCode(int code);

    VEXAUsbConnector connector;
    std::atomic<bool> cancelRequested{false};
};
