#include "loader/loading_thread.h"

#include "app/log.h"
#include "app/run_mode.h"

VEXAThread::VEXAThread() {
    const FunctionTrace trace("VEXAThread::VEXAThread");
}

VEXAThread::VEXAThread(VEXAUsbConnector session) : connector(session) {
    const FunctionTrace trace("VEXAThread::VEXAThread");
}

int VEXAThread::getProgress() {
    const FunctionTrace trace("VEXAThread::getProgress");
    return connector.getProgress();
}

void VEXAThread::run() {
    const FunctionTrace trace("VEXAThread::run");
    (void)operate();
}

void VEXAThread::loadCancel() {
    const FunctionTrace trace("VEXAThread::loadCancel");
    cancelRequested = true;
}

int VEXAThread::operate() {
    const FunctionTrace trace("VEXAThread::operate");
    cancelRequested = false;
    std::string response;
    const int code = connector.operate(response);
    if (code != kLoadSucceeded) {
        reportFailedStart(code, response);
        closeConnection();
        return code;
    }
    VEXALog(kLogInfo, "Communication initialization process succeeded");
    printInCmdMode("\nCommunication initialization process succeeded");
    QString nackText;
    int result = sendBlocks(nackText);
    VEXALog(kLogInfo, "Data processing has been finished");
    if (cancelRequested) {
        reportCancelled();
        result = kCancelled;
    } else if (!stopsWithoutEnding(result, nackText)) {
        // A refused block ends the data but not the load: the terminal's answer to the ending
        // frame decides what the user is told.
        endLoad(result);
    }
    closeConnection();
    return result == kEndOfFile ? kLoadSucceeded : result;
}

void VEXAThread::reportFailedStart(int code, const std::string& response) {
    VEXALog(kLogError, "Communication initialization process failed");
    if (code == kRequestRefused) {
        VEXALog(kLogError, "Update request failed with returned message : %s", response.c_str());
        reportMessage(tr("Loading request failed - error : ") + QString::fromStdString(response));
        printInCmdMode("\nUpdate request failed with returned message : %s", response.c_str());
        return;
    }
    reportCode(code);
    printInCmdMode("\nCommunication initialization process failed");
}

int VEXAThread::sendBlocks(QString& nackText) {
    int lastPrinted = 0;
    for (;;) {
        const int result = connector.sendDataFrame(nackText);
        if (result != kLoadSucceeded) {
            return result;
        }
        showProgress(lastPrinted);
        if (cancelRequested) {
            return result;
        }
    }
}

void VEXAThread::showProgress(int& lastPrinted) {
    constexpr int kPrintedStep = 10;
    const int progress = connector.getProgress();
    if (!g_inCmdMode) {
        emit threadProgress(progress);
    } else if (progress % kPrintedStep == 0 && progress != lastPrinted) {
        printOutcome("\nLoading progress : %d %%", progress);
        lastPrinted = progress;
    }
}

void VEXAThread::reportCancelled() {
    VEXALog(kLogInfo, "Loading was cancelled");
    reportCode(kCancelled);
}

bool VEXAThread::stopsWithoutEnding(int result, const QString& nackText) {
    const QByteArray nack = nackText.toUtf8();
    switch (result) {
    case kNack:
        VEXALog(kLogError, "A NACK was received : %s", nack.constData());
        reportMessage(tr("A NACK was received : ") + nackText);
        printInCmdMode("\nA NACK was received : %s", nack.constData());
        return true;
    case kIncompleteNack:
        VEXALog(kLogError, "An incomplete NACK was received");
        reportCode(result);
        printInCmdMode("\nAn incomplete NACK was received");
        return true;
    case kNoAnswer:
        VEXALog(kLogError, "Timeout when sending data");
        reportMessage(tr("Timeout when sending data"));
        printInCmdMode("\nTimeout when sending data");
        return true;
    default:
        return false;
    }
}

void VEXAThread::endLoad(int result) {
    if (result == kEndOfFile) {
        VEXALog(kLogInfo, "All data frames have been sent");
        printInCmdMode("\nAll data frames have been sent. Sending ending frame ... ");
    }
    if (connector.sendEndingFrame()) {
        VEXALog(kLogInfo, "Loading succeeded");
        reportCode(kLoadSucceeded);
        printInCmdMode("\nLoading succeeded\n");
        return;
    }
    printInCmdMode("\nNo response for the ending frame");
    reportCode(kEndingNotAcknowledged);
    VEXALog(kLogError, "No response for the ending frame");
}

void VEXAThread::closeConnection() {
    if (connector.closeConnection()) {
        VEXALog(kLogInfo, "Connection has been successfully closed");
    } else {
        VEXALog(kLogError, "Failed to close connection");
    }
}

void VEXAThread::reportMessage(const QString& message) {
    if (!g_inCmdMode) {
        emit threadFeedback_NACK(message);
    }
}

void VEXAThread::reportCode(int code) {
    if (!g_inCmdMode) {
        emit threadFeedback(code);
    }
}
