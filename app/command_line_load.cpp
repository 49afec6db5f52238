#include "app/command_line_load.h"

#include "app/log.h"
#include "app/run_mode.h"
#include "configuration/pad_number.h"
#include "devices/device_manager.h"
#include "loader/loading_thread.h"

#include <QSqlDatabase>

#include <algorithm>

namespace {

std::vector<VEXADevice> enumerateDevices() {
    VEXADeviceManager manager;
    manager.clearDeviceList();
    manager.findSerialDevices();
    manager.findAllPCSCDevices();
    return manager.getDeviceList();
}

} // namespace

int cmdExec(std::string database, std::string port, std::string pad) {
    const FunctionTrace trace("cmdExec");
    printOutcome("\nWelcome to VEXA Loader ! \n");
    const std::vector<VEXADevice> devices = enumerateDevices();
    VEXALog(kLogInfo, "List of devices has been obtained");
    printOutcome("\nList of devices has been obtained");

    const auto found = std::find_if(devices.begin(), devices.end(), [&](const VEXADevice& device) {
        return device.getPortCOM() == port;
    });
    if (found == devices.end()) {
        VEXALog(kLogInfo, "Device not found on the defined port");
        printOutcome("\nDevice not found on the defined port");
        return kDeviceNotFound;
    }
    const VEXADbManager dbManager(database);
    VEXALog(kLogInfo, "Database manager has been created");
    VEXAUsbConnector connector(*found, dbManager, leadingNumber(pad.c_str()));
    VEXALog(kLogInfo, "Communicator has been created");
    printOutcome("\nLoading has been started");
    // Never destroyed: the log of a load ends with the worker's last word, not with its
    // dismantling.
    static VEXAThread* worker = nullptr;
    worker = new VEXAThread(connector);
    const int code = worker->operate();
    // SQLite puts its helper files away as the last one who uses a database leaves.
    QSqlDatabase::database(QSqlDatabase::defaultConnection, false).close();
    return code;
}
