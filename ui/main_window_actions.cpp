// What the window does: the slots behind its buttons and behind a worker's signals.

#include "app/log.h"
#include "configuration/config.h"
#include "configuration/config_writer.h"
#include "configuration/pad_number.h"
#include "db/database_file.h"
#include "ui/load_worker.h"
#include "ui/main_window.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>

void VEXAInterface::slot_selectDb() {
    const FunctionTrace trace("VEXAInterface::slot_selectDb");
    if (lastDbPath.isEmpty()) {
        lastDbPath = g_configParams.RecentPath[0] != '\0'
                         ? QString::fromUtf8(g_configParams.RecentPath)
                         : QDir::currentPath();
    }
    const QString chosen =
        QFileDialog::getOpenFileName(nullptr, QMainWindow::tr("Select a database"), lastDbPath,
                                     QMainWindow::tr("Database Files (*.db)"));
    if (!chosen.isEmpty()) {
        dbPathEdit->setText(chosen);
        lastDbPath = chosen;
        writeConfig(chosen.toStdString());
    }
    applyLoadAllowedRule();
}

void VEXAInterface::slot_loadDevices() {
    const FunctionTrace trace("VEXAInterface::slot_loadDevices");
    findDevices();
    VEXALog(kLogInfo, "Devices have been re-enumerated");
    const std::vector<VEXADevice> devices = deviceManager.getDeviceList();
    deviceCombo->clear();
    for (const VEXADevice& device : devices) {
        const std::string port = device.isPCSC() ? "" : " - PORT: " + device.getPortCOM();
        deviceCombo->addItem(QString::fromStdString(device.getName() + port));
    }
    VEXALog(kLogInfo, "Devices pushed into combo");
    applyLoadAllowedRule();
}

void VEXAInterface::slot_load() {
    const FunctionTrace trace("VEXAInterface::slot_load");
    const std::vector<VEXADevice> devices = deviceManager.getDeviceList();
    VEXALog(kLogInfo, "List of devices has been obtained");
    const int index = deviceCombo->currentIndex();
    if (index < 0 || static_cast<std::size_t>(index) >= devices.size()) {
        VEXALog(kLogError, "No device selected");
        return;
    }
    const VEXADevice& device = devices[static_cast<std::size_t>(index)];
    VEXALog(kLogInfo, "Currently selected device has been obtained");
    const std::string database = dbPathEdit->text().toStdString();
    if (!canBeRead(database)) {
        QMessageBox message;
        // The capital M of this one is intended.
        message.setWindowTitle(tr("VEXA Message"));
        message.setText(tr("Database file does not exist"));
        (void)message.exec();
        return;
    }
    startLoad(device, database);
}

void VEXAInterface::startLoad(const VEXADevice& device, const std::string& database) {
    const VEXADbManager dbManager(database);
    VEXALog(kLogInfo, "Database manager has been created");
    VEXAUsbConnector connector(device, dbManager, leadingNumber(g_configParams.PAD_number));
    VEXALog(kLogInfo, "Communicator has been created");
    loadingActive = true;
    applyLoadingState();

    LoadWorker& worker = addLoadWorker(connector);
    worker.start(QThread::InheritPriority);
    VEXALog(kLogInfo, "Loading thread has been started");
    connect(&worker, &VEXAThread::threadFeedback, this, &VEXAInterface::slot_showMessage);
    connect(&worker, &VEXAThread::threadFeedback_NACK, this, &VEXAInterface::slot_showNACK);
    connect(&worker, &VEXAThread::threadProgress, this, &VEXAInterface::slot_showProgress);
    // Direct: the worker object lives in this thread.
    connect(cancelButton, &QPushButton::clicked, &worker, &VEXAThread::loadCancel);
    worker.beginWork();
}

void VEXAInterface::slot_showMessage(int messageCode) {
    const FunctionTrace trace("VEXAInterface::slot_showMessage");
    QMessageBox message(this);
    message.setWindowTitle(tr("VEXA message"));
    switch (messageCode) {
    case kLoadSucceeded:
        progressBar->setValue(progressBar->maximum());
        message.setText(tr("Loading succeeded"));
        break;
    case kDatabaseNotCoherent:
        message.setText(tr("The database is not coherent"));
        break;
    case kDatabaseNotOpened:
        message.setText(tr("The database could not be opened"));
        break;
    case kInitAnswerWrong:
        message.setText(tr("Initialisation protocol failed"));
        break;
    case kBlockRefused:
        message.setText(tr("A data block was refused"));
        break;
    case kEndingNotAcknowledged:
        message.setText(tr("Failed to send ending frame"));
        break;
    case kCancelled:
        message.setText(tr("Loading was cancelled"));
        break;
    case kNoAnswer:
        message.setText(tr("No response from the terminal"));
        break;
    default:
        break; // No other code has a text; the box stays empty, which is intended.
    }
    showAndReturnToIdle(message);
}

void VEXAInterface::slot_showNACK(QString message) {
    const FunctionTrace trace("VEXAInterface::slot_showNACK");
    QMessageBox box(this);
    box.setWindowTitle(tr("VEXA message"));
    box.setText(message);
    showAndReturnToIdle(box);
}

void VEXAInterface::showAndReturnToIdle(QMessageBox& message) {
    (void)message.exec();
    progressBar->setValue(0);
    progressLabel->setText("0 %");
    loadingActive = false;
    applyIdleState();
}

void VEXAInterface::slot_showProgress(int progress) {
    const FunctionTrace trace("VEXAInterface::slot_showProgress");
    constexpr int kLastBeforeSuccess = 99; // 100 is for a load that has succeeded
    progressBar->setValue(std::min(progress, kLastBeforeSuccess));
    progressLabel->setText(QString::number(progress) + " %");
}

void VEXAInterface::slot_close() {
    VEXALog(kLogEntry, "VEXAInterface::slot_close");
    VEXA_logstop();
    (void)close();
}

// In both states what is enabled comes first, so that the keyboard always has somewhere to be.

void VEXAInterface::applyLoadingState() {
    cancelButton->setEnabled(true);
    if (focusWidget() == loadButton) {
        cancelButton->setFocus();
    }
    loadButton->setEnabled(false);
    refreshButton->setEnabled(false);
    browseButton->setEnabled(false);
    deviceCombo->setEnabled(false);
    dbPathEdit->setEnabled(false);
}

void VEXAInterface::applyIdleState() {
    loadButton->setEnabled(true);
    refreshButton->setEnabled(true);
    browseButton->setEnabled(true);
    deviceCombo->setEnabled(true);
    dbPathEdit->setEnabled(true);
    if (focusWidget() == cancelButton) {
        loadButton->setFocus();
    }
    cancelButton->setEnabled(false);
}

void VEXAInterface::applyLoadAllowedRule() {
    loadButton->setEnabled(deviceCombo->count() > 0 && !dbPathEdit->text().isEmpty());
}
